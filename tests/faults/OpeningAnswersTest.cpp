#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/IpmiClient.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "platform/standalone/ipmi_client/LastExchange.h"
#include "tests/faults/FaultTest.h"
#include "tests/wire/WireTest.h"

namespace Tavrin {
namespace {

namespace ConnectResult = Standalone::ConnectResult;
using Standalone::FailureCause;
using std::chrono::milliseconds;
using ::testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;

/// Where things are in the answers that open a session.
constexpr std::size_t kPayloadTypeAt = 5;
constexpr std::size_t kCapabilitiesCodeAt = 20;
constexpr std::size_t kCapabilitiesStatusAt = 23;
constexpr std::size_t kCapabilitiesVersionsAt = 24;
constexpr std::size_t kLengthAt = 14;
constexpr std::size_t kNumberAt = 16;
constexpr std::size_t kStatusAt = 17;
constexpr std::size_t kPrivilegeAt = 18;
constexpr std::size_t kSessionIdAt = 20;
constexpr std::size_t kCompletionCodeAt = 22;

constexpr milliseconds kSessionTimeout{600};

Change Set(std::size_t at, std::uint8_t value) {
  return [at, value](Bytes& bytes) { bytes.at(at) = value; };
}

Change Clear(std::size_t at, std::uint8_t bits) {
  return [at, bits](Bytes& bytes) { bytes.at(at) &= static_cast<std::uint8_t>(~bits); };
}

Change Add(std::size_t at, std::uint8_t bits) {
  return [at, bits](Bytes& bytes) { bytes.at(at) |= bits; };
}

Change Flip(std::size_t at, std::uint8_t bits) {
  return [at, bits](Bytes& bytes) { bytes.at(at) ^= bits; };
}

void SpoilEnd(Bytes& bytes) { bytes.back() ^= 0x01U; }

/// The payload ends earlier, and says so.
void CutPayload(Bytes& bytes) {
  bytes.pop_back();
  --bytes.at(kLengthAt);
}

/// How controllers refuse: two bytes, and nothing else.
Change Refuse(std::uint8_t status) {
  return [status](Bytes& bytes) {
    bytes.at(kStatusAt) = status;
    bytes.resize(kStatusAt + 1);
    bytes.at(kLengthAt) = 2;
  };
}

/// One connect() to a controller whose answers are changed on the way.
class OpeningAnswers : public WireTest {
 protected:
  OpeningAnswers() : simulator({"--generation", "1"}), relay(simulator.Port()) {
    Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS",
                                     static_cast<int>(kSessionTimeout.count()));
  }
  ~OpeningAnswers() override { Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", -1); }

  int Connect(const Fault& fault) {
    relay.Break(fault);
    client = std::make_unique<IpmiClient>("127.0.0.1", "admin", "sesame",
                                          std::to_string(relay.Port()), 3);
    return client->connect();
  }

  void ExpectFailure(const Fault& fault, int result, FailureCause cause, const char* words) {
    SCOPED_TRACE(words);
    EXPECT_EQ(Connect(fault), result);
    EXPECT_EQ(Standalone::GetLastExchange().result, result);
    EXPECT_EQ(Standalone::GetLastExchange().cause, cause);
    EXPECT_EQ(Standalone::GetLastExchange().words, words);
    EXPECT_THAT(LogText(), HasSubstr(std::string(": ") + words));
    lines.clear();
  }

  /// Connected, and the session is of use.
  void ExpectSuccess(const Fault& fault) {
    ASSERT_EQ(Connect(fault), ConnectResult::Connected);
    relay.Heal();
    Bytes response;
    std::uint8_t completionCode = 0xFF;
    EXPECT_EQ(client->send({0xB0, {0x05, 0x00}, 0x32}, response, completionCode), 0);
    EXPECT_EQ(completionCode, 0);
    EXPECT_EQ(Standalone::GetLastExchange().cause, FailureCause::None);
    EXPECT_EQ(Standalone::GetLastExchange().words, "");
    client->disconnect();
    EXPECT_EQ(OpenSessions(simulator), 0);
  }

  SimulatedSmm simulator;
  Relay relay;
  std::unique_ptr<IpmiClient> client;
};

TEST_F(OpeningAnswers, CapabilitiesThatRuleASessionOutAreTold) {
  const auto capabilities = [](const Change& change) {
    return Changed(Answer::Capabilities, change);
  };
  for (const int passing : {0xC0, 0xC3, 0xCE, 0xCF, 0xD2}) {
    ExpectFailure(capabilities(Set(kCapabilitiesCodeAt, static_cast<std::uint8_t>(passing))),
                  ConnectResult::WorthRetrying, FailureCause::Busy, "the controller is busy");
  }
  ExpectFailure(capabilities(Set(kCapabilitiesCodeAt, 0xCC)), ConnectResult::Failed,
                FailureCause::Ipmi20Missing, "the controller does not offer IPMI 2.0");
  ExpectFailure(capabilities(Clear(kCapabilitiesVersionsAt, 0x02)), ConnectResult::Failed,
                FailureCause::Ipmi20Missing, "the controller does not offer IPMI 2.0");
  ExpectFailure(capabilities(Clear(kCapabilitiesStatusAt, 0x04)), ConnectResult::UserNameRefused,
                FailureCause::UserNameRefused, "the controller does not know the user");
  ExpectFailure(capabilities(Add(kCapabilitiesStatusAt, 0x20)), ConnectResult::Failed,
                FailureCause::KeyMissing,
                "the controller asks for a key besides the password (K_g), which this client does "
                "not use");
}

TEST_F(OpeningAnswers, WorkaroundPassesOverCapabilitiesThatRuleTheLoginOut) {
  Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 16 + 1);
  ExpectSuccess(Changed(Answer::Capabilities, Clear(kCapabilitiesStatusAt, 0x04)));
  ExpectSuccess(Changed(Answer::Capabilities, Add(kCapabilitiesStatusAt, 0x20)));
  ExpectFailure(Changed(Answer::Capabilities, Clear(kCapabilitiesVersionsAt, 0x02)),
                ConnectResult::Failed, FailureCause::Ipmi20Missing,
                "the controller does not offer IPMI 2.0");
}

struct Refusal {
  std::uint8_t status;
  int result;
  FailureCause cause;
  const char* words;
};

const std::vector<Refusal>& Refusals() {
  static const std::vector<Refusal> refusals = {
      {0x01, ConnectResult::WorthRetrying, FailureCause::Busy,
       "the controller has no free session"},
      {0x02, ConnectResult::WorthRetrying, FailureCause::Other,
       "the controller forgot the session while it was being opened"},
      {0x09, ConnectResult::PrivilegeRefused, FailureCause::PrivilegeRefused,
       "the controller does not grant the privilege level"},
      {0x0D, ConnectResult::UserNameRefused, FailureCause::UserNameRefused,
       "the controller does not know the user"},
      {0x11, ConnectResult::WorthRetrying, FailureCause::SuiteRefused,
       "the controller does not allow the cipher suite"},
      {0x12, ConnectResult::Failed, FailureCause::Other,
       "the controller refuses to open a session, with status 0x12"},
  };
  return refusals;
}

TEST_F(OpeningAnswers, EachRefusalIsTakenInEachStep) {
  for (const Answer answer : {Answer::OpenSession, Answer::Rakp2, Answer::Rakp4}) {
    for (const Refusal& refusal : Refusals()) {
      ExpectFailure(Changed(answer, Refuse(refusal.status)), refusal.result, refusal.cause,
                    refusal.words);
    }
  }
}

TEST_F(OpeningAnswers, LowerPrivilegeThanAskedForIsRefused) {
  ExpectFailure(Changed(Answer::OpenSession, Set(kPrivilegeAt, 3)), ConnectResult::PrivilegeRefused,
                FailureCause::PrivilegeRefused,
                "the controller does not grant the privilege level");
}

TEST_F(OpeningAnswers, AnswerToAnotherNumberOrSessionIsNotTaken) {
  for (const Answer answer : {Answer::OpenSession, Answer::Rakp2}) {
    for (const std::size_t at : {kNumberAt, kSessionIdAt}) {
      ExpectFailure(Changed(answer, Flip(at, 0xC0)), ConnectResult::WorthRetrying,
                    FailureCause::OtherAnswer,
                    "no answer within the session time-out but another request's");
    }
  }
}

TEST_F(OpeningAnswers, SpoiledProofOfThePasswordIsAnotherPassword) {
  ExpectFailure(Changed(Answer::Rakp2, SpoilEnd), ConnectResult::PasswordRefused,
                FailureCause::PasswordRefused, "the password does not match");
}

TEST_F(OpeningAnswers, CutProofOfThePasswordIsDamage) {
  ExpectFailure(Changed(Answer::Rakp2, CutPayload), ConnectResult::WorthRetrying,
                FailureCause::DamagedAnswer,
                "no answer within the session time-out that could be read");
}

TEST_F(OpeningAnswers, SilenceInEachStepIsToldApart) {
  ExpectFailure(At(Answer::Capabilities, Silence()), ConnectResult::WorthRetrying,
                FailureCause::Silence, "no answer within the session time-out");
  ExpectFailure(At(Answer::OpenSession, Silence()), ConnectResult::WorthRetrying,
                FailureCause::FellSilent,
                "the controller answered at first, then fell silent within the session time-out");
  ExpectFailure(At(Answer::Rakp2, Silence()), ConnectResult::WorthRetrying,
                FailureCause::FellSilent,
                "the controller fell silent while user name and password were checked");
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", 1);
  ExpectFailure(At(Answer::Rakp4, Silence()), ConnectResult::WorthRetrying,
                FailureCause::FellSilent,
                "the controller fell silent while user name and password were checked");
}

TEST_F(OpeningAnswers, LastProofMayBeLostOrDamagedWhereTheSessionProvesTheSame) {
  ExpectSuccess(At(Answer::Rakp4, Silence()));
  ExpectSuccess(Changed(Answer::Rakp4, SpoilEnd));
  ExpectSuccess(At(Answer::Rakp4, Delayed(kSessionTimeout + milliseconds(100))));
}

TEST_F(OpeningAnswers, LastProofThatIsDamagedFailsWhereNothingElseProvesTheSame) {
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", 1);
  ExpectFailure(Changed(Answer::Rakp4, SpoilEnd), ConnectResult::WorthRetrying,
                FailureCause::DamagedAnswer,
                "no answer within the session time-out that could be read");
  EXPECT_EQ(OpenSessions(simulator), 0);
}

TEST_F(OpeningAnswers, RefusalOfTheProofIsTakenAlsoWhenItComesLate) {
  constexpr const char* words =
      "the controller checked the proof of the password against another random number than the "
      "one that it had sent";
  ExpectFailure(Changed(Answer::Rakp4, Refuse(0x0F)), ConnectResult::WorthRetrying,
                FailureCause::OtherAnswer, words);
  // The controller knows of no session then, and answers nothing within one.
  const Fault late = [changed = Changed(Answer::Rakp4, Refuse(0x0F)),
                      seen = 0](const Datagram& datagram) mutable {
    Departures departures = changed(datagram);
    seen += departures.front().datagram.bytes != datagram.bytes ? 1 : 0;
    departures.front().delay = seen > 0 ? kSessionTimeout + milliseconds(100) : milliseconds(0);
    return departures;
  };
  ExpectFailure(late, ConnectResult::WorthRetrying, FailureCause::OtherAnswer, words);
}

TEST_F(OpeningAnswers, RefusalBehindTheProofIsPassedOver) {
  // Another datagram is in the place of RAKP message 4 when its change made a difference.
  ExpectSuccess([changed = Changed(Answer::Rakp4, Refuse(0x02))](const Datagram& datagram) mutable {
    Departures departures = changed(datagram);
    if (departures.front().datagram.bytes != datagram.bytes) {
      departures.insert(departures.begin(), {datagram});
    }
    return departures;
  });
}

TEST_F(OpeningAnswers, CheckValueWithoutAnAlgorithmIsTakenWithTheWorkaroundAlone) {
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", 0);
  const Fault fault = Changed(Answer::Rakp4, [](Bytes& bytes) {
    bytes.insert(bytes.end(), 12, 0x5A);
    bytes.at(kLengthAt) = static_cast<std::uint8_t>(bytes.at(kLengthAt) + 12);
  });
  ExpectFailure(fault, ConnectResult::WorthRetrying, FailureCause::DamagedAnswer,
                "no answer within the session time-out that could be read");
  Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 16 + 32);
  ExpectSuccess(fault);
}

TEST_F(OpeningAnswers, WrongChecksumIsTakenWithTheWorkaroundAlone) {
  const Fault fault = [](Datagram datagram) {
    constexpr std::size_t kAuthenticationTypeAt = 4;
    if (datagram.direction == Direction::ToClient && datagram.bytes[kAuthenticationTypeAt] == 0) {
      SpoilEnd(datagram.bytes);
    }
    return Departures{{std::move(datagram)}};
  };
  ExpectFailure(fault, ConnectResult::WorthRetrying, FailureCause::DamagedAnswer,
                "no answer within the session time-out that could be read");
  Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 16 + 64);
  ExpectSuccess(fault);
}

TEST_F(OpeningAnswers, SessionOfAClientThatIsJustDroppedIsClosed) {
  // Of these, the last takes the password itself for a key.
  for (const int suite : {0, 1, 3, 11}) {
    Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", suite);
    EXPECT_EQ(Connect(nullptr), ConnectResult::Connected);
    client.reset();
    EXPECT_EQ(OpenSessions(simulator), 0) << suite;
  }
}

struct PrivilegeRow {
  std::uint8_t completionCode;
  int result;
  FailureCause cause;
  const char* words;
};

TEST_F(OpeningAnswers, RefusedPrivilegeIsToldAndItsSessionClosed) {
  const std::vector<PrivilegeRow> rows = {
      {0x80, ConnectResult::PrivilegeRefused, FailureCause::PrivilegeRefused,
       "the controller does not grant the privilege level"},
      {0x81, ConnectResult::PrivilegeRefused, FailureCause::PrivilegeRefused,
       "the controller does not grant the privilege level"},
      {0xD4, ConnectResult::PrivilegeRefused, FailureCause::PrivilegeRefused,
       "the controller does not grant the privilege level (insufficient privilege)"},
      {0xC0, ConnectResult::WorthRetrying, FailureCause::Busy, "the controller is busy"},
      {0xC1, ConnectResult::Failed, FailureCause::Other,
       "the controller refuses Set Session Privilege Level, with completion code 0xc1"},
  };
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", 0);
  for (const PrivilegeRow& row : rows) {
    ExpectFailure(Changed(Answer::Privilege, Set(kCompletionCodeAt, row.completionCode)),
                  row.result, row.cause, row.words);
    EXPECT_EQ(OpenSessions(simulator), 0);
  }
}

TEST_F(OpeningAnswers, SessionIsClosedWhenThePrivilegeLevelStaysUnanswered) {
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", 0);
  ExpectFailure(At(Answer::Privilege, Silence()), ConnectResult::WorthRetrying,
                FailureCause::FellSilent,
                "the controller answered at first, then fell silent within the session time-out");
  EXPECT_EQ(OpenSessions(simulator), 0);
}

TEST_F(OpeningAnswers, SessionIsClosedWhenThePrivilegeLevelIsAnsweredWithoutEncryption) {
  // What is answered to the closing is encrypted again.
  const Change unencrypted = [repetitions = 5](Bytes& bytes) mutable {
    const unsigned int kept = repetitions-- > 0 ? 0x7F : 0xFF;
    bytes.at(kPayloadTypeAt) = static_cast<std::uint8_t>(bytes.at(kPayloadTypeAt) & kept);
  };
  ExpectFailure(Changed(Answer::WithinSession, unencrypted), ConnectResult::WorthRetrying,
                FailureCause::DamagedAnswer,
                "no answer within the session time-out that could be read");
  EXPECT_EQ(OpenSessions(simulator), 0);
}

}  // namespace
}  // namespace Tavrin
