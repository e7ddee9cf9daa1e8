#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "tests/cli/InventoryDouble.h"
#include "tools/smm-inventory/Enclosure.h"
#include "tools/smm-inventory/LoginGuard.h"

namespace Tavrin {

constexpr const char* kLibrary = "module/smm/smm_inventory/impl/SMMInventoryImpl";
constexpr const char* kClient = "platform/standalone/ipmi_client/IpmiClient";

/// The value of SMM_TYPE that leaves the generation to the detection.
constexpr int kDetect = -1;

inline void WriteLine(unsigned int level, const std::string& source, const std::string& text) {
  Log(level, source, 1).Stream() << text;
}

using Standalone::FailureCause;

/// How an exchange ends with an answer of so many bytes.
inline void EndAnswered(std::uint8_t completionCode, std::size_t length) {
  TheScript().exchange = {};
  TheScript().exchange.isAnswered = true;
  TheScript().exchange.completionCode = completionCode;
  TheScript().exchange.answerLength = length;
}

inline void EndUnanswered(FailureCause cause, const std::string& words) {
  TheScript().exchange = {};
  TheScript().exchange.cause = cause;
  TheScript().exchange.words = words;
}

/// A test on a whole enclosure of the first generation and of platform 254, with two PSU slots;
/// each test changes what it is about.
class ScriptedEnclosure : public testing::Test {
 protected:
  ScriptedEnclosure() : console_(out_, false), progress_(console_, 0) {
    Standalone::SetLogLineHandler([this](const Standalone::LogLine& line) {
      guard_.Look();
      progress_.Take(line);
    });
    Standalone::SetGlobalConfigValue("SMM_TYPE", kDetect);
    Standalone::SetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 3);
    TheScript() = InventoryScript();
    TheScript().generation = [](SMMIype& type) { return Give(type, SMM_FIRST_GENERATION); };
    TheScript().construct = [] { EndAnswered(0, 14); };
    TheScript().psuStatus = PsuSlots(2);
  }
  ~ScriptedEnclosure() override { Standalone::SetLogLineHandler({}); }

  Enclosure Construct(SMMIype generation = SMM_FIRST_GENERATION) {
    return {info_, generation, progress_, guard_};
  }

  template <typename Value>
  static int Give(Value& out, const Value& value) {
    out = value;
    return StatusCode::Success;
  }
  static std::function<int(std::vector<PSUStatus>&)> PsuSlots(std::size_t count,
                                                              int status = StatusCode::Success) {
    return [=](std::vector<PSUStatus>& out) {
      out.assign(count, PSUStatus{});
      return status;
    };
  }
  /// An exchange that opens no connection.
  static int LoseConnection(FailureCause cause, const std::string& words) {
    EndUnanswered(cause, words);
    WriteLine(2, kClient, "connect failed: " + words + "; advice in terms of IPMI_KEY");
    WriteLine(1, kLibrary, "connect failed with error:3");
    return StatusCode::NotConnected;
  }
  static void RefuseStatus() {
    TheScript().construct = [] {
      WriteLine(3, kLibrary, "Try to get SMM status, retry 6 times");
      EndAnswered(0xC1, 0);
      WriteLine(2, kLibrary, "response is empty or completeCode: \xc1");
    };
  }

  std::ostringstream out_;
  Console console_;
  Progress progress_;
  LoginGuard guard_;
  TavrinConnection::ConnectionInfo info_;
};

}  // namespace Tavrin
