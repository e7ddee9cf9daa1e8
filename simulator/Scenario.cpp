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
void CheckCommand(const Override& override, const ScenarioValue& entry) {
  const bool served = override.netFn == kNetFnOem ||
                      (override.netFn == kNetFnApplication && override.command == kMasterWriteRead);
  if (!served) {
    const auto netFn = entry.Find("netFn");
    entry.Fail("for netFn " + (netFn ? netFn->Shown() : R"("0x32")") + " and command " +
                   entry.Find("command")->Shown(),
               R"(netFn "0x32", or netFn "0x06" with command "0x52")");
  }
}

void ReadMatch(const ScenarioValue& entry, Override& override) {
  if (const auto netFn = entry.Find("netFn")) {
    override.netFn = netFn->Byte();
  }
  override.command = entry.RequiredByte("command");
  CheckCommand(override, entry);
  if (const auto data = entry.Find("data")) {
    override.requestData = ReadAnswerBytes(*data);
  }
  if (const auto times = entry.Find("times")) {
    override.times = times->Number(1, kMaxTimes);
  }
}

void ReadAction(const ScenarioValue& entry, Override& override) {
  const auto completionCode = entry.Find("completionCode");
  const auto response = entry.Find("response");
  if (completionCode || response) {
    override.answer.emplace();
  }
  if (completionCode) {
    override.answer->completionCode = completionCode->Byte();
  }
  if (response) {
    override.answer->data = ReadAnswerBytes(*response);
  }
  if (const auto delay = entry.Find("delayMs")) {
    override.delay = std::chrono::milliseconds(delay->Number(1, kMaxDelayMilliseconds));
  }
  if (const auto silent = entry.Find("silent")) {
    override.silent = silent->Truth();
  }
}

void CheckAction(const ScenarioValue& entry, const Override& override) {
  const bool answers = override.answer || override.delay.count() > 0;
  if (override.silent && answers) {
    entry.Fail("silent and has an answer or a delay",
               "silent alone, or completionCode, response and delayMs without it");
  }
  if (!override.silent && !answers) {
    entry.Fail("without an effect", "at least one of completionCode, response, delayMs, silent");
  }
}

Override ReadOverride(const ScenarioValue& entry) {
  entry.CheckKeys(
      {"netFn", "command", "data", "times", "completionCode", "response", "delayMs", "silent"});
  Override override;
  ReadMatch(entry, override);
  ReadAction(entry, override);
  CheckAction(entry, override);
  return override;
}

}  // namespace

Scenario ParseScenario(const std::string& text, const std::string& source, Enclosure enclosure) {
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
    for (const ScenarioValue& entry : overrides->Elements()) {
      scenario.overrides.push_back(ReadOverride(entry));
    }
  }
  return scenario;
}

}  // namespace Tavrin::Simulator
