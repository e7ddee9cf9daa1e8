#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "platform/ConnectionInfo.h"
#include "platform/IpmiClient.h"
#include "platform/SMMInfo.h"

namespace Tavrin::Double {

using Bytes = std::vector<std::uint8_t>;

/// What an SMM answers, each time with completion code 0: every answer as long as the controllers
/// give it, with texts that fill their fields.
struct Answers {
  Bytes status;
  Bytes machineType;
  Bytes serialNumber;
  Bytes name;
  Bytes power;  ///< The chassis's and every node's.
  Bytes powerCap;
  Bytes psuFan;
  Bytes psuVersion;
  Bytes psuManufacturer;
  Bytes psuPosition;
  Bytes psuStatus;
  Bytes psuSelection;
  Bytes nodeStatus;
};

/// What stands behind platform/, where pauses take no time. To be set before the library runs, and
/// left alone while it does.
struct Platform {
  SMMIype generation = SMM_FIRST_GENERATION;
  Answers answers;
  unsigned int logThreshold = 0;
  std::chrono::nanoseconds answerTime{0};  ///< How long send() waits for the answer.
  IPMICOMMAND* lastRequest = nullptr;      ///< Gets a copy of each request, if there is one.
};
Platform& ThePlatform();

/// First generation: platform 254, 2 PSU slots, 4 nodes. Second: platform 253, 9 slots, 12 nodes.
Platform PlatformOf(SMMIype generation);

/// Settings that admit IPMI exchanges.
TavrinConnection::ConnectionInfo ConnectionSettings();

/// What one thread has had of the platform so far.
struct Tally {
  std::uint64_t exchanges = 0;
  std::uint64_t lines = 0;  ///< Log objects constructed.
};
Tally& TallyOfThisThread();

}  // namespace Tavrin::Double
