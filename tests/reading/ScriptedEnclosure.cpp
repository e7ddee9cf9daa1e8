#include "tests/reading/ScriptedEnclosure.h"

#include <algorithm>

#include "platform/GlobalConfig.h"
#include "platform/standalone/globalconfig/ThreadConfig.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "tests/doubles/Operations.h"

namespace Tavrin {
namespace {

using Double::Exchange;
using Double::Operation;

/// The library is constructed with the generation that was detected.
bool IsConstructing() { return GetGlobalConfigValue("SMM_TYPE", -1) != -1; }

int ResultOf(FailureCause cause) {
  switch (cause) {
    case FailureCause::UserNameRefused:
      return Standalone::ConnectResult::UserNameRefused;
    case FailureCause::PasswordRefused:
      return Standalone::ConnectResult::PasswordRefused;
    case FailureCause::PrivilegeRefused:
      return Standalone::ConnectResult::PrivilegeRefused;
    default:
      return Standalone::ConnectResult::WorthRetrying;
  }
}

std::string TextOf(const Exchange& exchange) {
  return exchange.Connects() ? Double::Describe(exchange.netFn, exchange.command, exchange.data)
                             : "in vain";
}

void Call(const Operation<SMMInventory>& operation, SMMInventory& inventory, int psu) {
  Double::Output output = operation.fresh;
  if (operation.argument == Double::Argument::Node) {
    for (int node = 1; node <= static_cast<int>(inventory.GetNodeNub()); ++node) {
      operation.call(inventory, node, output);
    }
  } else {
    operation.call(inventory, psu, output);
  }
}

}  // namespace

Steps operator+(Steps first, const Steps& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

ScriptedSmm::ScriptedSmm(SMMIype ofGeneration)
    : generation(ofGeneration), before_(Double::UseOnThisThread(&platform)) {
  platform.expectedSettings.port = EnclosureSettings().port;
  platform.expectedSettings.connectionKind = 7;
  // Whoever configures a generation is connected to without a request.
  platform.areConversationsWhole = false;
  platform.improvise = [this] { return NextExchange(); };
}

void ScriptedSmm::ChangeConstruction(const Answering& answering) {
  Change("GetSMMStatus", [answering](Exchange& exchange) {
    if (IsConstructing()) {
      answering(exchange);
    }
  });
}

void ScriptedSmm::ChangeDetection(const Answering& answering) {
  Change("GetSMMStatus", [this, answering](Exchange& exchange) {
    if (platform.exchanges.size() == 1) {
      answering(exchange);
    }
  });
}

void ScriptedSmm::Lose(std::size_t first, FailureCause cause, const std::string& words,
                       std::size_t count) {
  lossBegin_ = first;
  lossCount_ = count;
  lossCause_ = cause;
  lossWords_ = words;
}

void ScriptedSmm::Heal() {
  lossCount_ = 0;
  changes_.clear();
}

std::vector<std::string> ScriptedSmm::Asked() const {
  std::vector<std::string> asked;
  std::transform(platform.exchanges.begin(), platform.exchanges.end(), std::back_inserter(asked),
                 TextOf);
  return asked;
}

std::vector<std::string> ScriptedSmm::Requests(const Steps& steps, int psu) {
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
    } else if (step == kConstructionInVain) {
      requests.insert(requests.end(), construction.size(), "in vain");
    } else if (step == kInVain) {
      requests.emplace_back("in vain");
    } else {
      smm.platform.ForgetWhatHappened();
      Call(Double::OperationNamed<SMMInventory>(step), inventory, psu);
      requests = requests + smm.Asked();
    }
  }
  return requests;
}

Exchange ScriptedSmm::NextExchange() const {
  Exchange exchange;
  const std::size_t place = platform.exchanges.size();
  if (place >= lossBegin_ && place - lossBegin_ < lossCount_) {
    exchange.connectResults = {ResultOf(lossCause_)};
    exchange.cause = lossCause_;
    exchange.words = lossWords_;
  }
  exchange.onRequest = [this](Exchange& sent) { Answer(sent); };
  return exchange;
}

void ScriptedSmm::Answer(Exchange& exchange) const {
  const IPMICOMMAND request = {exchange.command, exchange.data, exchange.netFn};
  exchange.response = Double::SampleAnswersOf(generation)(request);
  for (const auto& [operation, answering] : changes_) {
    if (Double::Sends(operation, request)) {
      answering(exchange);
    }
  }
}

ScriptedSmm::Answering Gives(const Double::Bytes& response, std::uint8_t completionCode) {
  return [=](Exchange& exchange) {
    exchange.response = response;
    exchange.completionCode = completionCode;
  };
}

ScriptedSmm::Answering Refuses(std::uint8_t completionCode) { return Gives({}, completionCode); }

ScriptedSmm::Answering FallsSilent(FailureCause cause, const std::string& words) {
  return [=](Exchange& exchange) {
    Gives({}, 0xFF)(exchange);
    exchange.sendResult = Standalone::ConnectResult::Failed;
    exchange.cause = cause;
    exchange.words = words;
  };
}

namespace {

/// What clients are to be given.
TavrinConnection::ConnectionInfo InfoOf(const EnclosureSettings& settings) {
  TavrinConnection::ConnectionInfo info;
  info.address = settings.host;
  info.port = settings.port;
  info.userName = settings.userName;
  info.password = settings.password;
  info.connectionKind = 7;
  return info;
}

}  // namespace

ScriptedEnclosure::ScriptedEnclosure() {
  Double::OnComplaint([](const std::string& text) { ADD_FAILURE() << text; });
}

Reading ScriptedEnclosure::Read(const std::vector<Part>& parts) {
  smm_.platform.ForgetWhatHappened();
  smm_.platform.expectedSettings = InfoOf(settings_);
  return Enclosure(settings_).Read(parts, observer_);
}

Query<PsuSelection> ScriptedEnclosure::SelectPsu(int psu) {
  smm_.platform.ForgetWhatHappened();
  return *Enclosure(settings_).SelectPsu(psu, observer_).psuSelection;
}

std::ptrdiff_t ScriptedEnclosure::Connects() const {
  const std::vector<std::string>& events = smm_.platform.events;
  return std::count(events.begin(), events.end(), "connect");
}

}  // namespace Tavrin
