#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "reading/Enclosure.h"
#include "tests/reading/InventoryDouble.h"

namespace Tavrin {

constexpr const char* kLibrary = "module/smm/smm_inventory/impl/SMMInventoryImpl";
constexpr const char* kClient = "platform/standalone/ipmi_client/IpmiClient";

using Standalone::FailureCause;

inline void WriteLine(unsigned int level, const std::string& source, const std::string& text) {
  if (level <= Log::GetMinLogLevel()) {
    Log(level, source, 7).Stream() << text;
  }
}

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

/// An exchange that opens no connection.
inline int LoseConnection(FailureCause cause, const std::string& words) {
  EndUnanswered(cause, words);
  WriteLine(2, kClient, "connect failed: " + words + "; advice in terms of IPMI_KEY");
  WriteLine(1, kLibrary, "connect failed with error:3");
  return StatusCode::NotConnected;
}

template <typename Value>
int Give(Value& out, const Value& value) {
  out = value;
  return StatusCode::Success;
}

inline std::function<int(SMMIype&)> Generation(SMMIype generation) {
  return [generation](SMMIype& type) { return Give(type, generation); };
}

inline std::function<int(std::vector<PSUStatus>&)> PsuSlots(std::size_t count,
                                                            int status = StatusCode::Success) {
  return [=](std::vector<PSUStatus>& out) {
    out.assign(count, {"not trigger", "trigger", "present", "not power good"});
    return status;
  };
}

/// An SMM whose status is refused, each time that it is read.
inline void RefuseStatus() {
  TheScript().construct = [] {
    WriteLine(3, kLibrary, "Try to get SMM status, retry 6 times");
    EndAnswered(0xC1, 0);
    WriteLine(2, kLibrary, "response is empty or completeCode: \xc1");
  };
}

/// A whole enclosure of the first generation and of platform 254, with two PSU slots.
inline InventoryScript SoundEnclosure() {
  InventoryScript script;
  script.generation = Generation(SMM_FIRST_GENERATION);
  script.construct = [] { EndAnswered(0, 14); };
  script.psuStatus = PsuSlots(2);
  return script;
}

/// Keeps what an observer is told.
class Recorder : public Observer {
 public:
  [[nodiscard]] unsigned int LogLevel() const override { return logLevel; }
  void LineWritten(const Standalone::LogLine& line) override { lines.push_back(line.text); }
  void WaitBegins(const std::string& name) override { events.push_back(name); }
  void AttemptBegins(int number, int attempts) override {
    events.push_back("attempt " + std::to_string(number) + " of " + std::to_string(attempts));
  }
  void WaitEnds() override { events.emplace_back("end"); }
  void AttemptFailed(const Cause& cause) override { events.push_back("failed: " + cause.words); }
  void PartRead(const Reading& /*soFar*/, Part part) override { parts.push_back(part); }

  unsigned int logLevel = 0;
  std::vector<std::string> lines;
  std::vector<std::string> events;
  std::vector<Part> parts;
};

/// A test on a sound enclosure; each test changes what it is about.
class ScriptedEnclosure : public testing::Test {
 protected:
  ScriptedEnclosure() { TheScript() = SoundEnclosure(); }

  /// One pass over an enclosure that was not read before.
  Reading Read(const std::vector<Part>& parts = {}) {
    return Enclosure(EnclosureSettings()).Read(parts, observer_);
  }
  Query<PsuSelection> SelectPsu(int psu) {
    return *Enclosure(EnclosureSettings()).SelectPsu(psu, observer_).psuSelection;
  }

  Recorder observer_;
};

const std::vector<Part> kEverything(kPartsToAskFor.begin(), kPartsToAskFor.end());

}  // namespace Tavrin
