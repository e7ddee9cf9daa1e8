#include "tests/reading/ScriptedEnclosure.h"

#include "platform/GlobalConfig.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "tests/doubles/Operations.h"

namespace Tavrin {

using Double::Exchange;

Answering Gives(const Double::Bytes& response, std::uint8_t completionCode) {
  return [=](Exchange& exchange) {
    exchange.response = response;
    exchange.completionCode = completionCode;
  };
}

Answering FallsSilent(FailureCause cause, const std::string& words) {
  return [=](Exchange& exchange) {
    Gives({}, 0xFF)(exchange);
    exchange.sendResult = Standalone::ConnectResult::Failed;
    exchange.cause = cause;
    exchange.words = words;
  };
}

ScriptedSmm::ScriptedSmm(SMMIype ofGeneration) : generation(ofGeneration) {
  platform.expectedSettings = {};
  platform.expectedSettings.port = EnclosureSettings().port;
  platform.expectedSettings.connectionKind = 7;
  // Whoever configures a generation is connected to without a request.
  platform.areConversationsWhole = false;
  platform.improvise = [this] { return NextExchange(); };
  Double::UseOnThisThread(&platform);
}

void ScriptedSmm::ChangeConstruction(const Answering& answering) {
  Change(kStatus, [answering](Exchange& exchange) {
    // The library is constructed with the generation that was detected.
    if (GetGlobalConfigValue("SMM_TYPE", -1) != -1) {
      answering(exchange);
    }
  });
}

void ScriptedSmm::Lose(std::size_t first, FailureCause cause, const std::string& words,
                       std::size_t count) {
  const bool isRefused = IsLoginRefused(cause) || cause == FailureCause::PrivilegeRefused;
  lossBegin_ = first;
  lossCount_ = count;
  lost_.connectResults = {isRefused ? Standalone::ConnectResult::Failed
                                    : Standalone::ConnectResult::WorthRetrying};
  lost_.cause = cause;
  lost_.words = words;
}

void ScriptedSmm::Heal() {
  lossCount_ = 0;
  changes_.clear();
}

Steps ScriptedSmm::Asked() const {
  Steps asked;
  for (const Exchange& exchange : platform.exchanges) {
    asked.emplace_back(kInVain);
    if (exchange.Connects()) {
      const auto& operation = Double::OperationThatSends(exchange.Request(), generation);
      const bool hasNumber = operation.argument != Double::Argument::None;
      asked.back() = operation.name + (hasNumber ? ' ' + std::to_string(exchange.data.back()) : "");
    }
  }
  return asked;
}

Exchange ScriptedSmm::NextExchange() const {
  const std::size_t place = platform.exchanges.size();
  const bool isLost = place >= lossBegin_ && place - lossBegin_ < lossCount_;
  Exchange exchange = isLost ? lost_ : Exchange();
  exchange.onRequest = [this](Exchange& sent) { Answer(sent); };
  return exchange;
}

void ScriptedSmm::Answer(Exchange& exchange) const {
  const IPMICOMMAND request = exchange.Request();
  const std::string name = Double::OperationThatSends(request, generation).name;
  exchange.response = Double::SampleAnswersOf(generation)(request);
  for (const auto& [operation, answering] : changes_) {
    if (operation == name) {
      answering(exchange);
    }
  }
}

}  // namespace Tavrin
