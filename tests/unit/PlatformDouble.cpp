#include "tests/unit/PlatformDouble.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <utility>

#include "platform/GlobalConfig.h"
#include "platform/Log.h"

namespace Tavrin::Double {
namespace {

Platform platformNow;

std::string Describe(const std::string& address, const std::string& userName,
                     const std::string& password, const std::string& port,
                     unsigned long cipherSuite) {
  return address + '|' + userName + '|' + password + '|' + port + '|' + std::to_string(cipherSuite);
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
std::string SourceLine(unsigned int number) {
  static const std::vector<std::string> lines =
      LinesOf(SOURCE_DIRECTORY "/module/smm/smm_inventory/impl/SMMInventoryImpl.cpp");
  return number >= 1 && number <= lines.size() ? lines[number - 1] : "";
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
  lines.clear();
  lineNumbers.clear();
  thresholdReads = 0;
  pauses.clear();
  waits.clear();
  events.clear();
}

Platform& ThePlatform() { return platformNow; }

void ResetPlatform() { platformNow = Platform{}; }

void ExpectScriptPlayed() {
  EXPECT_EQ(platformNow.exchangesBegun, platformNow.script.size())
      << "exchanges begun, and exchanges expected";
  EXPECT_EQ(platformNow.openConnections, 0) << "connections left open";
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

void PlatformTest::ExpectLines(const std::vector<Line>& linesAtThreshold4,
                               const std::function<void()>& operation) {
  for (unsigned int threshold = 0; threshold <= 4; ++threshold) {
    platform.ForgetWhatHappened();
    platform.logThreshold = threshold;
    operation();
    std::vector<Line> expected;
    std::copy_if(linesAtThreshold4.begin(), linesAtThreshold4.end(), std::back_inserter(expected),
                 [=](const Line& line) { return line.level <= threshold; });
    EXPECT_THAT(platform.lines, ::testing::ElementsAreArray(expected)) << "threshold " << threshold;
    EXPECT_EQ(platform.thresholdReads, linesAtThreshold4.size()) << "threshold " << threshold;
  }
}

}  // namespace Tavrin::Double

namespace Tavrin {

using Double::Describe;
using Double::Exchange;
using Double::ThePlatform;

struct IpmiClient::State {
  Exchange exchange;
  std::size_t connectsDone = 0;
  bool connected = false;
  bool sent = false;
};

IpmiClient::IpmiClient(const std::string& address, const std::string& userName,
                       const std::string& password, const std::string& port,
                       unsigned long cipherSuite)
    : state_(new State) {
  Double::Platform& platform = ThePlatform();
  const TavrinConnection::ConnectionInfo& expected = platform.expectedSettings;
  EXPECT_EQ(Describe(address, userName, password, port, cipherSuite),
            Describe(expected.address, expected.userName, expected.password,
                     std::to_string(expected.port), 3));
  platform.events.emplace_back("client constructed");
  if (platform.everyExchange) {
    state_->exchange = *platform.everyExchange;
    return;
  }
  if (platform.exchangesBegun < platform.script.size()) {
    state_->exchange = platform.script[platform.exchangesBegun];
  } else {
    ADD_FAILURE() << "exchange " << platform.exchangesBegun + 1 << " was not expected";
  }
  ++platform.exchangesBegun;
}

IpmiClient::~IpmiClient() {
  EXPECT_EQ(state_->connectsDone, state_->exchange.connectResults.size())
      << "connection attempts made, and expected, in exchange " << ThePlatform().exchangesBegun;
  EXPECT_TRUE(state_->sent || !state_->exchange.Connects())
      << "nothing was sent over exchange " << ThePlatform().exchangesBegun;
  ThePlatform().openConnections -= state_->connected ? 1 : 0;
  ThePlatform().events.emplace_back("client destroyed");
}

int IpmiClient::connect() {
  ThePlatform().events.emplace_back("connect");
  const std::size_t index = state_->connectsDone++;
  Double::ThrowIfAny(state_->exchange.connectException);
  if (index >= state_->exchange.connectResults.size()) {
    ADD_FAILURE() << "connection attempt " << index + 1 << " was not expected";
    return -1;
  }
  state_->connected = state_->exchange.connectResults[index] == 0;
  ThePlatform().openConnections += state_->connected ? 1 : 0;
  return state_->exchange.connectResults[index];
}

int IpmiClient::send(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                     std::uint8_t& completionCode) {
  const Exchange& exchange = state_->exchange;
  ThePlatform().events.emplace_back("send");
  EXPECT_TRUE(state_->connected) << "sent without a connection";
  EXPECT_FALSE(state_->sent) << "sent twice over one connection";
  EXPECT_TRUE(ThePlatform().everyExchange ||
              Describe(request.netFn, request.cmd, request.data) ==
                  Describe(exchange.netFn, exchange.command, exchange.data))
      << "sent " << Describe(request.netFn, request.cmd, request.data) << ", expected "
      << Describe(exchange.netFn, exchange.command, exchange.data);
  state_->sent = true;
  Double::ThrowIfAny(exchange.sendException);
  Double::Fill(exchange, response, completionCode);
  exchange.afterSend();
  return exchange.sendResult;
}

int IpmiClient::disconnect() {
  ThePlatform().events.emplace_back("disconnect");
  EXPECT_TRUE(state_->connected) << "disconnected without a connection";
  state_->connected = false;
  --ThePlatform().openConnections;
  return 0;
}

int GetGlobalConfigValue(const std::string& key, int defaultValue) {
  EXPECT_EQ(key, "IPMI_CONNECT_RETRY_TIMES");
  EXPECT_EQ(defaultValue, 3);
  ThePlatform().events.emplace_back("configuration read");
  return ThePlatform().connectAttempts;
}

struct Log::State {
  unsigned int level = 0;
  unsigned int line = 0;
  std::ostringstream text;
};

Log::Log(unsigned int level, const std::string& sourcePath, unsigned int line) : state_(new State) {
  EXPECT_EQ(sourcePath, "module/smm/smm_inventory/impl/SMMInventoryImpl");
  EXPECT_THAT(Double::SourceLine(line), ::testing::HasSubstr("SMM_LOG(k")) << "line " << line;
  state_->level = level;
  state_->line = line;
}

Log::~Log() {
  ThePlatform().lines.push_back({state_->level, state_->text.str()});
  ThePlatform().lineNumbers.push_back(state_->line);
  ThePlatform().whileWritten(ThePlatform().lines.back());
}

std::ostream& Log::Stream() { return state_->text; }

unsigned int Log::GetMinLogLevel() {
  Double::Platform& platform = ThePlatform();
  ++platform.thresholdReads;
  if (!platform.laterThresholds.empty()) {
    platform.logThreshold = platform.laterThresholds.front();
    platform.laterThresholds.erase(platform.laterThresholds.begin());
  }
  return platform.logThreshold;
}

struct SMMInfo::State {};

SMMInfo::SMMInfo(const TavrinConnection::ConnectionInfo& info) : state_(new State) {
  const TavrinConnection::ConnectionInfo& expected = ThePlatform().expectedSettings;
  EXPECT_EQ(info.address, expected.address);
  EXPECT_EQ(info.port, expected.port);
  EXPECT_EQ(info.userName, expected.userName);
  EXPECT_EQ(info.password, expected.password);
  EXPECT_EQ(info.connectionKind, expected.connectionKind);
  ThePlatform().settingsOfInformation = &info;
  ThePlatform().events.emplace_back("SMM information constructed");
}

SMMInfo::~SMMInfo() {
  ThePlatform().events.emplace_back("SMM information destroyed");
  ThePlatform().allocationsAtRelease = AllocationsSoFar();
}

int SMMInfo::GetSmmType(SMMIype& type) {
  ThePlatform().askedSmmType = &type;
  ThePlatform().events.emplace_back("SMM type asked");
  Double::ThrowIfAny(ThePlatform().smmTypeException);
  type = static_cast<SMMIype>(ThePlatform().smmType.value_or(type));
  return ThePlatform().smmTypeResult;
}

}  // namespace Tavrin

extern "C" unsigned int sleep(unsigned int seconds) {
  Tavrin::ThePlatform().pauses.push_back(seconds);
  Tavrin::ThePlatform().events.emplace_back("pause");
  const Tavrin::Double::SleepEnd end = Tavrin::Double::TakeNext(Tavrin::ThePlatform().sleepEnds);
  errno = end.error != 0 ? end.error : errno;
  return end.result;
}

extern "C" int clock_nanosleep(clockid_t clock, int flags, const timespec* until,
                               timespec* /*remaining*/) {
  Tavrin::ThePlatform().waits.push_back({clock, flags, *until});
  return Tavrin::Double::TakeNext(Tavrin::ThePlatform().waitResults);
}
