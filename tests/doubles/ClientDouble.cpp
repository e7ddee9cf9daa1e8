#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <tuple>
#include <utility>

#include "platform/Log.h"
#include "platform/standalone/logger/LogControl.h"
#include "tests/doubles/PlatformDouble.h"

namespace Tavrin::Double {
namespace {

void (*theComplaint)(const std::string&) = [](const std::string& text) {
  std::cerr << "Broken promise: " << text << '\n';
  std::abort();
};

thread_local Platform* ofThisThread = nullptr;

thread_local Standalone::LastExchange lastExchange;

Exchange NextExchange(Platform& platform) {
  if (platform.improvise) {
    return platform.improvise();
  }
  if (platform.exchangesScripted == platform.script.size()) {
    theComplaint("exchange " + std::to_string(platform.script.size() + 1) + " was not expected");
    return {};
  }
  return platform.script[platform.exchangesScripted++];
}

void TakeRequest(Exchange& exchange, const IPMICOMMAND& request, bool isExpected) {
  const std::string expected = isExpected ? exchange.RequestText() : "";
  exchange.netFn = request.netFn;
  exchange.command = request.cmd;
  exchange.data = request.data;
  if (isExpected && exchange.RequestText() != expected) {
    theComplaint("request: got " + exchange.RequestText() + ", expected " + expected);
  }
}

void Fill(const Exchange& exchange, Bytes& response, std::uint8_t& completionCode) {
  if (exchange.filling == Filling::LeavesAlone) {
    return;
  }
  if (exchange.filling != Filling::Appends) {
    response.clear();
  }
  response.insert(response.end(), exchange.response.begin(), exchange.response.end());
  if (exchange.filling != Filling::ReplacesAllButTheCode) {
    completionCode = exchange.completionCode;
  }
}

/// How a call ended of a client that follows this exchange.
int Remember(const Exchange& exchange, int result) {
  lastExchange.cause = result == 0 ? Standalone::FailureCause::None : exchange.cause;
  lastExchange.words = result == 0 ? "" : exchange.words;
  if (!lastExchange.words.empty() && Log::GetMinLogLevel() >= Standalone::LogLevel::Warning) {
    Log(Standalone::LogLevel::Warning, "platform/standalone/ipmi_client/IpmiClient", __LINE__)
            .Stream()
        << "failed: " << exchange.words;
  }
  return result;
}

}  // namespace

std::string HexText(const Bytes& bytes) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  for (const std::uint8_t byte : bytes) {
    text << "0x" << std::hex << int{byte} << ' ';
  }
  return text.str();
}

TavrinConnection::ConnectionInfo TestSettings() {
  return {"192.0.2.17", 9623, "operator-7", "correct horse", 11, 12, -13, 7, 15};
}

Bytes StatusAnswer(std::uint8_t platformId, std::uint8_t enclosureType) {
  return {platformId, 0x12, 0x23, 0x34, 0x45, 0x56, 0x67,
          0x78,       0x89, 0x9A, 0xAB, 0xBC, 0xCD, enclosureType};
}

std::string Exchange::RequestText() const {
  return "netFn " + HexText({netFn}) + "command " + HexText({command}) + "data " + HexText(data);
}

std::ostream& operator<<(std::ostream& stream, const Line& line) {
  return stream << "level " << line.level << ": " << line.text;
}

void Platform::Expect(std::uint8_t netFn, std::uint8_t command, const Bytes& data,
                      const Bytes& response, std::uint8_t completionCode) {
  script.push_back({response, completionCode, netFn, command, data});
}

void Platform::ExpectStatusReads(int count, const Bytes& response, std::uint8_t completionCode) {
  for (int i = 0; i < count; ++i) {
    Expect(0x32, 0xA8, {}, response, completionCode);
  }
}

void Platform::ExpectConnectFailures(const std::vector<int>& results) {
  script.emplace_back().connectResults = results;
}

void Platform::Happened(const char* event) {
  if (!answerTo) {
    events.emplace_back(event);
    onEvent(events.back());
  }
}

Platform& ThePlatform() {
  static Platform ofAllThreads;
  return ofThisThread != nullptr ? *ofThisThread : ofAllThreads;
}

void UseOnThisThread(Platform* own) { ofThisThread = own; }

void OnComplaint(void (*complain)(const std::string& text)) { theComplaint = complain; }

void Require(bool holds, const char* promise) {
  if (!holds) {
    theComplaint(promise);
  }
}

}  // namespace Tavrin::Double

namespace Tavrin {

using Double::Exchange;
using Double::Platform;
using Double::Require;
using Double::ThePlatform;

const Standalone::LastExchange& Standalone::GetLastExchange() { return Double::lastExchange; }

/// Only of clients that follow an exchange, which is the last that was begun.
struct IpmiClient::State {
  std::size_t connectsDone = 0;
  bool connected = false;
  bool sent = false;
};

IpmiClient::IpmiClient(const std::string& address, const std::string& userName,
                       const std::string& password, const std::string& port,
                       unsigned long cipherSuite) {
  if (Double::platformOfHost) {
    Double::UseOnThisThread(Double::platformOfHost(address));
  }
  Platform& platform = ThePlatform();
  if (platform.answerTo) {
    return;
  }
  const TavrinConnection::ConnectionInfo& expected = platform.expectedSettings;
  Require(std::tie(address, userName, password) ==
                  std::tie(expected.address, expected.userName, expected.password) &&
              port == std::to_string(expected.port) && cipherSuite == 3,
          "a client gets the settings, and cipher suite 3");
  Require(platform.openConnections == 0, "one connection is open at a time");
  platform.Happened("client constructed");
  state_ = std::make_unique<State>();
  platform.exchanges.push_back(Double::NextExchange(platform));
  Double::lastExchange = {};
  Double::lastExchange.cause = Standalone::FailureCause::NoAttempt;
}

IpmiClient::~IpmiClient() {
  if (state_ == nullptr) {
    return;
  }
  Platform& platform = ThePlatform();
  const Exchange& exchange = platform.exchanges.back();
  if (platform.areConversationsWhole) {
    Require(state_->connectsDone == exchange.connectResults.size(),
            "a connection is tried again when that is worth it, as often as configured");
    Require(state_->sent || !exchange.Connects(), "something is sent over every connection");
    Require(!state_->connected || exchange.exception, "a connection is closed");
  }
  platform.openConnections -= state_->connected ? 1 : 0;
  platform.Happened("client destroyed");
}

int IpmiClient::connect() {
  if (state_ == nullptr) {
    return 0;
  }
  Platform& platform = ThePlatform();
  platform.Happened("connect");
  const Exchange& exchange = platform.exchanges.back();
  const std::size_t index = state_->connectsDone++;
  if (exchange.exception && !exchange.Connects()) {
    std::rethrow_exception(exchange.exception);
  }
  const std::vector<int>& results = exchange.connectResults;
  const int result = results.empty() ? -1 : results[std::min(index, results.size() - 1)];
  state_->connected = result == 0;
  platform.openConnections += state_->connected ? 1 : 0;
  return Double::Remember(exchange, result);
}

int IpmiClient::send(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                     std::uint8_t& completionCode) {
  Platform& platform = ThePlatform();
  if (state_ == nullptr) {
    response = platform.answerTo(request);
    completionCode = 0;
    Double::lastExchange.isAnswered = true;
    Double::lastExchange.answerLength = response.size();
    return 0;
  }
  platform.Happened("send");
  Require(state_->connected, "a request is sent over a connection");
  Require(!std::exchange(state_->sent, true), "one request is sent over a connection");
  Exchange& exchange = platform.exchanges.back();
  Double::TakeRequest(exchange, request, !platform.improvise);
  if (exchange.exception) {
    std::rethrow_exception(exchange.exception);
  }
  exchange.onRequest(exchange);
  Double::Fill(exchange, response, completionCode);
  Double::lastExchange.isAnswered = exchange.sendResult == 0;
  Double::lastExchange.completionCode = completionCode;
  Double::lastExchange.answerLength = response.size();
  return Double::Remember(exchange, exchange.sendResult);
}

int IpmiClient::disconnect() {
  if (state_ == nullptr) {
    return 0;
  }
  Platform& platform = ThePlatform();
  Require(state_->connected || !platform.areConversationsWhole, "a connection is closed once");
  platform.openConnections -= std::exchange(state_->connected, false) ? 1 : 0;
  platform.Happened("disconnect");
  return 0;
}

}  // namespace Tavrin
