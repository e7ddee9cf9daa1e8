#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "simulator/AnswerEncoders.h"
#include "tests/simulator/LauncherProcess.h"
#include "tests/simulator/RawSession.h"
#include "tests/support/ChildProcess.h"

namespace Tavrin::Simulator {
namespace {

/// What the enclosure answers without a wire in between: the completion code followed by the data.
Bytes Expected(EnclosureKind kind, std::uint8_t command, const Bytes& data) {
  const Answer answer = EncodeAnswer(MakeEnclosure(kind), {0x32, command, data});
  Bytes bytes = {answer.completionCode};
  bytes.insert(bytes.end(), answer.data.begin(), answer.data.end());
  return bytes;
}

struct KindCase {
  std::string name;
  std::vector<std::string> arguments;
  EnclosureKind kind;
};

class OverTheWire : public testing::TestWithParam<KindCase> {};

TEST_P(OverTheWire, EveryAnswerArrivesWhole) {
  const LauncherProcess launcher(GetParam().arguments);
  RawSession session(launcher.ReadAddress(), "admin", "simulated");
  const EnclosureKind kind = GetParam().kind;
  EXPECT_EQ(session.Send(0x32, 0xA8), Expected(kind, 0xA8, {}));
  EXPECT_EQ(session.Send(0x32, 0xB0, {0x05, 0x00}), Expected(kind, 0xB0, {0x05, 0x00}));
  EXPECT_EQ(session.Send(0x32, 0xB0, {0x05, 0x01}), Expected(kind, 0xB0, {0x05, 0x01}));
  EXPECT_EQ(session.Send(0x32, 0xB0, {0x05, 0x0B}), Expected(kind, 0xB0, {0x05, 0x0B}));
  EXPECT_EQ(session.Send(0x32, 0xB0, {0x05, 0x7F}), Bytes{0xC9});
}

INSTANTIATE_TEST_SUITE_P(
    All, OverTheWire,
    testing::Values(KindCase{"First", {"--generation", "1"}, EnclosureKind::FirstGeneration},
                    KindCase{"Second253",
                             {"--generation", "2", "--platform", "253"},
                             EnclosureKind::SecondGeneration253},
                    KindCase{"Second254",
                             {"--generation", "2", "--platform", "254"},
                             EnclosureKind::SecondGeneration254},
                    KindCase{"FirstOnIpv6",
                             {"--generation", "1", "--address", "::1"},
                             EnclosureKind::FirstGeneration}),
    [](const auto& instance) { return instance.param.name; });

TEST(UnknownCommand, GetsInvalidCommandAcrossTheWholeOemFunction) {
  const LauncherProcess launcher({"--generation", "1"});
  RawSession session(launcher.ReadAddress(), "admin", "simulated");
  EXPECT_EQ(session.Send(0x32, 0x00), Bytes{0xC1});
  EXPECT_EQ(session.Send(0x32, 0xFF, {0x01, 0x02}), Bytes{0xC1});
}

TEST(Credentials, LongestNameAndPasswordOfAnyBytesAreAccepted) {
  const std::string user = "user \"$'\\#\t\x01 \xC3\xA4z";
  const std::string password = "pass\"$'\\#\t\x01 \xC3\xA4 1234.";
  ASSERT_EQ(user.size(), 16U);
  ASSERT_EQ(password.size(), 20U);
  const TemporaryFile file(password + "\n");
  const LauncherProcess launcher(
      {"--generation", "1", "--user", user, "--password-file", file.Path()});
  RawSession session(launcher.ReadAddress(), user, password);
  EXPECT_EQ(session.Send(0x32, 0x01), Bytes{0xC1});
}

TEST(Credentials, WrongOnesAreRefused) {
  const LauncherProcess launcher({"--generation", "1"});
  const std::string address = launcher.ReadAddress();
  EXPECT_THROW(RawSession(address, "admin", "simulate"), std::runtime_error);
  EXPECT_THROW(RawSession(address, "unset", "unset"), std::runtime_error);
}

TEST(Sessions, OneUserCanHold63AtOnce) {
  const LauncherProcess launcher({"--generation", "1"});
  const std::string address = launcher.ReadAddress();
  std::vector<std::unique_ptr<RawSession>> sessions;
  for (int count = 0; count < 63; ++count) {
    sessions.push_back(std::make_unique<RawSession>(address, "admin", "simulated"));
  }
  EXPECT_EQ(sessions.front()->Send(0x32, 0x01), Bytes{0xC1});
  EXPECT_EQ(sessions.back()->Send(0x32, 0x01), Bytes{0xC1});
}

/// A launcher with a scenario of the entries.
class Faulty {
 public:
  explicit Faulty(const std::string& entries)
      : file_(R"({"overrides": [)" + entries + "]}"),
        launcher_({"--generation", "1", "--scenario", file_.Path()}),
        address_(launcher_.ReadAddress()) {}

  RawSession Connect() const { return {address_, "admin", "simulated"}; }

 private:
  TemporaryFile file_;
  LauncherProcess launcher_;
  std::string address_;
};

TEST(ScenarioOverTheWire, CompletionCodeAndBytesReplaceTheAnswer) {
  const Faulty faulty(
      R"({"command": "0xA8", "completionCode": "0xD5", "response": "01 02", "times": 1})");
  RawSession session = faulty.Connect();
  EXPECT_EQ(session.Send(0x32, 0xA8), (Bytes{0xD5, 0x01, 0x02}));
  EXPECT_EQ(session.Send(0x32, 0xA8), Expected(EnclosureKind::FirstGeneration, 0xA8, {}));
}

TEST(ScenarioOverTheWire, EveryAllowedAnswerLengthArrives) {
  std::string entries = R"({"command": "0x00", "response": ""})";
  std::string bytes = "5A";
  for (int length = 1; length <= 200; ++length) {
    const std::string data = length < 16 ? "0" : "";
    std::ostringstream hex;
    hex << std::hex << length;
    entries += R"(,{"command": "0x01", "data": ")" + data + hex.str() + R"(", "response": ")" +
               bytes + R"("})";
    bytes += " 5A";
  }
  const Faulty faulty(entries);
  RawSession session = faulty.Connect();
  EXPECT_EQ(session.Send(0x32, 0x00), Bytes{0x00});
  for (std::uint8_t length = 1; length <= 200; ++length) {
    Bytes expected(length + std::size_t{1}, 0x5A);
    expected[0] = 0x00;
    EXPECT_EQ(session.Send(0x32, 0x01, {length}), expected);
  }
}

TEST(ScenarioOverTheWire, SilenceLeavesTheRequestUnansweredAndTheControllerWorking) {
  const Faulty faulty(R"({"command": "0xA8", "silent": true})");
  EXPECT_EQ(faulty.Connect().Send(0x32, 0xA8), Bytes{});
  EXPECT_EQ(faulty.Connect().Send(0x32, 0x01), Bytes{0xC1});
}

TEST(ScenarioOverTheWire, RequestRepeatedAfterOneSilenceIsAnswered) {
  const Faulty faulty(R"({"command": "0xA8", "silent": true, "times": 1})");
  RawSession session = faulty.Connect();
  EXPECT_EQ(session.Send(0x32, 0xA8), Expected(EnclosureKind::FirstGeneration, 0xA8, {}));
}

TEST(ScenarioOverTheWire, DelayedAnswerDoesNotHoldUpAnotherSession) {
  const Faulty faulty(R"({"command": "0xA8", "delayMs": 300})");
  RawSession slow = faulty.Connect();
  RawSession quick = faulty.Connect();
  const auto start = std::chrono::steady_clock::now();
  const auto passed = [start] {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start)
        .count();
  };
  Bytes answer;
  std::thread waiting([&] { answer = slow.Send(0x32, 0xA8); });
  EXPECT_EQ(quick.Send(0x32, 0x01), Bytes{0xC1});
  const auto quickTook = passed();
  waiting.join();
  EXPECT_LT(quickTook, 300);
  EXPECT_GE(passed(), 300);
  EXPECT_EQ(answer, Expected(EnclosureKind::FirstGeneration, 0xA8, {}));
}

TEST(ScenarioOverTheWire, DelayedAnswerOfAClosedSessionIsDroppedWithoutHarm) {
  const Faulty faulty(R"({"command": "0xA8", "delayMs": 1500})");
  EXPECT_EQ(faulty.Connect().Send(0x32, 0xA8), Bytes{});
  std::this_thread::sleep_for(std::chrono::milliseconds(1700));
  EXPECT_EQ(faulty.Connect().Send(0x32, 0x01), Bytes{0xC1});
}

}  // namespace
}  // namespace Tavrin::Simulator
