#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/globalconfig/ThreadConfig.h"
#include "platform/standalone/ipmi_client/LastExchange.h"
#include "platform/standalone/logger/ThreadLog.h"
#include "platform/standalone/smmcommoninfo/LastDetection.h"
#include "tests/support/Relay.h"
#include "tests/support/SimulatedSmm.h"
#include "tests/support/UdpPort.h"

// SMMs that are read at the same time with different settings, each on a thread of its own.

namespace Tavrin {
namespace {

using Standalone::DetectionOutcome;
using Standalone::FailureCause;
using Standalone::LastExchange;
using Standalone::LogLine;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using Texts = std::vector<std::string>;
using Settings = std::map<std::string, int>;

constexpr int kRounds = 3;

/// Works with every simulator.
const Settings kWorking = {{"IPMI_CIPHER_SUITE", 3},
                           {"IPMI_CONNECT_RETRY_TIMES", 3},
                           {"IPMI_PRIVILEGE_LEVEL", 4},
                           {"IPMI_RETRANSMISSION_TIMEOUT_MS", 5000},
                           {"IPMI_SESSION_TIMEOUT_MS", 20000},
                           {"IPMI_WORKAROUND_FLAGS", 16},
                           {"SMM_TYPE", -1}};

/// Silence is noticed at once.
const Settings kImpatient = {{"IPMI_CONNECT_RETRY_TIMES", 2},
                             {"IPMI_RETRANSMISSION_TIMEOUT_MS", 20},
                             {"IPMI_SESSION_TIMEOUT_MS", 40}};

Settings WorkingBut(const Settings& changes) {
  Settings settings = changes;
  settings.insert(kWorking.begin(), kWorking.end());
  return settings;
}

const Texts kFirstGeneration = {"--generation", "1"};
const Texts kPlatform253 = {"--generation", "2", "--platform", "253"};
const Texts kPlatform254 = {"--generation", "2", "--platform", "254"};

const Texts kTextsOfTheFirst = {"1QA4", "SIM10001", "625", "2"};
const Texts kTextsOf253 = {"2QC9", "SIM25301", "2129", "9"};
const Texts kTextsOf254 = {"2qB2", "SIM25401", "633", "2"};

/// What one thread reads, and how.
struct Subject {
  TavrinConnection::ConnectionInfo connection;
  Settings settings = kWorking;
  unsigned int logLevel = 2;
};

/// What that thread saw.
struct Seen {
  DetectionOutcome detection = DetectionOutcome::NotTried;
  std::vector<Texts> rounds;  ///< In each: machine type, serial number, least power, PSUs.
  std::vector<LastExchange> exchanges;  ///< After the machine type of each round.
  std::vector<LogLine> lines;
};

/// Of what the queries give, and "-" for each that fails.
Texts ReadOnce(SMMInventory& inventory, std::vector<LastExchange>& exchanges) {
  std::string machineType;
  std::string serialNumber;
  ChassisPowerCon power;
  std::vector<PSUFanSpeed> fans;
  std::vector<int> statuses = {inventory.GetSmmMT(machineType)};
  exchanges.push_back(Standalone::GetLastExchange());
  statuses.push_back(inventory.GetSmmSN(serialNumber));
  statuses.push_back(inventory.GetChassisPowerConsumption(power));
  statuses.push_back(inventory.GetPSUFanSpeed(fans));
  Texts texts = {machineType, serialNumber, power.minPower, std::to_string(fans.size())};
  std::transform(statuses.begin(), statuses.end(), texts.begin(), texts.begin(),
                 [](int status, const std::string& text) {
                   return status == StatusCode::Success ? text : "-";
                 });
  return texts;
}

/// Begins once all the others are there, too.
void Read(const Subject& subject, std::atomic<std::size_t>& missing, Seen& seen) {
  const Standalone::ThreadConfig config(subject.settings);
  const Standalone::ThreadLog log(subject.logLevel,
                                  [&seen](const LogLine& line) { seen.lines.push_back(line); });
  for (--missing; missing != 0;) {
    std::this_thread::yield();
  }
  SMMInventory inventory(subject.connection);
  seen.detection = Standalone::GetLastDetectionOutcome();
  for (int round = 0; round < kRounds; ++round) {
    seen.rounds.push_back(ReadOnce(inventory, seen.exchanges));
  }
}

std::vector<Seen> ReadAtOnce(const std::vector<Subject>& subjects) {
  std::atomic<std::size_t> missing{subjects.size()};
  std::vector<Seen> seen(subjects.size());
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < subjects.size(); ++i) {
    threads.emplace_back([&, i] { Read(subjects[i], missing, seen[i]); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  return seen;
}

/// The process has settings that nobody can be reached or understood with, so that whatever is
/// asked for past the thread's own shows, and a handler that is to get no line.
class ThreadSettings : public testing::Test {
 protected:
  ThreadSettings() {
    for (const auto& [key, value] : kUseless) {
      Standalone::SetGlobalConfigValue(key, value);
    }
    Standalone::SetMinLogLevel(4);
    Standalone::SetLogLineHandler(
        [this](const LogLine& line) { linesOfTheProcess.push_back(line); });
  }
  ~ThreadSettings() override {
    Standalone::SetLogLineHandler({});
    Standalone::SetMinLogLevel(1);
    for (const auto& [key, value] : kDefaults) {
      Standalone::SetGlobalConfigValue(key, value);
    }
    EXPECT_THAT(linesOfTheProcess, IsEmpty());
  }

 private:
  const Settings kUseless = {{"IPMI_CIPHER_SUITE", 99},
                             {"IPMI_CONNECT_RETRY_TIMES", 0},
                             {"IPMI_PRIVILEGE_LEVEL", 9},
                             {"IPMI_RETRANSMISSION_TIMEOUT_MS", -1},
                             {"IPMI_SESSION_TIMEOUT_MS", -1},
                             {"IPMI_WORKAROUND_FLAGS", -1},
                             {"SMM_TYPE", 9}};
  const Settings kDefaults = {{"IPMI_CIPHER_SUITE", -1},
                              {"IPMI_CONNECT_RETRY_TIMES", 3},
                              {"IPMI_PRIVILEGE_LEVEL", 4},
                              {"IPMI_RETRANSMISSION_TIMEOUT_MS", 0},
                              {"IPMI_SESSION_TIMEOUT_MS", 4500},
                              {"IPMI_WORKAROUND_FLAGS", 0},
                              {"SMM_TYPE", -1}};
  std::vector<LogLine> linesOfTheProcess;
};

auto HasText(const testing::Matcher<std::string>& matcher) {
  return Field(&LogLine::text, matcher);
}

/// As those are who were answered at the first attempt.
auto IsAnsweredAtOnceBy(const Subject& subject) {
  return AllOf(Field(&LastExchange::isAnswered, true),
               Field(&LastExchange::cause, FailureCause::None),
               Field(&LastExchange::connectionAttempts, 1),
               Field(&LastExchange::port, std::to_string(subject.connection.port)));
}

auto FailedWith(const Subject& subject, FailureCause cause, int attempts) {
  return AllOf(Field(&LastExchange::isAnswered, false), Field(&LastExchange::cause, cause),
               Field(&LastExchange::connectionAttempts, attempts),
               Field(&LastExchange::port, std::to_string(subject.connection.port)));
}

void ExpectSoundReading(const Seen& seen, const Subject& subject, const Texts& expected) {
  EXPECT_EQ(seen.rounds, std::vector<Texts>(kRounds, expected));
  EXPECT_THAT(seen.exchanges, AllOf(SizeIs(kRounds), Each(IsAnsweredAtOnceBy(subject))));
  EXPECT_THAT(seen.lines, IsEmpty());
}

void ExpectNothingRead(const Seen& seen) {
  EXPECT_EQ(seen.detection, DetectionOutcome::Unknown);
  EXPECT_EQ(seen.rounds, std::vector<Texts>(kRounds, Texts(4, "-")));
}

TEST_F(ThreadSettings, GenerationsBesideEachOtherAreDetected) {
  const SimulatedSmm first(kFirstGeneration);
  const SimulatedSmm second(kPlatform254);
  const SimulatedSmm nineSlots(kPlatform253);
  const std::vector<Subject> subjects = {
      {SettingsOf(first)}, {SettingsOf(second)}, {SettingsOf(nineSlots)}};
  const std::vector<Seen> seen = ReadAtOnce(subjects);
  EXPECT_THAT(seen, Each(Field(&Seen::detection, DetectionOutcome::Detected)));
  ExpectSoundReading(seen[0], subjects[0], kTextsOfTheFirst);
  ExpectSoundReading(seen[1], subjects[1], kTextsOf254);
  ExpectSoundReading(seen[2], subjects[2], kTextsOf253);
}

TEST_F(ThreadSettings, GenerationsBesideEachOtherAreTakenFromTheThread) {
  const SimulatedSmm first(kFirstGeneration);
  const SimulatedSmm second(kPlatform254);
  const std::vector<Subject> subjects = {{SettingsOf(first), WorkingBut({{"SMM_TYPE", 0}})},
                                         {SettingsOf(second), WorkingBut({{"SMM_TYPE", 1}})}};
  const std::vector<Seen> seen = ReadAtOnce(subjects);
  EXPECT_THAT(seen, Each(Field(&Seen::detection, DetectionOutcome::Configured)));
  ExpectSoundReading(seen[0], subjects[0], kTextsOfTheFirst);
  ExpectSoundReading(seen[1], subjects[1], kTextsOf254);
}

/// Authentication, integrity and confidentiality, as Open Session requests name them.
using Algorithms = std::array<std::uint8_t, 3>;

/// Lets everything pass to a controller, and notes what sessions are asked for.
class SuiteWitness {
 public:
  SuiteWitness(std::uint16_t controllerPort, const Algorithms& due)
      : due_(due), relay_(controllerPort) {
    relay_.Break([this](const Datagram& datagram) {
      Note(datagram);
      return Departures{{datagram}};
    });
  }

  std::uint16_t Port() const { return relay_.Port(); }

  void ExpectOnlyWhatIsDue() {
    relay_.Heal();
    EXPECT_THAT(asked_, ElementsAre(due_));
  }

 private:
  void Note(const Datagram& datagram) {
    constexpr std::size_t kLength = 48;
    constexpr std::uint8_t kOpenSessionRequest = 0x10;
    const std::vector<std::uint8_t>& bytes = datagram.bytes;
    if (datagram.direction == Direction::ToController && bytes.size() == kLength &&
        PayloadType(datagram) == kOpenSessionRequest) {
      asked_.insert({bytes[28], bytes[36], bytes[44]});
    }
  }

  Algorithms due_;
  std::set<Algorithms> asked_;
  Relay relay_;
};

TEST_F(ThreadSettings, EverySuiteIsUsedBesideEveryOther) {
  const std::map<int, Algorithms> suites = {{0, {0, 0, 0}}, {1, {1, 0, 0}}, {2, {1, 1, 0}},
                                            {3, {1, 1, 1}}, {6, {2, 0, 0}}, {11, {2, 3, 0}}};
  const SimulatedSmm simulator(kFirstGeneration);
  std::deque<SuiteWitness> witnesses;
  std::vector<Subject> subjects;
  for (const auto& [suite, algorithms] : suites) {
    witnesses.emplace_back(simulator.Port(), algorithms);
    subjects.push_back({SettingsOf(simulator, witnesses.back().Port()),
                        WorkingBut({{"IPMI_CIPHER_SUITE", suite}})});
  }
  const std::vector<Seen> seen = ReadAtOnce(subjects);
  for (std::size_t i = 0; i < subjects.size(); ++i) {
    ExpectSoundReading(seen[i], subjects[i], kTextsOfTheFirst);
    witnesses[i].ExpectOnlyWhatIsDue();
  }
}

TEST_F(ThreadSettings, RefusedSuiteIsTheCauseOfItsThreadAlone) {
  const SimulatedSmm simulator(kFirstGeneration);
  const std::vector<Subject> subjects = {
      {SettingsOf(simulator)},
      {SettingsOf(simulator),
       WorkingBut({{"IPMI_CIPHER_SUITE", 17}, {"IPMI_CONNECT_RETRY_TIMES", 1}})}};
  const std::vector<Seen> seen = ReadAtOnce(subjects);
  ExpectSoundReading(seen[0], subjects[0], kTextsOfTheFirst);
  ExpectNothingRead(seen[1]);
  EXPECT_THAT(seen[1].exchanges, Each(FailedWith(subjects[1], FailureCause::SuiteRefused, 1)));
}

TEST_F(ThreadSettings, DeadHostIsTheCauseOfItsThreadAlone) {
  const SimulatedSmm simulator(kPlatform254);
  const UdpPort dead;
  const std::vector<Subject> subjects = {
      {SettingsOf(simulator)}, {SettingsOf(simulator, dead.Number()), WorkingBut(kImpatient)}};
  const std::vector<Seen> seen = ReadAtOnce(subjects);
  ExpectSoundReading(seen[0], subjects[0], kTextsOf254);
  ExpectNothingRead(seen[1]);
  EXPECT_THAT(seen[1].exchanges, Each(FailedWith(subjects[1], FailureCause::Silence, 2)));
  EXPECT_THAT(seen[1].lines, Contains(HasText(HasSubstr("port " + dead.Text() + ","))));
  EXPECT_THAT(seen[1].lines, Contains(HasText("connect failed with error:3")));
}

TEST_F(ThreadSettings, WrongPasswordIsTheCauseOfItsThreadAlone) {
  const SimulatedSmm simulator(kFirstGeneration);
  std::vector<Subject> subjects(2, {SettingsOf(simulator)});
  subjects[1].connection.password = "sesame2";
  const std::vector<Seen> seen = ReadAtOnce(subjects);
  ExpectSoundReading(seen[0], subjects[0], kTextsOfTheFirst);
  ExpectNothingRead(seen[1]);
  EXPECT_THAT(seen[1].exchanges, Each(FailedWith(subjects[1], FailureCause::PasswordRefused, 1)));
  EXPECT_THAT(seen[1].lines, Contains(HasText(HasSubstr("the password does not match"))));
  EXPECT_THAT(seen[1].lines, Each(HasText(Not(HasSubstr("sesame")))));
}

/// The machine type is refused with that completion code.
std::string Refusing(const std::string& code) {
  return R"({"overrides": [{"command": "0xB0", "data": "05 00", "completionCode": ")" + code +
         R"("}]})";
}

TEST_F(ThreadSettings, LinesOfTheLibraryAreToldApartByThread) {
  const SimulatedSmm busy(kFirstGeneration, Refusing("0xC0"));
  const SimulatedSmm unable(kFirstGeneration, Refusing("0xD5"));
  const std::vector<Subject> subjects = {{SettingsOf(busy), kWorking, 1},
                                         {SettingsOf(unable), kWorking, 1},
                                         {SettingsOf(unable), kWorking, 0}};
  const std::vector<Seen> seen = ReadAtOnce(subjects);
  EXPECT_THAT(seen[0].lines, AllOf(SizeIs(kRounds), Each(HasText(EndsWith("error code:192")))));
  EXPECT_THAT(seen[1].lines, AllOf(SizeIs(kRounds), Each(HasText(EndsWith("error code:213")))));
  EXPECT_THAT(seen[2].lines, IsEmpty());
}

TEST_F(ThreadSettings, ThreadsLogAsMuchAsTheyAreTo) {
  const SimulatedSmm simulator(kFirstGeneration);
  const std::vector<Subject> subjects = {{SettingsOf(simulator), kWorking, 4},
                                         {SettingsOf(simulator), kWorking, 3}};
  const std::vector<Seen> seen = ReadAtOnce(subjects);
  EXPECT_THAT(seen[0].lines, Contains(Field(&LogLine::level, 4)));
  EXPECT_THAT(seen[1].lines, Not(Contains(Field(&LogLine::level, 4))));
}

/// The enclosure of that number differs from every other in all that is read off it.
std::string ScenarioOf(std::size_t number) {
  const std::string text = std::to_string(number);
  return R"({"enclosure": {"machineType": "MT)" + text + R"(", "serialNumber": "SN)" + text +
         R"(", "power": {"min": )" + std::to_string(1000 + number) + "}}}";
}

TEST_F(ThreadSettings, ThirtyTwoSmmsAreReadOnThirtyTwoThreads) {
  constexpr std::size_t kSmms = 32;
  const std::array<int, 3> suites = {3, 11, 2};
  const std::array<Texts, 2> options = {kFirstGeneration, kPlatform253};
  std::deque<SimulatedSmm> simulators;
  std::vector<Subject> subjects;
  for (std::size_t i = 0; i < kSmms; ++i) {
    simulators.emplace_back(options.at(i % 2), ScenarioOf(10 + i));
    subjects.push_back({SettingsOf(simulators.back()),
                        WorkingBut({{"IPMI_CIPHER_SUITE", suites.at(i % 3)},
                                    {"SMM_TYPE", i % 4 < 2 ? -1 : static_cast<int>(i % 2)}})});
  }
  const std::vector<Seen> seen = ReadAtOnce(subjects);
  for (std::size_t i = 0; i < kSmms; ++i) {
    const std::string text = std::to_string(10 + i);
    ExpectSoundReading(seen[i], subjects[i],
                       {"MT" + text, "SN" + text, "10" + text, i % 2 == 0 ? "2" : "9"});
  }
}

}  // namespace
}  // namespace Tavrin
