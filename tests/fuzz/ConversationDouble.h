#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/ConnectionInfo.h"
#include "platform/IpmiClient.h"
#include "tests/fuzz/FuzzInput.h"

namespace Tavrin::Fuzz {

/// How one exchange went. One whose connection failed has an empty answer and completion code 0xFF.
struct Exchange {
  IPMICOMMAND request;
  std::vector<std::uint8_t> answer;
  std::uint8_t completionCode = 0xFF;
  bool connected = false;
  bool faulted = false;
};

/// What the double throws where a platform library may throw anything.
struct PlatformFault {};

/// Everything behind the seam. The input says how each exchange goes: a byte for the connection
/// (see IpmiClient in the source), the completion code, the length of the answer, and the answer.
struct Conversation {
  // What will happen.
  FuzzInput input;
  TavrinConnection::ConnectionInfo settings;
  unsigned int logThreshold = 0;
  int connectAttempts = 0;
  std::int32_t smmType = 0;
  bool knowsSmmType = true;
  /// While there is one, every exchange gets it, and the input is left alone.
  std::optional<std::vector<std::uint8_t>> fixedAnswer;

  // What did.
  std::vector<Exchange> exchanges;
  std::size_t pauses = 0;
  int openConnections = 0;

  void ForgetWhatHappened();
};

/// The one that the platform's functions work on.
Conversation& TheConversation();

}  // namespace Tavrin::Fuzz
