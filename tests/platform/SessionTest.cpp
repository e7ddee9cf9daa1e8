#include "platform/standalone/ipmi_client/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <freeipmi/freeipmi.h>
#include <netdb.h>
#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "platform/ConnectionInfo.h"
#include "platform/standalone/globalconfig/ThreadConfig.h"
#include "platform/standalone/ipmi_client/ConnectControl.h"
#include "platform/standalone/ipmi_client/ConnectPresence.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "platform/standalone/ipmi_client/Interruption.h"
#include "platform/standalone/ipmi_client/LastExchange.h"
#include "platform/standalone/ipmi_client/LearnedIntervals.h"
#include "platform/standalone/ipmi_client/OpeningMessages.h"
#include "platform/standalone/ipmi_client/Packet.h"
#include "platform/standalone/ipmi_client/ThreadDeadline.h"
#include "tests/platform/LogCapture.h"
#include "tests/platform/ScriptedNetwork.h"

namespace Tavrin::Standalone {
namespace {

using std::chrono::milliseconds;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Bytes = std::vector<std::uint8_t>;

/// The messages to a controller: 0 is one within a session, the others are named by their payload
/// types but for the first, which still goes in a packet of IPMI 1.5.
enum Step : std::uint8_t {
  kInSession = 0x00,
  kOpenSession = 0x10,
  kRakp1 = 0x12,
  kRakp3 = 0x14,
  kCapabilities = 0xFF
};

constexpr std::size_t kPayloadTypeAt = 5;
constexpr std::size_t kPayloadAt = 16;
constexpr std::size_t kCapabilitiesNumberAt = 18;
constexpr std::size_t kCommandAt = 21;
constexpr std::uint8_t kRaisePrivilege = 0x3B;
constexpr std::uint8_t kClose = 0x3C;
const Bytes kControllersSession = {0x11, 0x22, 0x33, 0x44};

Bytes Part(const Bytes& bytes, std::size_t at, std::size_t count) {
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
  return {begin, begin + static_cast<std::ptrdiff_t>(count)};
}

Bytes Joined(const std::vector<Bytes>& parts) {
  Bytes whole;
  for (const Bytes& part : parts) {
    whole.insert(whole.end(), part.begin(), part.end());
  }
  return whole;
}

/// With the byte behind it that makes their sum 0.
Bytes Summed(Bytes bytes) {
  bytes.push_back(static_cast<std::uint8_t>(-std::accumulate(bytes.begin(), bytes.end(), 0)));
  return bytes;
}

Step StepOf(const Bytes& datagram) {
  constexpr std::size_t authenticationTypeAt = 4;
  return datagram.at(authenticationTypeAt) == 0 ? kCapabilities
                                                : static_cast<Step>(datagram.at(kPayloadTypeAt));
}

/// The answer to the message that stands there in a request, with `body` from its completion code
/// on.
Bytes Message(const Bytes& request, std::size_t at, const Bytes& body) {
  const auto answering = static_cast<std::uint8_t>(request.at(at + 1) | 0x04U);
  return Joined({Summed({0x81, answering}),
                 Summed(Joined({{0x20, request.at(at + 4), request.at(at + 5)}, body}))});
}

Bytes Packet(std::uint8_t payloadType, const Bytes& session, const Bytes& payload) {
  return Joined({{0x06, 0, 0xFF, 0x07, 0x06, payloadType},
                 session,
                 {0, 0, 0, 0, static_cast<std::uint8_t>(payload.size()), 0},
                 payload});
}

/// A controller that allows cipher suite 0, which protects nothing.
struct Controller {
  /// What becomes of its answer in a step.
  using Change = std::function<void(Bytes& answer)>;

  Bytes consolesSession = {};
  milliseconds delay{0};  ///< Of each answer.
  std::map<Step, Change> changes;

  Bytes Answer(Step step, const Bytes& request) {
    const Bytes outside(4);
    const std::uint8_t tag = request.at(kPayloadAt);
    switch (step) {
      case kCapabilities: {
        const Bytes message =
            Message(request, 14, {0x00, 0x01, 0x80, 0x04, 0x02, 0x00, 0x00, 0x00, 0x00});
        return Joined({{0x06, 0, 0xFF, 0x07, 0, 0, 0, 0, 0},
                       outside,
                       {static_cast<std::uint8_t>(message.size())},
                       message});
      }
      case kOpenSession:
        consolesSession = Part(request, kPayloadAt + 4, 4);
        return Packet(0x11, outside,
                      Joined({{tag, 0, 4, 0},
                              consolesSession,
                              kControllersSession,
                              {0, 0, 0, 8, 0, 0, 0, 0},
                              {1, 0, 0, 8, 0, 0, 0, 0},
                              {2, 0, 0, 8, 0, 0, 0, 0}}));
      case kRakp1:
        return Packet(0x13, outside,
                      Joined({{tag, 0, 0, 0}, consolesSession, Bytes(16, 0xA5), Bytes(16, 0x5A)}));
      case kRakp3:
        return Packet(0x15, outside, Joined({{tag, 0, 0, 0}, consolesSession}));
      default:
        return Packet(0x00, consolesSession, Message(request, kPayloadAt, Body(request)));
    }
  }

  static Bytes Body(const Bytes& request) {
    switch (request.at(kCommandAt)) {
      case kRaisePrivilege:
        return {0x00, request.at(kCommandAt + 1)};
      case kClose:
        return {0x00};
      default:
        return {0xC3, 0x31, 0x51};
    }
  }

  void Receive(const Bytes& request) {
    const Step step = StepOf(request);
    Bytes answer = Answer(step, request);
    if (const auto change = changes.find(step); change != changes.end()) {
      change->second(answer);
    }
    if (!answer.empty()) {
      network.Deliver(delay, answer);
    }
  }
};

void Lose(Bytes& answer) { answer.clear(); }

/// The completion code of a message within a session.
Controller::Change Complete(std::uint8_t code) {
  return [code](Bytes& answer) {
    constexpr std::size_t codeAt = 22;
    answer.back() = static_cast<std::uint8_t>(answer.back() + answer.at(codeAt) - code);
    answer.at(codeAt) = code;
  };
}

/// What getentropy() draws next, of which it fails when there is none: any numbers unless a test
/// says so.
std::optional<std::vector<std::uint8_t>> entropy;

std::vector<std::string> wiped;

/// For how many more objects FreeIPMI has memory.
constexpr int kAnyNumber = -1;
int objectsLeft = kAnyNumber;

/// Whether FreeIPMI computes a session's keys.
bool canComputeKeys = true;

/// Whether FreeIPMI takes any proof of the password for right.
bool isAnyProofRight = false;

/// The addresses that the host name "smm" stands for.
std::vector<std::string> addressesOfTheName;

/// Whether another thread holds whatever is only tried for.
bool areMutexesHeld = false;

class SessionTest : public testing::Test {
 protected:
  SessionTest() {
    ScriptedNetwork::Reset();
    entropy.reset();
    LearnInterval("192.0.2.1", 623, milliseconds(0));
    network.onSent = [this](const Datagram& datagram) { controller.Receive(datagram); };
  }

  int Connect() {
    network.sent.clear();
    began = network.now;
    const int result = client->connect();
    took = static_cast<int>((network.now - began).count());
    return result;
  }

  /// A failed connect(), of a client of its own.
  void ExpectFailure(Trouble trouble) {
    client.emplace("192.0.2.1", "operator", "swordfish", "623", 0);
    EXPECT_EQ(Connect(), FailureOf(trouble).result);
    EXPECT_EQ(GetLastExchange().cause, FailureOf(trouble).cause);
    EXPECT_EQ(GetLastExchange().words, FailureOf(trouble).words);
    client->disconnect();
  }

  int Send(const IPMICOMMAND& request = {0xB0, {0x05, 0x01}, 0x32}) {
    network.sent.clear();
    began = network.now;
    const int result = client->send(request, response, completionCode);
    took = static_cast<int>((network.now - began).count());
    return result;
  }

  /// What was sent since the last call above, by step; and when.
  std::vector<int> Steps() const {
    std::vector<int> steps;
    for (const ScriptedNetwork::Sent& sent : network.sent) {
      steps.push_back(StepOf(sent.datagram));
    }
    return steps;
  }
  std::vector<int> Times() const {
    std::vector<int> times;
    for (const ScriptedNetwork::Sent& sent : network.sent) {
      times.push_back(static_cast<int>((sent.at - began).count()));
    }
    return times;
  }

  const LogCapture log{0};
  ThreadConfig config{{}};
  Controller controller;
  std::optional<IpmiClient> client{std::in_place, "192.0.2.1", "operator", "swordfish", "623", 0};
  milliseconds began{0};
  int took = 0;
  Bytes response;
  std::uint8_t completionCode = 0;
};

TEST_F(SessionTest, ExchangeTakesSevenRoundTrips) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_THAT(Steps(), ElementsAre(kCapabilities, kOpenSession, kRakp1, kRakp3, kInSession));
  ASSERT_EQ(Send(), 0);
  EXPECT_THAT(Steps(), ElementsAre(kInSession));
  EXPECT_EQ(completionCode, 0xC3);
  EXPECT_EQ(response, (Bytes{0x31, 0x51}));
  network.sent.clear();
  client->disconnect();
  EXPECT_THAT(Steps(), ElementsAre(kInSession));
  EXPECT_EQ(network.now, milliseconds(0));
}

TEST_F(SessionTest, OpeningMessagesAreMadeAsIpmiWantsThem) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(network.sent.at(0).datagram,
            Joined({{0x06, 0, 0xFF, 0x07, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9},
                    Summed({0x20, 0x18}),
                    Summed({0x81, 1 << 2, 0x38, 0x8E, 0x04})}));
  const Bytes opening = network.sent.at(1).datagram;
  EXPECT_EQ(opening, Joined({{0x06, 0, 0xFF, 0x07, 0x06, 0x10},
                             Bytes(8),
                             {32, 0, 2, 0, 0, 0},
                             controller.consolesSession,
                             {0, 0, 0, 8, 0, 0, 0, 0},
                             {1, 0, 0, 8, 0, 0, 0, 0},
                             {2, 0, 0, 8, 0, 0, 0, 0}}));
  const Bytes rakp1 = network.sent.at(2).datagram;
  EXPECT_EQ(rakp1, Joined({{0x06, 0, 0xFF, 0x07, 0x06, 0x12},
                           Bytes(8),
                           {36, 0, 3, 0, 0, 0},
                           kControllersSession,
                           Part(rakp1, 24, 16),
                           {0x14, 0, 0, 8, 'o', 'p', 'e', 'r', 'a', 't', 'o', 'r'}}));
  EXPECT_EQ(
      network.sent.at(3).datagram,
      Joined(
          {{0x06, 0, 0xFF, 0x07, 0x06, 0x14}, Bytes(8), {8, 0, 4, 0, 0, 0}, kControllersSession}));
}

/// A request within the session.
Bytes Request(std::uint8_t sequenceNumber, std::uint8_t number, const Bytes& addressed,
              std::uint8_t command, const Bytes& data) {
  const Bytes message =
      Joined({Summed(addressed),
              Summed(Joined({{0x81, static_cast<std::uint8_t>(number << 2U), command}, data}))});
  return Joined({{0x06, 0, 0xFF, 0x07, 0x06, 0x00},
                 kControllersSession,
                 {sequenceNumber, 0, 0, 0, static_cast<std::uint8_t>(message.size()), 0},
                 message});
}

TEST_F(SessionTest, RequestsAreCountedAndNameTheirSession) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(network.sent.back().datagram, Request(1, 5, {0x20, 0x18}, kRaisePrivilege, {0x04}));
  ASSERT_EQ(Send(), 0);
  EXPECT_EQ(network.sent.back().datagram, Request(2, 6, {0x20, 0xC8}, 0xB0, {0x05, 0x01}));
  client->disconnect();
  EXPECT_EQ(network.sent.back().datagram, Request(3, 7, {0x20, 0x18}, kClose, kControllersSession));
}

TEST_F(SessionTest, RepetitionHasTheNumberOfItsRequestAndASequenceNumberOfItsOwn) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  controller.changes[kInSession] = Lose;
  EXPECT_EQ(Send(), ConnectResult::WorthRetrying);
  EXPECT_EQ(GetLastExchange().words, FailureOf(Trouble::SilentToRequest).words);
  EXPECT_THAT(Times(), ElementsAre(0, 1000, 2000, 3000, 4000));
  EXPECT_EQ(took, 4500);
  for (std::size_t i = 0; i < network.sent.size(); ++i) {
    EXPECT_EQ(network.sent[i].datagram,
              Request(static_cast<std::uint8_t>(2 + i), 6, {0x20, 0xC8}, 0xB0, {0x05, 0x01}));
  }
}

TEST_F(SessionTest, PrivilegeLevelOfTheConfigurationIsAskedFor) {
  config.Set("IPMI_PRIVILEGE_LEVEL", 3);
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(network.sent.at(0).datagram.at(21), 0x03);
  EXPECT_EQ(network.sent.at(1).datagram.at(17), 0x00);
  EXPECT_EQ(network.sent.at(2).datagram.at(40), 0x13);
  EXPECT_EQ(network.sent.at(4).datagram.at(22), 0x03);
}

TEST_F(SessionTest, WorkaroundAsksForThePrivilegeLevelWhenTheSessionOpens) {
  config.Set("IPMI_WORKAROUND_FLAGS", 16);
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(network.sent.at(1).datagram.at(17), 0x04);
}

TEST_F(SessionTest, SilenceIsTheTroubleOfItsStep) {
  const std::vector<std::pair<Step, Trouble>> steps = {
      {kCapabilities, Trouble::NoAnswer},        {kOpenSession, Trouble::SilentWhileOpening},
      {kRakp1, Trouble::SilentWhileChecking},    {kRakp3, Trouble::SilentWhileChecking},
      {kInSession, Trouble::SilentWhileOpening},
  };
  for (const auto& [step, trouble] : steps) {
    controller.changes = {{step, Lose}};
    ExpectFailure(trouble);
    EXPECT_EQ(took, step == kInSession ? 4500 + 2000 : 4500) << step;
  }
}

TEST_F(SessionTest, RefusalsAreTakenInEveryStepThatHasAStatus) {
  constexpr std::size_t statusAt = kPayloadAt + 1;
  for (const Step step : {kOpenSession, kRakp1, kRakp3}) {
    controller.changes = {{step, [](Bytes& answer) {
                             answer.at(statusAt) = 0x01;
                             answer.resize(statusAt + 1);
                             answer.at(14) = 2;
                           }}};
    ExpectFailure(Trouble::NoFreeSession);
    EXPECT_EQ(network.sent.size(), step == kOpenSession ? 2U : step == kRakp1 ? 3U : 4U);
  }
}

TEST_F(SessionTest, BegunSessionThatIsGivenUpIsRefusedToTheController) {
  controller.changes = {{kOpenSession, [](Bytes& answer) { answer.at(kPayloadAt + 2) = 3; }}};
  ExpectFailure(Trouble::PrivilegeRefused);
  EXPECT_THAT(Steps(), ElementsAre(kCapabilities, kOpenSession, kRakp3));
  EXPECT_EQ(network.sent.back().datagram, Joined({{0x06, 0, 0xFF, 0x07, 0x06, 0x14},
                                                  Bytes(8),
                                                  {8, 0, 3, 0x0F, 0, 0},
                                                  kControllersSession}));
  EXPECT_EQ(took, 0);
}

TEST_F(SessionTest, HigherPrivilegeThanAskedForIsTaken) {
  controller.changes = {{kOpenSession, [](Bytes& answer) { answer.at(kPayloadAt + 2) = 5; }}};
  EXPECT_EQ(Connect(), ConnectResult::Connected);
}

TEST_F(SessionTest, RefusedPrivilegeIsToldAndItsSessionClosed) {
  const std::vector<std::pair<std::uint8_t, Trouble>> rows = {
      {0x80, Trouble::PrivilegeRefused},
      {0x81, Trouble::PrivilegeRefused},
      {0xD4, Trouble::PrivilegeInsufficient},
      {0xC0, Trouble::Busy},
  };
  for (const auto& [code, trouble] : rows) {
    controller.changes = {{kInSession, Complete(code)}};
    ExpectFailure(trouble);
    EXPECT_EQ(network.sent.back().datagram.at(kCommandAt), kClose);
  }
}

Controller::Change Set(std::size_t at, std::uint8_t value) {
  return [=](Bytes& answer) { answer.at(at) = value; };
}

Controller::Change Flip(std::size_t at) {
  return [=](Bytes& answer) { answer.at(at) ^= 0x80U; };
}

TEST_F(SessionTest, CapabilitiesThatRuleASessionOutAreTold) {
  config.Set("IPMI_WORKAROUND_FLAGS", 64);  // Their checksum no longer fits.
  const std::vector<std::pair<Controller::Change, Trouble>> rows = {
      {Set(20, 0xC0), Trouble::Busy},
      {Set(20, 0xCC), Trouble::Ipmi20Missing},
      {Set(22, 0x00), Trouble::Ipmi20Missing},
      {Set(24, 0x01), Trouble::Ipmi20Missing},
      {Set(23, 0x00), Trouble::UserNameRefused},
      {Set(23, 0x24), Trouble::KeyMissing},
  };
  for (const auto& [change, trouble] : rows) {
    controller.changes = {{kCapabilities, change}};
    ExpectFailure(trouble);
  }
  config.Set("IPMI_WORKAROUND_FLAGS", 64 + 1);
  for (const std::uint8_t status : Bytes{0x00, 0x24}) {
    controller.changes = {{kCapabilities, Set(23, status)}};
    EXPECT_EQ(Connect(), ConnectResult::Connected);
  }
}

TEST_F(SessionTest, WrongChecksumIsTakenWithTheWorkaroundAlone) {
  const auto spoil = [](Bytes& answer) { answer.back() ^= 0x01U; };
  for (const Step step : {kCapabilities, kInSession}) {
    controller.changes = {{step, spoil}};
    ExpectFailure(Trouble::DamagedAnswer);
  }
  config.Set("IPMI_WORKAROUND_FLAGS", 64);
  controller.changes = {{kCapabilities, spoil}, {kInSession, spoil}};
  EXPECT_EQ(Connect(), ConnectResult::Connected);
}

TEST_F(SessionTest, AnswerOfAnotherKindTagOrSessionIsNotTaken) {
  const std::vector<std::pair<Step, std::vector<std::size_t>>> places = {
      {kCapabilities, {9, kCapabilitiesNumberAt}},
      {kOpenSession, {kPayloadTypeAt, kPayloadAt, kPayloadAt + 4}},
      {kRakp1, {kPayloadTypeAt, kPayloadAt, kPayloadAt + 4}},
      {kRakp3, {kPayloadTypeAt, kPayloadAt, kPayloadAt + 4}},
  };
  for (const auto& [step, offsets] : places) {
    for (const std::size_t at : offsets) {
      SCOPED_TRACE(std::to_string(step) + " at " + std::to_string(at));
      const bool isEncryption = step != kCapabilities && at == kPayloadTypeAt;
      controller.changes = {{step, isEncryption ? Set(at, 0x16) : Flip(at)}};
      ExpectFailure(Trouble::OtherAnswer);
    }
  }
}

TEST_F(SessionTest, ProofOfAnotherSessionIsForeignAlsoWhereItsLengthIsWrong) {
  controller.changes = {{kRakp1, [](Bytes& answer) {
                           answer.at(kPayloadAt + 4) ^= 0x80U;
                           answer.insert(answer.end(), 20, 0x5A);
                           answer.at(14) = static_cast<std::uint8_t>(answer.at(14) + 20);
                         }}};
  ExpectFailure(Trouble::OtherAnswer);
}

TEST_F(SessionTest, SessionOpenedUnderTheNumberThatStandsForNoneIsDamage) {
  const auto give = [](std::uint8_t highestByte, std::uint8_t otherConsole) {
    return [=](Bytes& answer) {
      std::fill_n(answer.begin() + kPayloadAt + 8, 3, std::uint8_t{0});
      answer.at(kPayloadAt + 11) = highestByte;
      answer.at(kPayloadAt + 4) ^= otherConsole;
    };
  };
  controller.changes = {{kOpenSession, give(0, 0)}};
  ExpectFailure(Trouble::DamagedAnswer);
  controller.changes = {{kOpenSession, give(0, 1)}};
  ExpectFailure(Trouble::OtherAnswer);
  controller.changes = {{kOpenSession, give(1, 0)}};
  EXPECT_EQ(Connect(), ConnectResult::Connected);
}

TEST_F(SessionTest, AnswerThatEndsEarlyIsDamaged) {
  for (const Step step : {kOpenSession, kRakp1, kRakp3}) {
    controller.changes = {{step, [](Bytes& answer) {
                             answer.pop_back();
                             --answer.at(14);
                           }}};
    ExpectFailure(Trouble::DamagedAnswer);
  }
  controller.changes = {{kCapabilities, [](Bytes& answer) { answer.resize(20); }}};
  ExpectFailure(Trouble::DamagedAnswer);
}

TEST_F(SessionTest, CheckValueWithoutAnAlgorithmIsTakenWithTheWorkaroundAlone) {
  controller.changes = {{kRakp3, [](Bytes& answer) {
                           answer.insert(answer.end(), 12, 0x5A);
                           answer.at(14) = static_cast<std::uint8_t>(answer.at(14) + 12);
                         }}};
  ExpectFailure(Trouble::DamagedAnswer);
  config.Set("IPMI_WORKAROUND_FLAGS", 32);
  EXPECT_EQ(Connect(), ConnectResult::Connected);
}

TEST_F(SessionTest, LaterAttemptsGiveEachOpeningQuestionMoreTime) {
  controller.changes = {{kCapabilities, Lose}};
  Connect();
  EXPECT_THAT(Times(), ElementsAre(0, 1000, 2000, 3000, 4000));
  Connect();
  EXPECT_THAT(Times(), ElementsAre(0, 2000, 4000));
  Connect();
  EXPECT_THAT(Times(), ElementsAre(0, 4000));
  controller.changes.clear();
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  controller.changes = {{kInSession, Lose}};
  Send();
  EXPECT_THAT(Times(), ElementsAre(0, 1000, 2000, 3000, 4000));
}

TEST_F(SessionTest, LateControllerIsKnownForOneInTheNextAttempt) {
  controller.delay = milliseconds(5000);
  Connect();
  EXPECT_EQ(GetLastExchange().words, FailureOf(Trouble::NoAnswer).words);
  Connect();
  EXPECT_EQ(GetLastExchange().words, LateFailure(milliseconds(5000)).words);
}

TEST_F(SessionTest, SlowControllerIsLearntForTheNextClient) {
  controller.delay = milliseconds(1200);
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(LearnedInterval("192.0.2.1", 623), milliseconds(2400));
  client->disconnect();
  client.emplace("192.0.2.1", "operator", "swordfish", "623", 0);
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(network.sent.size(), 5U);
  Send();
  EXPECT_EQ(network.sent.size(), 1U);
  client->disconnect();
  controller.delay = milliseconds(1000);
  EXPECT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(LearnedInterval("192.0.2.1", 623), milliseconds(0));
}

TEST_F(SessionTest, LearntIntervalHoldsForRequestsToo) {
  LearnInterval("192.0.2.1", 623, milliseconds(2400));
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  controller.changes = {{kInSession, Lose}};
  Send();
  EXPECT_THAT(Times(), ElementsAre(0, 2400));
}

TEST_F(SessionTest, LearntIntervalLeavesTimeForARepetition) {
  LearnInterval("192.0.2.1", 623, milliseconds(9000));
  controller.changes = {{kCapabilities, Lose}};
  Connect();
  EXPECT_THAT(Times(), ElementsAre(0, 3375));
}

TEST_F(SessionTest, LearntIntervalShorterThanTheUsualOneChangesNothing) {
  LearnInterval("192.0.2.1", 623, milliseconds(500));
  controller.changes = {{kCapabilities, Lose}};
  Connect();
  EXPECT_THAT(Times(), ElementsAre(0, 1000, 2000, 3000, 4000));
}

TEST_F(SessionTest, ClosingIsAskedTwiceAtMost) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  controller.changes = {{kInSession, Lose}};
  network.sent.clear();
  client->disconnect();
  EXPECT_THAT(Times(), ElementsAre(0, 1000));
  client->disconnect();
  EXPECT_THAT(network.sent, SizeIs(2));
}

TEST_F(SessionTest, AttemptsAtOneAddressShareASocketUntilTheClientDisconnects) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(network.sockets, 1);
  client->disconnect();
  EXPECT_EQ(Send(), ConnectResult::Failed);
  EXPECT_THAT(network.sent, IsEmpty());
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(network.sockets, 2);
  EXPECT_EQ(network.sent.front().datagram.at(kCapabilitiesNumberAt), 1 << 2);
}

TEST_F(SessionTest, OpenSessionIsClosedBeforeTheNextIsOpened) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_THAT(Steps(),
              ElementsAre(kInSession, kCapabilities, kOpenSession, kRakp1, kRakp3, kInSession));
}

TEST_F(SessionTest, SocketThatCouldNotBeOpenedIsTriedAnew) {
  network.connectError = ENETUNREACH;
  Connect();
  EXPECT_EQ(GetLastExchange().words, FailureOf(Trouble::NoRoute).words);
  network.connectError = 0;
  EXPECT_EQ(Connect(), ConnectResult::Connected);
}

TEST_F(SessionTest, SessionOfAClientThatIsDroppedIsClosed) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  network.sent.clear();
  client.reset();
  ASSERT_THAT(network.sent, SizeIs(1));
  EXPECT_EQ(network.sent.back().datagram.at(kCommandAt), kClose);
}

TEST_F(SessionTest, OnlyRequestsThatFitADatagramAreSent) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  controller.changes = {{kInSession, Lose}};
  EXPECT_EQ(Send({0xB0, Bytes(65000), 0x32}), ConnectResult::WorthRetrying);
  EXPECT_EQ(Send({0xB0, Bytes(65001), 0x32}), ConnectResult::Failed);
  EXPECT_EQ(GetLastExchange().words, "the request has 65001 data bytes; expected at most 65000");
  EXPECT_EQ(GetLastExchange().cause, FailureCause::BadSetting);
  EXPECT_EQ(took, 0);
}

TEST_F(SessionTest, OnlyRequestsOfANetworkFunctionForRequestsAreSent) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  for (const std::uint8_t netFn : Bytes{0x01, 0x33, 0x0E, 0x40}) {
    EXPECT_EQ(Send({0xB0, {}, netFn}), ConnectResult::Failed);
    EXPECT_THAT(network.sent, IsEmpty());
    EXPECT_EQ(GetLastExchange().cause, FailureCause::BadSetting);
  }
  EXPECT_EQ(GetLastExchange().words,
            "the network function is 0x40; expected an even one up to 0x0c, or from 0x2c to 0x3e");
  for (const std::uint8_t netFn : Bytes{0x00, 0x0C, 0x2C, 0x3E}) {
    EXPECT_EQ(Send({0xB0, {}, netFn}), 0);
  }
}

TEST_F(SessionTest, NumberOfTheSessionIsDrawnAgainWhenItStandsForNone) {
  entropy = {0, 7, 9};
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(controller.consolesSession, Bytes(4, 7));
  EXPECT_EQ(Part(network.sent.at(2).datagram, 24, 16), Bytes(16, 9));
}

TEST_F(SessionTest, WithoutRandomNumbersNoSessionIsOpened) {
  for (const Bytes& drawn : {Bytes{}, Bytes{7}}) {
    entropy = drawn;
    ExpectFailure(Trouble::ResourcesShort);
    EXPECT_THAT(Steps(), ElementsAre(kCapabilities));
  }
}

TEST_F(SessionTest, EveryOpeningQuestionHasTheLongerIntervalOfALaterAttempt) {
  for (const Step step : {kCapabilities, kOpenSession, kRakp1, kRakp3}) {
    client.emplace("192.0.2.1", "operator", "swordfish", "623", 0);
    controller.changes = {{kCapabilities, Lose}};
    Connect();
    controller.changes = {{step, Lose}};
    Connect();
    const std::vector<int> steps = Steps();
    EXPECT_EQ(std::count(steps.begin(), steps.end(), step), 3) << int{step};
    client->disconnect();
  }
}

/// The answer cut to so many bytes, with the length of its message as it is then.
Controller::Change Cut(Step step, std::size_t length) {
  return [=](Bytes& answer) {
    answer.resize(length);
    if (step == kCapabilities) {
      answer.at(13) = static_cast<std::uint8_t>(length - 14);
    } else {
      answer.at(14) = static_cast<std::uint8_t>(length - kPayloadAt);
    }
  };
}

TEST_F(SessionTest, AnswerOfAnyLengthShortOfItsOwnIsDamaged) {
  config.Set("IPMI_WORKAROUND_FLAGS", 64);
  const std::vector<std::pair<Step, std::pair<std::size_t, std::size_t>>> lengths = {
      {kCapabilities, {19, 28}},
      {kOpenSession, {17, 51}},
      {kRakp1, {17, 55}},
      {kRakp3, {17, 23}},
  };
  for (const auto& [step, range] : lengths) {
    for (std::size_t length = range.first; length <= range.second; ++length) {
      SCOPED_TRACE(std::to_string(step) + " of " + std::to_string(length));
      controller.changes = {{step, Cut(step, length)}};
      ExpectFailure(Trouble::DamagedAnswer);
    }
  }
}

TEST_F(SessionTest, GarbageInTheMiddleOfOpeningIsDamage) {
  for (const Step step : {kCapabilities, kOpenSession, kRakp1, kRakp3, kInSession}) {
    controller.changes = {{step, [](Bytes& answer) { answer = {0x01, 0x02, 0x03}; }}};
    ExpectFailure(Trouble::DamagedAnswer);
  }
}

/// Another message in the place of the one that stands there.
Controller::Change Instead(const Bytes& head, const Bytes& body) {
  return [=](Bytes& answer) {
    const std::uint8_t number = answer.at(kCapabilitiesNumberAt);
    const Bytes message = Joined({Summed(head), Summed(Joined({{0x20, number}, body}))});
    answer.resize(14);
    answer.at(13) = static_cast<std::uint8_t>(message.size());
    answer.insert(answer.end(), message.begin(), message.end());
  };
}

TEST_F(SessionTest, OtherMessageInThePlaceOfCapabilitiesIsForeign) {
  const Bytes rest = {0x00, 0x01, 0x80, 0x04, 0x02, 0x00, 0x00, 0x00, 0x00};
  controller.changes = {{kCapabilities, Instead({0x81, 0x1C}, Joined({{0x38}, rest}))}};
  EXPECT_EQ(Connect(), ConnectResult::Connected);
  controller.changes = {{kCapabilities, Instead({0x81, 0x1C}, Joined({{0x39}, rest}))}};
  ExpectFailure(Trouble::OtherAnswer);
  controller.changes = {{kCapabilities, Instead({0x81, 0x14}, Joined({{0x38}, rest}))}};
  ExpectFailure(Trouble::OtherAnswer);
  controller.changes = {{kCapabilities, [](Bytes& answer) {
                           answer = Packet(0x11, Bytes(4), {1, 0, 0, 0, 0, 0, 0, 0, 0});
                         }}};
  ExpectFailure(Trouble::OtherAnswer);
}

TEST_F(SessionTest, RefusalOfCapabilitiesNeedsNoData) {
  controller.changes = {{kCapabilities, Instead({0x81, 0x1C}, {0x38, 0xC0})}};
  ExpectFailure(Trouble::Busy);
  controller.changes = {{kCapabilities, Instead({0x81, 0x1C}, {0x38, 0x00})}};
  ExpectFailure(Trouble::DamagedAnswer);
}

TEST_F(SessionTest, LoginIsAllowedAsTheControllerSaysOfItsKind) {
  config.Set("IPMI_WORKAROUND_FLAGS", 64);
  struct Row {
    const char* userName;
    const char* password;
    std::uint8_t allowed;  ///< Anonymous login 1, without a user name 2, with one 4.
  };
  for (const Row& row : {Row{"operator", "swordfish", 4}, Row{"operator", "", 4},
                         Row{"", "swordfish", 2}, Row{"", "", 1}}) {
    for (const std::uint8_t status : Bytes{1, 2, 4}) {
      SCOPED_TRACE(std::string(row.userName) + " " + row.password + " " + std::to_string(status));
      controller.changes = {{kCapabilities, Set(23, status)}};
      client.emplace("192.0.2.1", row.userName, row.password, "623", 0);
      EXPECT_EQ(Connect(),
                status == row.allowed ? ConnectResult::Connected : ConnectResult::UserNameRefused);
    }
  }
}

TEST_F(SessionTest, LongestNamesAreTaken) {
  client.emplace("192.0.2.1", std::string(16, 'u'), std::string(20, 'p'), "623", 0);
  EXPECT_EQ(Connect(), ConnectResult::Connected);
}

TEST_F(SessionTest, LastExchangeIsTold) {
  const LastExchange& last = GetLastExchange();
  client.emplace("192.0.2.1", "operator", "swordfish", "6230", 0);
  EXPECT_EQ(last.host, "192.0.2.1");
  EXPECT_EQ(last.port, "6230");
  EXPECT_EQ(last.connectionAttempts, 0);
  EXPECT_EQ(last.cause, FailureCause::NoAttempt);
  EXPECT_EQ(last.result, FailureOf(Trouble::NoAttempt).result);
  controller.changes = {{kCapabilities, Lose}};
  Connect();
  EXPECT_EQ(last.cause, FailureCause::Silence);
  controller.changes.clear();
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(last.connectionAttempts, 2);
  EXPECT_EQ(last.cause, FailureCause::None);
  EXPECT_EQ(last.words, "");
  EXPECT_FALSE(last.isAnswered);
  Send();
  EXPECT_TRUE(last.isAnswered);
  EXPECT_EQ(last.completionCode, 0xC3);
  EXPECT_EQ(last.answerLength, 2U);
  controller.changes = {{kInSession, Lose}};
  Send();
  EXPECT_FALSE(last.isAnswered);
  EXPECT_EQ(last.completionCode, 0xFF);
  EXPECT_EQ(last.answerLength, 0U);
  EXPECT_EQ(last.cause, FailureCause::FellSilent);
}

TEST(LastExchange, IsAsNewOnAThreadThatMadeNone) {
  std::thread([] {
    const LastExchange& last = GetLastExchange();
    EXPECT_EQ(last.connectionAttempts, 0);
    EXPECT_EQ(last.result, ConnectResult::Connected);
    EXPECT_EQ(last.cause, FailureCause::None);
    EXPECT_FALSE(last.isAnswered);
    EXPECT_EQ(last.completionCode, 0);
    EXPECT_EQ(last.answerLength, 0U);
  }).join();
}

TEST_F(SessionTest, FailuresAreWrittenDownFromTheWarningThresholdOn) {
  const auto connectAndSend = [this] {
    controller.changes = {{kCapabilities, Lose}};
    Connect();
    controller.changes.clear();
    Connect();
    Send();
    Send({0xB0, {}, 0x33});
    Send({0xB0, Bytes(65001), 0x32});
  };
  {
    const LogCapture quiet(1);
    connectAndSend();
    EXPECT_THAT(quiet.lines, IsEmpty());
  }
  const LogCapture capture(2);
  connectAndSend();
  std::vector<std::string> texts;
  for (const LogLine& line : capture.lines) {
    texts.push_back(line.text);
    EXPECT_EQ(line.level, 2U);
    EXPECT_EQ(line.source, "platform/standalone/ipmi_client/IpmiClient");
  }
  const std::string whom = " failed: host 192.0.2.1, port 623, user \"operator\": ";
  EXPECT_THAT(
      texts,
      ElementsAre("connect" + whom + FailureOf(Trouble::NoAnswer).words + "; " +
                      FailureOf(Trouble::NoAnswer).advice,
                  "send of network function 0x33 command 0xb0" + whom +
                      "the network function is 0x33; expected an even one up to 0x0c, or from "
                      "0x2c to 0x3e",
                  "send of network function 0x32 command 0xb0" + whom +
                      "the request has 65001 data bytes; expected at most 65000"));
}

TEST_F(SessionTest, IntervalsThatAnotherThreadHoldsAreNeitherWaitedForNorLearnt) {
  LearnInterval("192.0.2.1", 623, milliseconds(3000));
  areMutexesHeld = true;
  EXPECT_EQ(LearnedInterval("192.0.2.1", 623), milliseconds(0));
  LearnInterval("192.0.2.1", 623, milliseconds(2000));
  areMutexesHeld = false;
  EXPECT_EQ(LearnedInterval("192.0.2.1", 623), milliseconds(3000));
}

TEST_F(SessionTest, PasswordIsWipedBehindTheSessionsEnd) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  network.onSent = [](const Datagram& /*datagram*/) { EXPECT_THAT(wiped, IsEmpty()); };
  wiped.clear();
  client.reset();
  EXPECT_THAT(wiped, Contains("swordfish"));
}

TEST_F(SessionTest, IntervalIsLearntForTheAddressThatANameStandsFor) {
  LearnInterval("127.0.0.1", 623, milliseconds(3000));
  client.emplace("localhost", "operator", "swordfish", "623", 0);
  controller.changes = {{kCapabilities, Lose}};
  Connect();
  EXPECT_THAT(Times(), ElementsAre(0, 3000));
  LearnInterval("127.0.0.1", 623, milliseconds(0));
}

TEST_F(SessionTest, SlowControllerIsLearntByItsAddress) {
  addressesOfTheName = {"192.0.2.7"};
  client.emplace("smm", "operator", "swordfish", "623", 0);
  controller.delay = milliseconds(1200);
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(LearnedInterval("192.0.2.7", 623), milliseconds(2400));
  EXPECT_EQ(LearnedInterval("smm", 623), milliseconds(0));
}

TEST_F(SessionTest, AddressesOfANameAreTriedInTurn) {
  addressesOfTheName = {"192.0.2.8", "192.0.2.9"};
  client.emplace("smm", "operator", "swordfish", "623", 0);
  controller.changes = {{kCapabilities, Lose}};
  const LogCapture capture(2);
  for (const char* address : {"192.0.2.8", "192.0.2.9", "192.0.2.8"}) {
    Connect();
    EXPECT_THAT(capture.lines.back().text,
                testing::HasSubstr("host smm (" + std::string(address) + "), port 623"));
  }
  EXPECT_EQ(network.sockets, 3);
}

TEST_F(SessionTest, FailureBeforeTheAddressIsKnownNamesNoEarlierOne) {
  addressesOfTheName = {"192.0.2.8"};
  client.emplace("smm", "operator", "swordfish", "623", 0);
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  config.Set("IPMI_PRIVILEGE_LEVEL", 9);
  const LogCapture capture(2);
  Connect();
  EXPECT_THAT(capture.lines.at(0).text, testing::HasSubstr("host smm, port 623"));
}

TEST_F(SessionTest, AttemptsAtTheOneAddressOfANameShareASocket) {
  addressesOfTheName = {"192.0.2.8"};
  client.emplace("smm", "operator", "swordfish", "623", 0);
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(network.sockets, 1);
}

TEST_F(SessionTest, CipherSuiteIsAskedForByItsAlgorithms) {
  config.Set("IPMI_CIPHER_SUITE", 17);
  Connect();
  EXPECT_EQ(Part(network.sent.at(1).datagram, 24, 24),
            (Bytes{0, 0, 0, 8, 3, 0, 0, 0, 1, 0, 0, 8, 4, 0, 0, 0, 2, 0, 0, 8, 1, 0, 0, 0}));
}

TEST_F(SessionTest, MemoryThatIsThereAgainIsOfUseWhereverItWasShort) {
  int enough = 0;
  for (int result = ConnectResult::Failed; result != ConnectResult::Connected; ++enough) {
    SCOPED_TRACE(enough);
    std::thread([&] {
      objectsLeft = enough;
      result = Connect();
      objectsLeft = kAnyNumber;
      EXPECT_EQ(Connect(), ConnectResult::Connected);
      client->disconnect();
    }).join();
  }
  EXPECT_GT(enough, 20);
}

TEST_F(SessionTest, WithoutMemoryForAnyObjectNothingIsSent) {
  objectsLeft = 0;
  ExpectFailure(Trouble::ResourcesShort);
  objectsLeft = kAnyNumber;
  EXPECT_THAT(network.sent, IsEmpty());
}

TEST(PacketParts, AreAllMissedWhereMemoryWasShortAndMadeAgain) {
  for (int made = 0; made < 7; ++made) {
    SCOPED_TRACE(made);
    std::thread([made] {
      objectsLeft = made;
      EXPECT_FALSE(PacketParts().AreThere());
      objectsLeft = made;
      PacketParts::OfThisThread();
      objectsLeft = kAnyNumber;
      EXPECT_TRUE(PacketParts::OfThisThread().AreThere());
    }).join();
  }
}

TEST_F(SessionTest, SessionWithoutKeysIsNotOpened) {
  canComputeKeys = false;
  ExpectFailure(Trouble::ResourcesShort);
  canComputeKeys = true;
  EXPECT_THAT(Steps(), ElementsAre(kCapabilities, kOpenSession, kRakp1, kRakp3));
}

TEST(OpenedSession, AnswerOfAnotherConsoleLeavesTheLastOneAsItWas) {
  const Bytes answer = Packet(0x11, Bytes(4),
                              Joined({{7, 0, 4, 0},
                                      {0x79, 0x56, 0x34, 0x12},
                                      kControllersSession,
                                      {0, 0, 0, 8, 0, 0, 0, 0},
                                      {1, 0, 0, 8, 0, 0, 0, 0},
                                      {2, 0, 0, 8, 0, 0, 0, 0}}));
  Handshake handshake;
  handshake.remoteConsoleSessionId = 0x12345678;
  OpenedSession opened = {1, 2, 3};
  ASSERT_EQ(ipmi_rmcpplus_init(), 0);
  EXPECT_EQ(ReadOpenedSession(answer, 7, handshake, opened), Verdict::Foreign);
  EXPECT_EQ(opened.status, 1);
  EXPECT_EQ(opened.maximumPrivilegeLevel, 2);
  EXPECT_EQ(opened.managedSystemSessionId, 3U);
  handshake.remoteConsoleSessionId = 0x12345679;
  EXPECT_EQ(ReadOpenedSession(answer, 7, handshake, opened), Verdict::Answer);
  EXPECT_EQ(opened.managedSystemSessionId, 0x44332211U);
}

TEST(Rakp4, AnyCheckValueIsTakenWithoutAuthenticationAlone) {
  const Bytes session = {0x78, 0x56, 0x34, 0x12};
  const Bytes rakp4 = Packet(0x15, Bytes(4), Joined({{7, 0, 0, 0}, session, Bytes(12, 0x5A)}));
  Handshake handshake;
  handshake.remoteConsoleSessionId = 0x12345678;
  Login login("operator", "swordfish");
  std::uint8_t status = 0xFF;
  login.algorithms = {IPMI_AUTHENTICATION_ALGORITHM_RAKP_HMAC_SHA1, IPMI_INTEGRITY_ALGORITHM_NONE,
                      IPMI_CONFIDENTIALITY_ALGORITHM_NONE};
  login.privilegeLevel = IPMI_PRIVILEGE_LEVEL_ADMIN;
  ASSERT_EQ(ipmi_rmcpplus_init(), 0);
  SessionKeys keys;
  ASSERT_TRUE(keys.Compute(login, handshake));
  EXPECT_EQ(ReadRakp4(rakp4, 7, login, handshake, keys, true, status), Verdict::Damaged);
  EXPECT_EQ(status, 0xFF);
  login.algorithms = {IPMI_AUTHENTICATION_ALGORITHM_RAKP_NONE,
                      IPMI_INTEGRITY_ALGORITHM_HMAC_SHA1_96, IPMI_CONFIDENTIALITY_ALGORITHM_NONE};
  EXPECT_EQ(ReadRakp4(rakp4, 7, login, handshake, keys, true, status), Verdict::Answer);
  EXPECT_EQ(status, 0);
}

/// Within a session of cipher suite 2.
constexpr auto kAuthenticated = static_cast<Step>(0x40);

/// A proof of the password, though no right one.
void AddProof(Bytes& rakp2) {
  rakp2.insert(rakp2.end(), 20, 0x5A);
  rakp2.at(14) = static_cast<std::uint8_t>(rakp2.at(14) + 20);
}

/// A controller at the other end of a session of cipher suite 2, whose RAKP messages 4 get lost.
class AuthenticatedSessionTest : public SessionTest {
 protected:
  AuthenticatedSessionTest() {
    ipmi_rmcpplus_init();
    config.Set("IPMI_CIPHER_SUITE", 2);
    isAnyProofRight = true;
    login.privilegeLevel = 4;
    login.algorithms = {IPMI_AUTHENTICATION_ALGORITHM_RAKP_HMAC_SHA1,
                        IPMI_INTEGRITY_ALGORITHM_HMAC_SHA1_96, IPMI_CONFIDENTIALITY_ALGORITHM_NONE};
    controller.changes = {{kRakp1, AddProof},
                          {kRakp3,
                           [this](Bytes& answer) {
                             ComputeKeys();
                             Lose(answer);
                           }},
                          {kAuthenticated, [this](Bytes& answer) {
                             answer = Authenticated(network.sent.back().datagram);
                           }}};
  }
  ~AuthenticatedSessionTest() override {
    client.reset();  // Its session is closed as long as the keys are there.
    isAnyProofRight = false;
  }

  void ComputeKeys() {
    const Bytes drawn = Part(network.sent.at(2).datagram, kPayloadAt + 8, 16);
    Handshake handshake;
    std::copy(drawn.begin(), drawn.end(), handshake.remoteConsoleRandomNumber.begin());
    handshake.managedSystemRandomNumber.fill(0xA5);
    EXPECT_TRUE(keys.emplace().Compute(login, handshake));
  }

  /// The answer to a request. It has the layout of one.
  Bytes Authenticated(const Bytes& request) {
    const Bytes& session = controller.consolesSession;
    const auto id = static_cast<std::uint32_t>(session.at(0) | session.at(1) << 8 |
                                               session.at(2) << 16 | session.at(3) << 24);
    const auto networkFunction = static_cast<std::uint8_t>((request.at(kPayloadAt + 1) >> 2U) + 1U);
    const auto number = static_cast<std::uint8_t>(request.at(kPayloadAt + 4) >> 2U);
    return MakeRequest({IPMI_PAYLOAD_TYPE_IPMI, id, sequenceNumber, networkFunction, number},
                       {login.algorithms, *keys, login.password, login.passwordLength},
                       {request.at(kCommandAt), Controller::Body(request), networkFunction});
  }

  const std::string userName = "operator";
  const std::string password = "swordfish";
  Login login{userName, password};
  std::optional<SessionKeys> keys;
  std::uint32_t sequenceNumber = 1;
};

TEST_F(AuthenticatedSessionTest, WrongProofOfThePasswordEndsTheOpening) {
  isAnyProofRight = false;
  ExpectFailure(Trouble::PasswordRefused);
}

TEST_F(AuthenticatedSessionTest, SecondCopyOfAnAnswerIsNoneToTheNextRequest) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  for (sequenceNumber = 2; sequenceNumber < 4; ++sequenceNumber) {
    EXPECT_EQ(Send(), 0);
    EXPECT_EQ(Send(), ConnectResult::WorthRetrying);
    EXPECT_EQ(GetLastExchange().words, FailureOf(Trouble::OtherAnswer).words);
  }
}

TEST_F(AuthenticatedSessionTest, RefusalThatComesTooLateForItsStepEndsTheNextAtOnce) {
  controller.changes[kAuthenticated] = [](Bytes& answer) {
    constexpr std::uint8_t tagOfRakp3 = 4;
    answer = Packet(0x15, Bytes(4), {tagOfRakp3, 0x01});
  };
  ExpectFailure(Trouble::NoFreeSession);
  EXPECT_EQ(took, 4500 + 2000);  // The session is asked to close, which is not answered either.
}

TEST_F(AuthenticatedSessionTest, DamageThatComesBehindTheProofIsNoAnswerToTheNextStep) {
  controller.changes[kAuthenticated] = [](Bytes& answer) { answer = {0x01, 0x02, 0x03}; };
  ExpectFailure(Trouble::DamagedAnswer);
}

TEST_F(SessionTest, RefusalOfThePrivilegeLevelNamesItsCommand) {
  controller.changes = {{kInSession, Complete(0xCC)}};
  EXPECT_EQ(Connect(), ConnectResult::Failed);
  EXPECT_EQ(GetLastExchange().words,
            "the controller refuses Set Session Privilege Level, with completion code 0xcc");
}

TEST_F(SessionTest, ClosingIsTriedOnceMoreWhereMemoryIsShort) {
  for (const int failures : {1, 2}) {
    ASSERT_EQ(Connect(), ConnectResult::Connected);
    int attempts = 0;
    network.onSent = [&](const Datagram& datagram) {
      if (++attempts <= failures) {
        throw std::bad_alloc();
      }
      controller.Receive(datagram);
    };
    client->disconnect();
    EXPECT_EQ(attempts, 2);
    network.onSent = [this](const Datagram& datagram) { controller.Receive(datagram); };
  }
}

TEST(Seam, RecordsBeginEmpty) {
  const TavrinConnection::ConnectionInfo info;
  EXPECT_EQ(info.address + info.userName + info.password, "");
  EXPECT_EQ(info.port, 0);
  EXPECT_EQ(info.aux16A, 0);
  EXPECT_EQ(info.aux16B, 0);
  EXPECT_EQ(info.aux32A, 0);
  EXPECT_EQ(info.connectionKind, 0);
  EXPECT_EQ(info.aux32B, 0);
  const IPMICOMMAND request;
  EXPECT_EQ(request.cmd, 0);
  EXPECT_EQ(request.netFn, 0);
}

/// The commands that were sent within the session since the last call.
std::vector<int> CommandsSent() {
  std::vector<int> commands;
  for (const ScriptedNetwork::Sent& sent : network.sent) {
    if (StepOf(sent.datagram) == kInSession) {
      commands.push_back(sent.datagram.at(kCommandAt));
    }
  }
  return commands;
}

TEST_F(SessionTest, IsCountedFromItsBeginningToItsEnd) {
  EXPECT_EQ(CountOpenSessions(), 0);
  std::map<int, int> counts;
  for (const Step step : {kCapabilities, kOpenSession, kRakp1, kRakp3, kInSession}) {
    controller.changes[step] = [&counts, step](Bytes&) { counts[step] = CountOpenSessions(); };
  }
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  EXPECT_EQ(counts,
            (std::map<int, int>{
                {kCapabilities, 0}, {kOpenSession, 1}, {kRakp1, 1}, {kRakp3, 1}, {kInSession, 1}}));
  EXPECT_EQ(CountOpenSessions(), 1);
  client->disconnect();
  EXPECT_EQ(CountOpenSessions(), 0);
}

TEST_F(SessionTest, ThatIsRefusedOrUnansweredIsCountedNoMore) {
  for (const Step step : {kOpenSession, kRakp1, kRakp3, kInSession}) {
    controller.changes = {{step, Lose}};
    EXPECT_NE(Connect(), ConnectResult::Connected);
    EXPECT_EQ(CountOpenSessions(), 0) << step;
  }
}

TEST_F(SessionTest, DeadlineEndsARequestAndClosesTheSession) {
  ASSERT_EQ(Connect(), ConnectResult::Connected);
  const ThreadDeadline deadline(Clock::now() + milliseconds(1500));
  controller.changes = {{kInSession, Lose}};
  EXPECT_EQ(Send(), ConnectResult::Interrupted);
  EXPECT_EQ(GetLastExchange().cause, FailureCause::TimeOver);
  EXPECT_EQ(GetLastExchange().words, "the time given for this enclosure is over");
  EXPECT_THAT(Times(), ElementsAre(0, 1000));
  EXPECT_EQ(took, 1500);
  network.sent.clear();
  client->disconnect();
  EXPECT_THAT(CommandsSent(), ElementsAre(kClose));
  EXPECT_EQ(network.now, milliseconds(1800));
  EXPECT_EQ(Connect(), ConnectResult::Interrupted);
  EXPECT_THAT(Steps(), IsEmpty());
}

TEST_F(SessionTest, StopClosesASessionThatIsBeingOpened) {
  for (const Step step : {kRakp3, kInSession}) {
    controller.changes = {{step, [](Bytes& answer) {
                             StopExchanges();
                             Lose(answer);
                           }}};
    EXPECT_EQ(Connect(), ConnectResult::Interrupted);
    EXPECT_EQ(GetLastExchange().cause, FailureCause::Stopped);
    EXPECT_EQ(CommandsSent().back(), kClose) << step;
    EXPECT_EQ(CountOpenSessions(), 0);
    EXPECT_LE(took, 400);
    AllowExchanges();
  }
}

TEST_F(SessionTest, OneThatWasJustAskedForIsWaitedForAndRefused) {
  controller.changes = {{kOpenSession, [this](Bytes&) {
                           StopExchanges();
                           controller.delay = milliseconds(200);
                         }}};
  EXPECT_EQ(Connect(), ConnectResult::Interrupted);
  AllowExchanges();
  EXPECT_THAT(Steps(), ElementsAre(kCapabilities, kOpenSession, kRakp3));
  EXPECT_EQ(took, 200);
  EXPECT_EQ(CountOpenSessions(), 0);
}

TEST_F(SessionTest, StoppedThreadSendsNothing) {
  StopExchanges();
  EXPECT_EQ(Connect(), ConnectResult::Interrupted);
  AllowExchanges();
  EXPECT_THAT(Steps(), IsEmpty());
  EXPECT_EQ(network.sockets, 0);
  EXPECT_EQ(Connect(), ConnectResult::Connected);
}

TEST_F(SessionTest, WithoutMemoryForItsNumberThereIsNothingToClose) {
  controller.changes = {{kOpenSession, [](Bytes&) { throw std::bad_alloc(); }}};
  EXPECT_THROW(Connect(), std::bad_alloc);
  EXPECT_THAT(Steps(), ElementsAre(kCapabilities, kOpenSession));
  EXPECT_EQ(CountOpenSessions(), 0);
}

/// Asks for presence from time 0 on.
class PresenceOverTime : public testing::Test {
 protected:
  PresenceOverTime() { ScriptedNetwork::Reset(); }

  void ExpectFailure(Trouble trouble, int end, const std::string& host = "192.0.2.1") {
    const LastExchange exchange = AskPresence(host, 623);
    EXPECT_EQ(exchange.words, FailureOf(trouble).words);
    EXPECT_EQ(exchange.cause, FailureOf(trouble).cause);
    EXPECT_EQ(network.now, milliseconds(end));
  }

  static std::vector<long> Sendings() {
    std::vector<long> times;
    for (const ScriptedNetwork::Sent& sent : network.sent) {
      times.push_back(sent.at.count());
    }
    return times;
  }

  LogCapture log;
};

TEST_F(PresenceOverTime, BothAreSentAtOnceAndAgainEachSecondUntilThreeAreOver) {
  const LastExchange exchange = AskPresence("192.0.2.1", 623);
  EXPECT_EQ(exchange.words, FailureOf(Trouble::NotPresent).words);
  EXPECT_EQ(exchange.host, "192.0.2.1");
  EXPECT_EQ(exchange.port, "623");
  EXPECT_FALSE(exchange.isAnswered);
  EXPECT_EQ(network.now, milliseconds(3000));
  EXPECT_THAT(Sendings(), ElementsAre(0, 0, 1000, 1000, 2000, 2000));
  EXPECT_EQ(network.sent.at(0).datagram,
            (Bytes{0x06, 0x00, 0xFF, 0x06, 0x00, 0x00, 0x11, 0xBE, 0x80, 1, 0x00, 0x00}));
  EXPECT_EQ(network.sent.at(1).datagram,
            (Bytes{0x06, 0x00, 0xFF, 0x07, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                   0x00, 0x09, 0x20, 0x18, 0xC8, 0x81, 0x04, 0x38, 0x8E, 0x04, 0xB1}));
  EXPECT_EQ(network.sent.at(4).datagram.at(9), 3);
  EXPECT_EQ(network.sent.at(5).datagram.at(kCapabilitiesNumberAt), 3 << 2);
}

TEST_F(PresenceOverTime, NetworksWordOnTheFirstTryIsForgotten) {
  network.Deliver(milliseconds(10), {}, ECONNREFUSED);
  ExpectFailure(Trouble::NotPresent, 3000);
}

TEST_F(PresenceOverTime, NetworksWordOnTheSecondTryEndsTheWaiting) {
  network.onSent = [](const Datagram&) { network.Deliver(milliseconds(5), {}, ECONNREFUSED); };
  ExpectFailure(Trouble::NotListening, 1005);
  EXPECT_THAT(Sendings(), ElementsAre(0, 0, 1000, 1000));
}

TEST_F(PresenceOverTime, NetworksWordOnThePingCountsWhereItComesBeforeTheRequestIsSent) {
  network.onSent = [](const Datagram& datagram) {
    if (datagram.at(3) == 0x06) {
      network.Deliver(milliseconds(0), {}, EHOSTUNREACH);
    }
  };
  ExpectFailure(Trouble::NoRoute, 1000);
  EXPECT_THAT(Sendings(), ElementsAre(0, 0, 1000, 1000));
}

TEST_F(PresenceOverTime, WithoutAWayThereNothingIsSent) {
  network.connectError = ENETUNREACH;
  ExpectFailure(Trouble::NoRoute, 0);
  EXPECT_THAT(Sendings(), IsEmpty());
}

TEST_F(PresenceOverTime, ErrorOfThisMachineEndsTheWaiting) {
  network.Deliver(milliseconds(10), {}, ENOBUFS);
  ExpectFailure(Trouble::ResourcesShort, 10);
}

TEST_F(PresenceOverTime, WithoutMemoryForTheRequestThePingIsSentAlone) {
  objectsLeft = 0;
  ExpectFailure(Trouble::NotPresent, 3000);
  objectsLeft = kAnyNumber;
  EXPECT_THAT(Sendings(), ElementsAre(0, 1000, 2000));
}

TEST_F(PresenceOverTime, NoMoreAddressesAreAskedThanTheLibraryTries) {
  addressesOfTheName = {"192.0.2.1", "192.0.2.2", "192.0.2.3", "192.0.2.4"};
  ExpectFailure(Trouble::NotPresent, 3000, "smm");
  EXPECT_EQ(network.sockets, 3);
}

TEST_F(PresenceOverTime, DeadlineEndsTheWaitingAndTheTries) {
  for (const int end : {450, 1000}) {
    ScriptedNetwork::Reset();
    const ThreadDeadline deadline(Clock::now() + milliseconds(end));
    ExpectFailure(Trouble::TimeOver, end);
    EXPECT_THAT(Sendings(), ElementsAre(0, 0)) << end;
  }
  EXPECT_EQ(log.lines.back().text,
            "asking for presence failed: host 192.0.2.1, port 623: the time given for this "
            "enclosure is over");
}

TEST_F(PresenceOverTime, BehindTheDeadlineNothingIsSent) {
  const ThreadDeadline deadline(Clock::now());
  ExpectFailure(Trouble::TimeOver, 0);
  EXPECT_THAT(Sendings(), IsEmpty());
}

TEST_F(PresenceOverTime, StopIsNoticedWithinFiftyMilliseconds) {
  network.whileWaiting = [](ScriptedNetwork::Time until) {
    if (until >= milliseconds(120)) {
      StopExchanges();
    }
  };
  ExpectFailure(Trouble::Stopped, 150);
  AllowExchanges();
}

TEST_F(PresenceOverTime, MachineThatPausesDoesNotWaitForWhatIsOver) {
  network.perLook = 2 * kLongestUnwatchedWait;
  network.whileWaiting = [](ScriptedNetwork::Time until) { EXPECT_EQ(until, network.now); };
  EXPECT_EQ(AskPresence("192.0.2.1", 623).cause, FailureCause::Silence);
}

}  // namespace
}  // namespace Tavrin::Standalone

// In the place of the system's.

extern "C" void explicit_bzero(void* memory, std::size_t length) noexcept {
  Tavrin::Standalone::wiped.emplace_back(static_cast<const char*>(memory), length);
  std::memset(memory, 0, length);
}

extern "C" fiid_obj_t fiid_obj_create(fiid_field_t* fields) {
  static auto* const create =
      reinterpret_cast<fiid_obj_t (*)(fiid_field_t*)>(dlsym(RTLD_NEXT, "fiid_obj_create"));
  int& left = Tavrin::Standalone::objectsLeft;
  if (left == 0) {
    return nullptr;
  }
  left = std::max(left - 1, Tavrin::Standalone::kAnyNumber);
  return create(fields);
}

extern "C" int ipmi_calculate_rmcpplus_session_keys(
    std::uint8_t authentication, std::uint8_t integrity, std::uint8_t confidentiality,
    const void* password, unsigned int passwordLength, const void* kg, unsigned int kgLength,
    const void* consolesNumber, unsigned int consolesNumberLength, const void* systemsNumber,
    unsigned int systemsNumberLength, std::uint8_t nameOnlyLookup, std::uint8_t privilegeLevel,
    const char* userName, unsigned int userNameLength, void** sik, unsigned int* sikLength,
    void** integrityKey, unsigned int* integrityKeyLength, void** confidentialityKey,
    unsigned int* confidentialityKeyLength) {
  static auto* const compute = reinterpret_cast<decltype(&ipmi_calculate_rmcpplus_session_keys)>(
      dlsym(RTLD_NEXT, "ipmi_calculate_rmcpplus_session_keys"));
  return Tavrin::Standalone::canComputeKeys
             ? compute(authentication, integrity, confidentiality, password, passwordLength, kg,
                       kgLength, consolesNumber, consolesNumberLength, systemsNumber,
                       systemsNumberLength, nameOnlyLookup, privilegeLevel, userName,
                       userNameLength, sik, sikLength, integrityKey, integrityKeyLength,
                       confidentialityKey, confidentialityKeyLength)
             : -1;
}

extern "C" int ipmi_rmcpplus_check_rakp_2_key_exchange_authentication_code(
    std::uint8_t authentication, const void* password, unsigned int passwordLength,
    std::uint32_t consolesSession, std::uint32_t systemsSession, const void* consolesNumber,
    unsigned int consolesNumberLength, const void* systemsNumber, unsigned int systemsNumberLength,
    const void* guid, unsigned int guidLength, std::uint8_t nameOnlyLookup,
    std::uint8_t privilegeLevel, const char* userName, unsigned int userNameLength,
    fiid_obj_t rakp2) {
  static auto* const check =
      reinterpret_cast<decltype(&ipmi_rmcpplus_check_rakp_2_key_exchange_authentication_code)>(
          dlsym(RTLD_NEXT, "ipmi_rmcpplus_check_rakp_2_key_exchange_authentication_code"));
  return Tavrin::Standalone::isAnyProofRight
             ? 1
             : check(authentication, password, passwordLength, consolesSession, systemsSession,
                     consolesNumber, consolesNumberLength, systemsNumber, systemsNumberLength, guid,
                     guidLength, nameOnlyLookup, privilegeLevel, userName, userNameLength, rakp2);
}

extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints,
                           addrinfo** list) {
  static auto* const resolve =
      reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
  const bool isTheName = std::string("smm") == node && (hints->ai_flags & AI_NUMERICHOST) == 0;
  if (!isTheName) {
    return resolve(node, service, hints, list);
  }
  addrinfo numeric = *hints;
  numeric.ai_flags = AI_NUMERICHOST;
  for (const std::string& address : Tavrin::Standalone::addressesOfTheName) {
    resolve(address.c_str(), service, &numeric, list);
    list = &(*list)->ai_next;
  }
  return 0;
}

extern "C" int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
  return Tavrin::Standalone::areMutexesHeld ? EBUSY : pthread_mutex_lock(mutex);
}

extern "C" int getentropy(void* buffer, std::size_t length) {
  auto& entropy = Tavrin::Standalone::entropy;
  if (entropy && entropy->empty()) {
    return -1;
  }
  const std::uint8_t drawn = entropy ? entropy->front() : 0x77;
  std::memset(buffer, drawn, length);
  if (entropy) {
    entropy->erase(entropy->begin());
  }
  return 0;
}
