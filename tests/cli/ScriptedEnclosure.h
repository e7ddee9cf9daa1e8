#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "tests/cli/InventoryDouble.h"
#include "tools/smm-inventory/Enclosure.h"

namespace Tavrin {

constexpr const char* kLibrary = "module/smm/smm_inventory/impl/SMMInventoryImpl";
constexpr const char* kClient = "platform/standalone/ipmi_client/IpmiClient";

/// The value of SMM_TYPE that leaves the generation to the detection.
constexpr int kDetect = -1;

inline void WriteLine(unsigned int level, const std::string& source, const std::string& text) {
  Log(level, source, 1).Stream() << text;
}

/// A test on a whole enclosure of the first generation and of platform 254, with two PSU slots;
/// each test changes what it is about.
class ScriptedEnclosure : public testing::Test {
 protected:
  ScriptedEnclosure() : console_(out_, false), progress_(console_, 0) {
    Standalone::SetLogLineHandler(
        [this](const Standalone::LogLine& line) { progress_.Take(line); });
    info_.password = "sesame";
    Standalone::SetGlobalConfigValue("SMM_TYPE", kDetect);
    TheScript() = InventoryScript();
    TheScript().generation = [](SMMIype& type) { return Give(type, SMM_FIRST_GENERATION); };
    TheScript().psuStatus = PsuSlots(2);
  }
  ~ScriptedEnclosure() override { Standalone::SetLogLineHandler({}); }

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
  static void FailConstruction() {
    TheScript().construct = [] {
      WriteLine(3, kLibrary, "Try to get SMM status, retry 6 times");
      WriteLine(2, kClient, "no answer");
      WriteLine(2, kLibrary, "response is empty or completeCode: \xff");
    };
  }

  std::ostringstream out_;
  Console console_;
  Progress progress_;
  TavrinConnection::ConnectionInfo info_;
};

}  // namespace Tavrin
