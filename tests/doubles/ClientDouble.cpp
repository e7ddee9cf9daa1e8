#include "tests/doubles/PlatformDouble.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <utility>

#include "platform/Log.h"
#include "tests/doubles/Pauses.h"

namespace Tavrin::Double {
namespace {

void EndWith(const std::string& text) {
  std::cerr << "Broken promise: " << text << '\n';
  std::abort();
}

thread_local Platform* ofThisThread = nullptr;

void (*theComplaint)(const std::string&) = EndWith;

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

void ThrowIfAny(const std::exception_ptr& exception) {
  if (exception != nullptr) {
    std::rethrow_exception(exception);
  }
}

unsigned int PlayPause(unsigned int seconds) {
  Platform& platform = ThePlatform();
  if (platform.answerTo) {
    return 0;
  }
  // A fuzzer watches its memory from a thread of its own, which does pause.
  if (gettid() != getpid() && ofThisThread == nullptr) {
    const timespec pause{seconds, 0};
    return static_cast<unsigned int>(nanosleep(&pause, nullptr));
  }
  platform.pauses.push_back(seconds);
  platform.events.emplace_back("pause");
  const SleepEnd end = TakeNext(platform.sleepEnds);
  errno = end.error != 0 ? end.error : errno;
  return end.result;
}

int PlayWait(clockid_t clock, int flags, const timespec& until) {
  ThePlatform().waits.push_back({clock, flags, until});
  return TakeNext(ThePlatform().waitResults);
}

[[maybe_unused]] const bool playsPauses = []() noexcept {
  OnPause(PlayPause);
  OnWait(PlayWait);
  return true;
}();

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Line& line) {
  return stream << "level " << line.level << ": " << line.text;
}

void Platform::Expect(std::uint8_t netFn, std::uint8_t command, const Bytes& data,
                      const Bytes& response, std::uint8_t completionCode) {
  Exchange exchange;
  exchange.netFn = netFn;
  exchange.command = command;
  exchange.data = data;
  exchange.response = response;
  exchange.completionCode = completionCode;
  script.push_back(std::move(exchange));
}

void Platform::ExpectStatusReads(int count, const Bytes& response, std::uint8_t completionCode) {
  for (int i = 0; i < count; ++i) {
    Expect(0x32, 0xA8, {}, response, completionCode);
  }
}

void Platform::ExpectConnectFailures(const std::vector<int>& results) {
  Exchange exchange;
  exchange.connectResults = results;
  script.push_back(std::move(exchange));
}

void Platform::ForgetWhatHappened() {
  exchanges.clear();
  lines.clear();
  lineNumbers.clear();
  thresholdReads = 0;
  pauses.clear();
  waits.clear();
  events.clear();
}

Platform& ThePlatform() {
  static Platform ofAllThreads;
  return ofThisThread != nullptr ? *ofThisThread : ofAllThreads;
}

Platform* UseOnThisThread(Platform* own) { return std::exchange(ofThisThread, own); }

void Complain(const std::string& text) { theComplaint(text); }

void OnComplaint(void (*complain)(const std::string& text)) { theComplaint = complain; }

Tally& TallyOfThisThread() {
  thread_local Tally tally;
  return tally;
}

std::string Describe(std::uint8_t netFn, std::uint8_t command, const Bytes& data) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << std::hex << std::setfill('0') << "netFn " << std::setw(2) << int{netFn} << " command "
       << std::setw(2) << int{command} << " data";
  for (const std::uint8_t byte : data) {
    text << ' ' << std::setw(2) << int{byte};
  }
  return text.str();
}

TavrinConnection::ConnectionInfo TestSettings() {
  TavrinConnection::ConnectionInfo settings;
  settings.address = "192.0.2.17";
  settings.port = 9623;
  settings.userName = "operator-7";
  settings.password = "correct horse";
  settings.aux16A = 11;
  settings.aux16B = 12;
  settings.aux32A = -13;
  settings.connectionKind = 7;
  settings.aux32B = 15;
  return settings;
}

Bytes StatusAnswer(std::uint8_t platformId, std::uint8_t enclosureType) {
  return {platformId, 0x12, 0x23, 0x34, 0x45, 0x56, 0x67,
          0x78,       0x89, 0x9A, 0xAB, 0xBC, 0xCD, enclosureType};
}

}  // namespace Tavrin::Double

namespace Tavrin {

using Double::ExpectSame;
using Double::Require;
using Double::ThePlatform;

namespace {

constexpr unsigned int kWarning = 2;

thread_local Standalone::LastExchange lastExchange;

/// How a call ended of a client that follows this exchange.
void Remember(const Double::Exchange& exchange, int result) {
  lastExchange.result = result;
  lastExchange.cause = result == 0 ? Standalone::FailureCause::None : exchange.cause;
  lastExchange.words = result == 0 ? "" : exchange.words;
  if (!lastExchange.words.empty() && Log::GetMinLogLevel() >= kWarning) {
    Log(kWarning, "platform/standalone/ipmi_client/IpmiClient", __LINE__).Stream()
        << "failed: " << exchange.words;
  }
}

}  // namespace

const Standalone::LastExchange& Standalone::GetLastExchange() { return lastExchange; }

/// Only of clients that follow an exchange, which is the last that was begun.
struct IpmiClient::State {
  std::size_t connectsDone = 0;
  bool connected = false;
  bool sent = false;
};

IpmiClient::IpmiClient(const std::string& address, const std::string& userName,
                       const std::string& password, const std::string& port,
                       unsigned long cipherSuite) {
  Double::Platform& platform = ThePlatform();
  if (platform.answerTo) {
    return;
  }
  const TavrinConnection::ConnectionInfo& expected = platform.expectedSettings;
  ExpectSame("address of a client", address, expected.address);
  ExpectSame("user name of a client", userName, expected.userName);
  ExpectSame("password of a client", password, expected.password);
  ExpectSame("port of a client", port, std::to_string(expected.port));
  ExpectSame("cipher suite of a client", cipherSuite, 3UL);
  Require(platform.openConnections == 0, "one connection is open at a time");
  platform.events.emplace_back("client constructed");
  state_ = std::make_unique<State>();
  platform.exchanges.push_back(Double::NextExchange(platform));
  lastExchange = {};
  lastExchange.cause = Standalone::FailureCause::NoAttempt;
}

IpmiClient::~IpmiClient() {
  if (state_ == nullptr) {
    return;
  }
  const Double::Exchange& exchange = ThePlatform().exchanges.back();
  if (ThePlatform().areConversationsWhole) {
    ExpectSame("connection attempts made", state_->connectsDone, exchange.connectResults.size());
    Require(state_->sent || !exchange.Connects(), "something is sent over every connection");
    Require(!state_->connected || exchange.sendException, "a connection is closed");
  }
  ThePlatform().openConnections -= state_->connected ? 1 : 0;
  ThePlatform().events.emplace_back("client destroyed");
}

int IpmiClient::connect() {
  if (state_ == nullptr) {
    return 0;
  }
  ThePlatform().events.emplace_back("connect");
  const Double::Exchange& exchange = ThePlatform().exchanges.back();
  const std::size_t index = state_->connectsDone++;
  Double::ThrowIfAny(exchange.connectException);
  if (index >= exchange.connectResults.size()) {
    Require(!ThePlatform().areConversationsWhole,
            "a connection is tried again only when that is worth it, as often as configured");
  }
  const int result = exchange.connectResults.empty()          ? -1
                     : index < exchange.connectResults.size() ? exchange.connectResults[index]
                                                              : exchange.connectResults.back();
  state_->connected = result == 0;
  ThePlatform().openConnections += state_->connected ? 1 : 0;
  Remember(exchange, result);
  return result;
}

int IpmiClient::send(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                     std::uint8_t& completionCode) {
  Double::Platform& platform = ThePlatform();
  ++Double::TallyOfThisThread().exchanges;
  if (state_ == nullptr) {
    response = platform.answerTo(request);
    completionCode = 0;
    return 0;
  }
  Double::Exchange& exchange = platform.exchanges.back();
  platform.events.emplace_back("send");
  Require(state_->connected, "a request is sent over a connection");
  Require(!state_->sent, "one request is sent over a connection");
  if (!platform.improvise) {
    ExpectSame("request", Double::Describe(request.netFn, request.cmd, request.data),
               Double::Describe(exchange.netFn, exchange.command, exchange.data));
  }
  exchange.netFn = request.netFn;
  exchange.command = request.cmd;
  exchange.data = request.data;
  state_->sent = true;
  Double::ThrowIfAny(exchange.sendException);
  if (exchange.onRequest) {
    exchange.onRequest(exchange);
  }
  Double::Fill(exchange, response, completionCode);
  Remember(exchange, exchange.sendResult);
  lastExchange.isAnswered = exchange.sendResult == 0;
  lastExchange.completionCode = completionCode;
  lastExchange.answerLength = response.size();
  exchange.afterSend();
  return exchange.sendResult;
}

int IpmiClient::disconnect() {
  if (state_ == nullptr) {
    return 0;
  }
  ThePlatform().events.emplace_back("disconnect");
  Require(state_->connected || !ThePlatform().areConversationsWhole, "a connection is closed once");
  ThePlatform().openConnections -= state_->connected ? 1 : 0;
  state_->connected = false;
  return 0;
}

}  // namespace Tavrin
