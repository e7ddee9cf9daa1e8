#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "simulator/AnswerEncoders.h"
#include "simulator/EnclosureKind.h"
#include "support/TemporaryFile.h"
#include "tests/simulator/RawSession.h"
#include "tests/support/Ipv6Test.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin::Simulator {
namespace {

/// What the enclosure answers without a wire in between: the completion code followed by the data.
Bytes Expected(EnclosureKind kind, const Request& request) {
  const Answer answer = EncodeAnswer(MakeEnclosure(kind), request);
  Bytes bytes = {answer.completionCode};
  bytes.insert(bytes.end(), answer.data.begin(), answer.data.end());
  return bytes;
}

/// Requests for every answer, and some that are refused: each generation refuses those of the
/// other.
const std::vector<Request>& EveryRequest() {
  static const std::vector<Request> requests = {
      {0x32, 0xA8, {}},
      {0x32, 0xB0, {0x05, 0x00}},
      {0x32, 0xB0, {0x05, 0x01}},
      {0x32, 0xB0, {0x05, 0x0B}},
      {0x32, 0xB0, {0x05, 0x7F}},
      {0x32, 0x98, {0x01}},
      {0x32, 0x98, {0x05}},
      {0x32, 0x98, {0x0D}},
      {0x32, 0x9D, {0x05}},
      {0x32, 0x9D, {0x0D}},
      {0x32, 0xA7, {0x04}},
      {0x32, 0xA5, {0x02}},
      {0x32, 0x91, {}},
      {0x32, 0x92, {0x02, 0x02, 0xFC}},
      {0x32, 0x92, {0x02, 0x05, 0x99}},
      {0x32, 0x92, {0x02, 0x20, 0xF0}},
      {0x06, 0x52, {0x0D, 0xD0, 0x02, 0xFC}},
      {0x06, 0x52, {0x0F, 0xD0, 0x05, 0x99}},
      {0x06, 0x52, {0x0D, 0xD0, 0x20, 0xF0}},
      {0x32, 0xF4, {0x00, 0x02}},
  };
  return requests;
}

struct KindCase {
  std::string name;
  std::vector<std::string> arguments;
  EnclosureKind kind;
};

class OverTheWire : public testing::TestWithParam<KindCase> {};

void ExpectEveryAnswerWhole(const KindCase& row) {
  const SimulatedSmm smm(row.arguments);
  RawSession session(smm.Address());
  for (const Request& request : EveryRequest()) {
    EXPECT_EQ(session.Send(request.netFn, request.command, request.data),
              Expected(row.kind, request))
        << "command " << int{request.command} << " with " << testing::PrintToString(request.data);
  }
}

TEST_P(OverTheWire, EveryAnswerArrivesWhole) { ExpectEveryAnswerWhole(GetParam()); }

using OverIpv6 = Ipv6Test<>;

TEST_F(OverIpv6, EveryAnswerArrivesWhole) {
  ExpectEveryAnswerWhole(
      {"First", {"--generation", "1", "--address", "::1"}, EnclosureKind::FirstGeneration});
}

TEST(PsuSelectionOverTheWire, StaysFromSessionToSession) {
  const SimulatedSmm smm({"--generation", "1"});
  EXPECT_EQ(RawSession(smm.Address()).Send(0x32, 0xF4, {0x00, 0x02}), (Bytes{0x00, 0x02}));
  EXPECT_EQ(RawSession(smm.Address()).Send(0x32, 0xF4, {0x00}), (Bytes{0x00, 0x02}));
}

INSTANTIATE_TEST_SUITE_P(
    All, OverTheWire,
    testing::Values(KindCase{"First", {"--generation", "1"}, EnclosureKind::FirstGeneration},
                    KindCase{"Second253",
                             {"--generation", "2", "--platform", "253"},
                             EnclosureKind::SecondGeneration253},
                    KindCase{"Second254",
                             {"--generation", "2", "--platform", "254"},
                             EnclosureKind::SecondGeneration254}),
    [](const auto& instance) { return instance.param.name; });

TEST(UnknownCommand, GetsInvalidCommandAcrossTheWholeOemFunction) {
  const SimulatedSmm smm({"--generation", "1"});
  RawSession session(smm.Address());
  EXPECT_EQ(session.Send(0x32, 0x00), Bytes{0xC1});
  EXPECT_EQ(session.Send(0x32, 0xFF, {0x01, 0x02}), Bytes{0xC1});
}

const std::vector<std::string> kPath = {"PATH=/usr/bin:/bin"};

TEST(Credentials, LongestNameAndPasswordOfAnyBytesAreAccepted) {
  const std::string user = "user \"$'\\#\t\x01 \xC3\xA4z";
  const std::string password = "pass\"$'\\#\t\x01 \xC3\xA4 1234.";
  ASSERT_EQ(user.size(), 16U);
  ASSERT_EQ(password.size(), 20U);
  const TemporaryFile file(password + "\n");
  Child launcher(
      {SMM_SIMULATOR, "--generation", "1", "--user", user, "--password-file", file.Path()}, kPath);
  RawSession session(ReadReadyAddress(launcher), user, password);
  EXPECT_EQ(session.Send(0x32, 0x01), Bytes{0xC1});
}

TEST(Credentials, DefaultOnesAreAccepted) {
  Child launcher({SMM_SIMULATOR, "--generation", "1"}, kPath);
  RawSession session(ReadReadyAddress(launcher), "admin", "simulated");
  EXPECT_EQ(session.Send(0x32, 0x01), Bytes{0xC1});
}

TEST(Credentials, WrongOnesAreRefused) {
  const SimulatedSmm smm({"--generation", "1"});
  EXPECT_THROW(RawSession(smm.Address(), "admin", "sesam"), std::runtime_error);
  EXPECT_THROW(RawSession(smm.Address(), "unset", "unset"), std::runtime_error);
}

TEST(Sessions, OneUserCanHold63AtOnce) {
  const SimulatedSmm smm({"--generation", "1"});
  // The first rests until the last is open, which takes seconds on a busy machine.
  constexpr std::chrono::seconds kTimeout{20};
  std::vector<std::unique_ptr<RawSession>> sessions;
  for (int count = 0; count < 63; ++count) {
    sessions.push_back(std::make_unique<RawSession>(smm.Address(), "admin", "sesame", kTimeout));
  }
  EXPECT_EQ(sessions.front()->Send(0x32, 0x01), Bytes{0xC1});
  EXPECT_EQ(sessions.back()->Send(0x32, 0x01), Bytes{0xC1});
}

/// One of the first generation, with a scenario of the entries.
class Faulty : public SimulatedSmm {
 public:
  explicit Faulty(const std::string& entries)
      : SimulatedSmm({"--generation", "1"}, R"({"overrides": [)" + entries + "]}") {}

  RawSession Connect() const { return RawSession(Address()); }
};

TEST(ScenarioOverTheWire, ChangedEnclosureAnswersChanged) {
  const SimulatedSmm smm({"--generation", "1"},
                         R"({"enclosure": {"nodes": {"1": {"powerState": "off"}}}})");
  RawSession session(smm.Address());
  EXPECT_EQ(session.Send(0x32, 0xA7, {0x01}), (Bytes{0x00, 0x00, 0x01, 0x02, 0x11}));
}

TEST(ScenarioOverTheWire, CompletionCodeAndBytesReplaceTheAnswer) {
  const Faulty faulty(
      R"({"command": "0xA8", "completionCode": "0xD5", "response": "01 02", "times": 1})");
  RawSession session = faulty.Connect();
  EXPECT_EQ(session.Send(0x32, 0xA8), (Bytes{0xD5, 0x01, 0x02}));
  EXPECT_EQ(session.Send(0x32, 0xA8), Expected(EnclosureKind::FirstGeneration, {0x32, 0xA8, {}}));
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
  EXPECT_EQ(session.Send(0x32, 0xA8), Expected(EnclosureKind::FirstGeneration, {0x32, 0xA8, {}}));
}

TEST(ScenarioOverTheWire, DelayedAnswerDoesNotHoldUpAnotherSession) {
  const Faulty faulty(R"({"command": "0xA8", "delayMs": 600})");
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
  EXPECT_LT(quickTook, 600);
  EXPECT_GE(passed(), 600);
  EXPECT_EQ(answer, Expected(EnclosureKind::FirstGeneration, {0x32, 0xA8, {}}));
}

TEST(ScenarioOverTheWire, DelayedAnswerOfAClosedSessionIsDroppedWithoutHarm) {
  const Faulty faulty(R"({"command": "0xA8", "delayMs": 1500})");
  EXPECT_EQ(faulty.Connect().Send(0x32, 0xA8), Bytes{});
  std::this_thread::sleep_for(std::chrono::milliseconds(1700));
  EXPECT_EQ(faulty.Connect().Send(0x32, 0x01), Bytes{0xC1});
}

}  // namespace
}  // namespace Tavrin::Simulator
