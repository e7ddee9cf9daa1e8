#include "tests/doubles/PlatformDouble.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <utility>

#include "platform/GlobalConfig.h"
#include "platform/Log.h"
#include "tests/doubles/Pauses.h"

namespace Tavrin::Double {
namespace {

void EndWith(const std::string& text) {
  std::cerr << "Broken promise: " << text << '\n';
  std::abort();
}

void (*theComplaint)(const std::string&) = EndWith;

void Require(bool holds, const char* promise) {
  if (!holds) {
    theComplaint(promise);
  }
}

template <typename Value>
void ExpectSame(const char* what, const Value& got, const Value& expected) {
  if (!(got == expected)) {
    std::ostringstream text;
    text << what << ": got " << got << ", expected " << expected;
    theComplaint(text.str());
  }
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

/// The first of what is still to come, which it takes away; as new when nothing is.
template <typename T>
T TakeNext(std::vector<T>& script) {
  if (script.empty()) {
    return {};
  }
  T next = std::move(script.front());
  script.erase(script.begin());
  return next;
}

std::vector<std::string> LinesOf(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// A line of the source that writes the log, counted from 1; empty when it has none of this number.
const std::string& SourceLine(unsigned int number) {
  static const std::vector<std::string> lines =
      LinesOf(SOURCE_DIRECTORY "/module/smm/smm_inventory/impl/SMMInventoryImpl.cpp");
  static const std::string none;
  return number >= 1 && number <= lines.size() ? lines[number - 1] : none;
}

Exchange NextExchange(Platform& platform) {
  if (platform.everyExchange) {
    return *platform.everyExchange;
  }
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
  if (gettid() != getpid()) {
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
  static Platform platform;
  return platform;
}

void OnComplaint(void (*complain)(const std::string& text)) { theComplaint = complain; }

Tally& TallyOfThisThread() {
  thread_local Tally tally;
  return tally;
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

/// Only of clients that follow a script.
struct IpmiClient::State {
  Double::Exchange exchange;
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
  state_->exchange = Double::NextExchange(platform);
  platform.exchanges.push_back(state_->exchange);
}

IpmiClient::~IpmiClient() {
  if (state_ == nullptr) {
    return;
  }
  const Double::Exchange& exchange = state_->exchange;
  ExpectSame("connection attempts made", state_->connectsDone, exchange.connectResults.size());
  Require(state_->sent || !exchange.Connects(), "something is sent over every connection");
  Require(!state_->connected || exchange.sendException, "a connection is closed");
  ThePlatform().openConnections -= state_->connected ? 1 : 0;
  ThePlatform().events.emplace_back("client destroyed");
}

int IpmiClient::connect() {
  if (state_ == nullptr) {
    return 0;
  }
  ThePlatform().events.emplace_back("connect");
  const std::size_t index = state_->connectsDone++;
  Double::ThrowIfAny(state_->exchange.connectException);
  if (index >= state_->exchange.connectResults.size()) {
    Require(false,
            "a connection is tried again only when that is worth it, as often as configured");
    return -1;
  }
  state_->connected = state_->exchange.connectResults[index] == 0;
  ThePlatform().openConnections += state_->connected ? 1 : 0;
  return state_->exchange.connectResults[index];
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
  const Double::Exchange& exchange = state_->exchange;
  platform.events.emplace_back("send");
  Require(state_->connected, "a request is sent over a connection");
  Require(!state_->sent, "one request is sent over a connection");
  if (!platform.everyExchange && !platform.improvise) {
    ExpectSame("request", Double::Describe(request.netFn, request.cmd, request.data),
               Double::Describe(exchange.netFn, exchange.command, exchange.data));
  }
  platform.exchanges.back().netFn = request.netFn;
  platform.exchanges.back().command = request.cmd;
  platform.exchanges.back().data = request.data;
  state_->sent = true;
  Double::ThrowIfAny(exchange.sendException);
  Double::Fill(exchange, response, completionCode);
  exchange.afterSend();
  return exchange.sendResult;
}

int IpmiClient::disconnect() {
  if (state_ == nullptr) {
    return 0;
  }
  ThePlatform().events.emplace_back("disconnect");
  Require(state_->connected, "a connection is closed once");
  state_->connected = false;
  --ThePlatform().openConnections;
  return 0;
}

int GetGlobalConfigValue(const std::string& key, int defaultValue) {
  if (ThePlatform().answerTo) {
    return defaultValue;
  }
  Require(key == "IPMI_CONNECT_RETRY_TIMES" && defaultValue == 3,
          "the attempts are configured, and three by default");
  ThePlatform().events.emplace_back("configuration read");
  return ThePlatform().connectAttempts;
}

// The text is collected in a stream and handed over as a string, as a logger does that writes it.
struct Log::State {
  unsigned int level = 0;
  unsigned int line = 0;
  std::ostringstream text;
};

Log::Log(unsigned int level, const std::string& sourcePath, unsigned int line)
    : state_(std::make_unique<State>()) {
  state_->level = level;
  state_->line = line;
  ++Double::TallyOfThisThread().lines;
  if (ThePlatform().answerTo) {
    return;
  }
  Require(level >= 1 && level <= ThePlatform().logThreshold,
          "a line has a level from 1 to the threshold");
  Require(sourcePath == "module/smm/smm_inventory/impl/SMMInventoryImpl" &&
              Double::SourceLine(line).find("SMM_LOG(k") != std::string::npos,
          "a line says where it was written");
}

Log::~Log() {
  const std::string text = state_->text.str();
  Require(!text.empty(), "a line has a text");
  Double::Platform& platform = ThePlatform();
  if (platform.answerTo) {
    return;
  }
  platform.lines.push_back({state_->level, text});
  platform.lineNumbers.push_back(state_->line);
  platform.whileWritten(platform.lines.back());
}

std::ostream& Log::Stream() { return state_->text; }

unsigned int Log::GetMinLogLevel() {
  Double::Platform& platform = ThePlatform();
  if (platform.answerTo) {
    return platform.logThreshold;
  }
  ++platform.thresholdReads;
  if (!platform.laterThresholds.empty()) {
    platform.logThreshold = Double::TakeNext(platform.laterThresholds);
  }
  return platform.logThreshold;
}

struct SMMInfo::State {};

SMMInfo::SMMInfo(const TavrinConnection::ConnectionInfo& info) {
  if (ThePlatform().answerTo) {
    return;
  }
  const TavrinConnection::ConnectionInfo& expected = ThePlatform().expectedSettings;
  ExpectSame("address of the SMM information", info.address, expected.address);
  ExpectSame("port of the SMM information", info.port, expected.port);
  ExpectSame("user name of the SMM information", info.userName, expected.userName);
  ExpectSame("password of the SMM information", info.password, expected.password);
  ExpectSame("kind of the SMM information", info.connectionKind, expected.connectionKind);
  ThePlatform().settingsOfInformation = &info;
  ThePlatform().events.emplace_back("SMM information constructed");
}

SMMInfo::~SMMInfo() {
  if (ThePlatform().answerTo) {
    return;
  }
  ThePlatform().events.emplace_back("SMM information destroyed");
  ThePlatform().onRelease();
}

int SMMInfo::GetSmmType(SMMIype& type) {
  const Double::Platform& platform = ThePlatform();
  if (!platform.answerTo) {
    ThePlatform().askedSmmType = &type;
    ThePlatform().events.emplace_back("SMM type asked");
    Double::ThrowIfAny(platform.smmTypeException);
  }
  type = static_cast<SMMIype>(platform.smmType.value_or(type));
  return platform.smmTypeResult;
}

}  // namespace Tavrin
