#include "tests/reading/ScriptedEnclosure.h"

#include "platform/GlobalConfig.h"
#include "platform/standalone/globalconfig/ThreadConfig.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "platform/standalone/logger/ThreadLog.h"
#include "tests/doubles/Operations.h"

namespace Tavrin {
namespace {

using Double::Exchange;

/// The library is constructed with the generation that was detected.
bool IsConstructing() { return GetGlobalConfigValue("SMM_TYPE", -1) != -1; }

bool IsOf(const std::string& step, const IPMICOMMAND& request, bool isFirst) {
  if (step == kDetection || step == kConstruction) {
    return Double::Sends("GetSMMStatus", request) &&
           (step == kDetection ? isFirst && !IsConstructing() : IsConstructing());
  }
  return Double::Sends(step, request);
}

void Call(SMMInventory& inventory, const std::string& name, int psu) {
  const auto& operation = Double::OperationNamed<SMMInventory>(name);
  const bool isOfNode = operation.argument == Double::Argument::Node;
  const int last = isOfNode ? static_cast<int>(inventory.GetNodeNub()) : psu;
  Double::Output output = operation.fresh;
  for (int argument = isOfNode ? 1 : psu; argument <= last; ++argument) {
    operation.call(inventory, argument, output);
  }
}

}  // namespace

Steps operator+(Steps first, const Steps& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

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

ScriptedSmm::ScriptedSmm(SMMIype ofGeneration)
    : generation(ofGeneration), before_(Double::UseOnThisThread(&platform)) {
  platform.expectedSettings = {};
  platform.expectedSettings.port = EnclosureSettings().port;
  platform.expectedSettings.connectionKind = 7;
  // Whoever configures a generation is connected to without a request.
  platform.areConversationsWhole = false;
  platform.improvise = [this] { return NextExchange(); };
}

void ScriptedSmm::Lose(std::size_t first, FailureCause cause, const std::string& words,
                       std::size_t count) {
  const bool isRefused = cause == FailureCause::UserNameRefused ||
                         cause == FailureCause::PasswordRefused ||
                         cause == FailureCause::PrivilegeRefused;
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

std::vector<std::string> ScriptedSmm::Asked() const {
  std::vector<std::string> asked;
  for (const Exchange& exchange : platform.exchanges) {
    asked.push_back(exchange.Connects() ? exchange.RequestText() : kInVain);
  }
  return asked;
}

std::vector<std::string> ScriptedSmm::Requests(const Steps& steps, int psu) const {
  const Standalone::ThreadConfig config({{"SMM_TYPE", generation}});
  const Standalone::ThreadLog quiet(0, {});
  ScriptedSmm smm(generation);
  smm.changes_ = changes_;
  SMMInventory inventory(smm.platform.expectedSettings);
  const std::vector<std::string> construction = smm.Asked();
  std::vector<std::string> requests;
  for (const std::string& step : steps) {
    if (step == kDetection) {
      requests.push_back(construction.front());
    } else if (step == kConstruction) {
      requests = requests + construction;
    } else if (step == kInVain) {
      requests.push_back(step);
    } else {
      smm.platform.ForgetWhatHappened();
      Call(inventory, step, psu);
      requests = requests + smm.Asked();
    }
  }
  return requests;
}

Exchange ScriptedSmm::NextExchange() const {
  const std::size_t place = platform.exchanges.size();
  const bool isLost = place >= lossBegin_ && place - lossBegin_ < lossCount_;
  Exchange exchange = isLost ? lost_ : Exchange();
  exchange.onRequest = [this](Exchange& sent) { Answer(sent); };
  return exchange;
}

void ScriptedSmm::Answer(Exchange& exchange) const {
  const IPMICOMMAND request = {exchange.command, exchange.data, exchange.netFn};
  exchange.response = Double::SampleAnswersOf(generation)(request);
  for (const auto& [step, answering] : changes_) {
    if (IsOf(step, request, platform.exchanges.size() == 1)) {
      answering(exchange);
    }
  }
}

}  // namespace Tavrin
