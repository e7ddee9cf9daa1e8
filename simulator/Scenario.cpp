#include "simulator/Scenario.h"

#include <cstddef>
#include <utility>

#include "simulator/EnclosureChanges.h"
#include "simulator/ScenarioValue.h"

namespace Tavrin::Simulator {
namespace {

constexpr unsigned int kMaxDelayMilliseconds = 60000;
constexpr unsigned int kMaxTimes = 1000000;
/// Longer answers do not fit into what ipmi_sim sends.
constexpr std::size_t kMaxAnswerLength = 200;

Bytes ReadAnswerBytes(const ScenarioValue& value) {
  Bytes bytes = value.ByteList();
  if (bytes.size() > kMaxAnswerLength) {
    value.Fail(std::to_string(bytes.size()) + " bytes long",
               "at most " + std::to_string(kMaxAnswerLength));
  }
  return bytes;
}

/// Only commands that the module serves; the session's own commands never reach it.
void CheckCommand(const Override& entry, const ScenarioValue& object) {
  const bool served = entry.netFn == kNetFnOem ||
                      (entry.netFn == kNetFnApplication && entry.command == kMasterWriteRead);
  if (!served) {
    const auto netFn = object.Find("netFn");
    object.Fail("for netFn " + (netFn ? netFn->Shown() : R"("0x32")") + " and command " +
                    object.Find("command")->Shown(),
                R"(netFn "0x32", or netFn "0x06" with command "0x52")");
  }
}

void ReadMatch(const ScenarioValue& object, Override& entry) {
  if (const auto netFn = object.Find("netFn")) {
    entry.netFn = netFn->Byte();
  }
  entry.command = object.RequiredByte("command");
  CheckCommand(entry, object);
  if (const auto data = object.Find("data")) {
    entry.requestData = ReadAnswerBytes(*data);
  }
  if (const auto times = object.Find("times")) {
    entry.times = times->Number(1, kMaxTimes);
  }
}

void ReadAction(const ScenarioValue& object, Override& entry) {
  const auto completionCode = object.Find("completionCode");
  const auto response = object.Find("response");
  if (completionCode || response) {
    entry.answer.emplace();
  }
  if (completionCode) {
    entry.answer->completionCode = completionCode->Byte();
  }
  if (response) {
    entry.answer->data = ReadAnswerBytes(*response);
  }
  if (const auto delay = object.Find("delayMs")) {
    entry.delay = std::chrono::milliseconds(delay->Number(1, kMaxDelayMilliseconds));
  }
  if (const auto silent = object.Find("silent")) {
    entry.silent = silent->Truth();
  }
}

void CheckAction(const ScenarioValue& object, const Override& entry) {
  const bool answers = entry.answer || entry.delay.count() > 0;
  if (entry.silent && answers) {
    object.Fail("silent and has an answer or a delay",
                "silent alone, or completionCode, response and delayMs without it");
  }
  if (!entry.silent && !answers) {
    object.Fail("without an effect", "at least one of completionCode, response, delayMs, silent");
  }
}

Override ReadOverride(const ScenarioValue& object) {
  object.CheckKeys(
      {"netFn", "command", "data", "times", "completionCode", "response", "delayMs", "silent"});
  Override entry;
  ReadMatch(object, entry);
  ReadAction(object, entry);
  CheckAction(object, entry);
  return entry;
}

}  // namespace

Scenario ParseScenario(const std::string& text, const std::string& source,
                       EnclosureState enclosure) {
  const ScenarioValue document = ScenarioValue::Parse(text, source);
  document.CheckKeys({"enclosure", "overrides"});
  const auto changes = document.Find("enclosure");
  const auto overrides = document.Find("overrides");
  if (!changes && !overrides) {
    document.Fail("without an effect", "at least one of enclosure, overrides");
  }
  Scenario scenario{std::move(enclosure), {}};
  if (changes) {
    ChangeEnclosure(*changes, scenario.enclosure);
  }
  if (overrides) {
    for (const ScenarioValue& object : overrides->Elements()) {
      scenario.overrides.push_back(ReadOverride(object));
    }
  }
  return scenario;
}

}  // namespace Tavrin::Simulator
