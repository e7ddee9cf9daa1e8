#include <gmock/gmock.h>

#include <future>
#include <stdexcept>
#include <thread>
#include <utility>

#include "platform/GlobalConfig.h"
#include "platform/Log.h"
#include "platform/standalone/globalconfig/ThreadConfig.h"
#include "tests/reading/ScriptedEnclosure.h"

// What one pass leaves for the next, and for another one at the same time.

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::Exchange;
using testing::ElementsAre;
using testing::SizeIs;

/// What a pass begins with over an SMM that was read before.
const Steps kBeginningAgain = {kStatus, "GetPSUStatus"};

class PassesTest : public ScriptedEnclosure {
 protected:
  /// One more pass over the same enclosure.
  Reading ReadAgain(const std::vector<Part>& parts = {}) {
    smm_.platform.ForgetWhatHappened();
    return enclosure_.Read(parts, observer_);
  }

  /// Changes the answer to the first request of each pass.
  void ChangeDetection(const Answering& answering) {
    smm_.Change(kStatus, [this, answering](Exchange& exchange) {
      if (smm_.platform.exchanges.size() == kAfterDetection) {
        answering(exchange);
      }
    });
  }

  Enclosure enclosure_{EnclosureSettings()};
};

TEST_F(PassesTest, ObjectOfASoundPassIsTakenForTheNext) {
  ReadAgain();
  const Reading reading = ReadAgain({Part::Identity});
  EXPECT_EQ(smm_.Asked(), kBeginningAgain + kIdentitySteps);
  EXPECT_EQ(reading.detection->platformId.value.value, 254);
  EXPECT_EQ(reading.identity->name.status, StatusCode::Success);
}

TEST_F(PassesTest, ReadingsAreNotThoseOfThePassBefore) {
  EXPECT_EQ(ReadAgain({Part::PsuStatus}).psuStatus->status, StatusCode::Success);
  smm_.Change("GetPSUStatus", Refuses());
  EXPECT_EQ(ReadAgain({Part::PsuStatus}).psuStatus->status, StatusCode::UnusableAnswer);
}

TEST_F(PassesTest, EnclosureThatIsAwayAndComesBackIsReadAgain) {
  ReadAgain();
  smm_.Lose(0, FailureCause::Silence, "no answer");
  EXPECT_EQ(ReadAgain().failure->cause.words, "no answer");
  smm_.Heal();
  const Reading reading = ReadAgain({Part::PowerCaps});
  EXPECT_FALSE(reading.failure);
  EXPECT_EQ(reading.powerCaps->status, StatusCode::Success);
  EXPECT_EQ(smm_.Asked(), kBeginning + Steps{"GetChassisPowerCap"});
}

TEST_F(PassesTest, EnclosureThatWasNeverThereIsReadOnceItIs) {
  smm_.Lose(0, FailureCause::Silence, "no answer");
  EXPECT_TRUE(ReadAgain().failure);
  smm_.Heal();
  EXPECT_FALSE(ReadAgain().failure);
}

TEST_F(PassesTest, EnclosureThatGetsLostInAPassIsConstructedAnewInTheNext) {
  smm_.Lose(kAfterBeginning + 3, FailureCause::Silence, "gone");
  EXPECT_EQ(ReadAgain({Part::Identity}).identity->name.cause.words, "gone");
  smm_.Heal();
  EXPECT_EQ(ReadAgain({Part::Identity}).identity->name.status, StatusCode::Success);
  EXPECT_EQ(smm_.Asked(), kBeginning + kIdentitySteps);
}

TEST_F(PassesTest, QueryThatTheSmmRefusesLeavesTheObject) {
  smm_.Change("GetSmmName", Refuses());
  EXPECT_EQ(ReadAgain({Part::Identity}).identity->name.status, StatusCode::UnusableAnswer);
  ReadAgain();
  EXPECT_EQ(smm_.Asked(), kBeginningAgain);
}

TEST_F(PassesTest, StatusThatWasNotReadIsReadInTheNextPass) {
  smm_.ChangeConstruction(Refuses());
  EXPECT_EQ(ReadAgain().detection->platformId.status, StatusCode::NoUsableResult);
  smm_.Heal();
  EXPECT_EQ(ReadAgain().detection->platformId.status, StatusCode::Success);
  EXPECT_EQ(smm_.Asked(), kBeginning);
}

TEST_F(PassesTest, LossOfOnePassHoldsInThatPassAlone) {
  smm_.Lose(kAfterDetection, FailureCause::Silence, "no answer");
  EXPECT_EQ(ReadAgain({Part::PowerCaps}).powerCaps->status, StatusCode::NotConnected);
  smm_.Heal();
  EXPECT_EQ(ReadAgain({Part::PowerCaps}).powerCaps->status, StatusCode::Success);
}

TEST_F(PassesTest, NewGenerationIsNoticedAndTheObjectConstructedAnew) {
  ReadAgain();
  int given = -1;
  smm_.generation = SMM_SECOND_GENERATION;
  ChangeDetection([](Exchange&) {
    // What the pass before was constructed with must not be what is taken for configured.
    EXPECT_EQ(GetGlobalConfigValue("SMM_TYPE", -1), -1);
  });
  smm_.ChangeConstruction([&given](Exchange&) { given = GetGlobalConfigValue("SMM_TYPE", -1); });
  const Reading reading = ReadAgain();
  EXPECT_EQ(reading.detection->generation.value.value, SMM_SECOND_GENERATION);
  EXPECT_EQ(given, SMM_SECOND_GENERATION);
  EXPECT_EQ(smm_.Asked(), kBeginning);
}

TEST_F(PassesTest, ObjectThatMayNotFitTheSmmAnyMoreIsConstructedAnew) {
  constexpr std::uint8_t kSixSlots = 0x04;
  constexpr std::uint8_t kNineSlots = 0x03;
  smm_.generation = SMM_SECOND_GENERATION;
  const Bytes otherPlatform = Double::StatusAnswer(0xFE, kNineSlots);
  const Bytes otherSlots = Double::StatusAnswer(0xFD, kSixSlots);
  Bytes tooShort = Double::StatusAnswer(0xFD, kNineSlots);
  tooShort.pop_back();
  for (const Bytes& now : {otherPlatform, otherSlots, tooShort}) {
    smm_.Heal();
    ReadAgain();
    ChangeDetection(Gives(now));
    ReadAgain();
    EXPECT_EQ(smm_.Asked(), kBeginning);
  }
}

TEST_F(PassesTest, ObjectIsConstructedAnewWhereTheGenerationIsConfigured) {
  ReadAgain();
  const Standalone::ThreadConfig configured({{"SMM_TYPE", SMM_FIRST_GENERATION}});
  ReadAgain();
  EXPECT_THAT(smm_.platform.exchanges, SizeIs(kAfterBeginning));
}

TEST_F(PassesTest, ObjectOfAConfiguredGenerationIsNotTakenForTheNext) {
  const Standalone::ThreadConfig configured({{"SMM_TYPE", SMM_FIRST_GENERATION}});
  ReadAgain();
  ReadAgain();
  EXPECT_THAT(smm_.platform.exchanges, SizeIs(kAfterBeginning));
}

TEST_F(PassesTest, OtherBytesOfTheStatusLeaveTheObject) {
  ReadAgain();
  ChangeDetection([](Exchange& exchange) {
    exchange.response.at(1) ^= 0xFFU;
    exchange.response.push_back(0xFF);
  });
  ReadAgain();
  EXPECT_EQ(smm_.Asked(), kBeginningAgain);
}

TEST_F(PassesTest, RefusedPasswordStopsThePassThatItHappenedInAlone) {
  smm_.Lose(0, FailureCause::PasswordRefused, "wrong password");
  const Reading refused = ReadAgain(kEverything);
  EXPECT_EQ(refused.failure->cause.kind, FailureCause::PasswordRefused);
  EXPECT_EQ(smm_.Asked(), Steps{kInVain});

  smm_.Heal();
  int attemptsAllowed = -1;
  ChangeDetection([&attemptsAllowed](Exchange&) {
    attemptsAllowed = GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 3);
  });
  const Reading reading = ReadAgain({Part::Identity});
  EXPECT_EQ(attemptsAllowed, 3);
  EXPECT_EQ(reading.identity->name.status, StatusCode::Success);
}

TEST_F(PassesTest, RefusalInTheMiddleOfAPassEndsWithIt) {
  smm_.Lose(kAfterBeginning, FailureCause::PasswordRefused, "wrong password");
  EXPECT_EQ(ReadAgain({Part::Identity}).identity->name.cause.words, "wrong password");
  smm_.Heal();
  EXPECT_EQ(ReadAgain({Part::Identity}).identity->name.status, StatusCode::Success);
}

TEST_F(PassesTest, ExceptionOfTheConstructionLeavesNoObject) {
  smm_.ChangeConstruction(Throws(std::runtime_error("out of order")));
  EXPECT_THROW(ReadAgain(), std::runtime_error);
  smm_.Heal();
  EXPECT_TRUE(ReadAgain().detection);
  EXPECT_EQ(smm_.Asked(), kBeginning);
}

TEST_F(PassesTest, ObjectThatDidNotFitIsGoneAlsoWhereNoOtherTakesItsPlace) {
  ReadAgain();
  ChangeDetection(Gives(Double::StatusAnswer(0x02, 0x09)));
  smm_.ChangeConstruction(Throws(std::runtime_error("out of order")));
  EXPECT_THROW(ReadAgain(), std::runtime_error);
  smm_.Heal();
  ReadAgain();
  EXPECT_EQ(smm_.Asked(), kBeginning);
}

TEST_F(PassesTest, RefusalInTheMiddleOfASelectionLeavesNoObject) {
  smm_.Lose(kAfterBeginning, FailureCause::PasswordRefused, "wrong password");
  const Reading reading = enclosure_.SelectPsu(1, observer_);
  EXPECT_EQ(reading.psuSelection->status, StatusCode::NoUsableResult);
  smm_.Heal();
  ReadAgain();
  EXPECT_EQ(smm_.Asked(), kBeginning);
}

TEST_F(PassesTest, LibraryGetsTheSettingsOfTheEnclosure) {
  settings_.host = "192.0.2.17";
  settings_.userName = "operator-7";
  settings_.password = "sesame";
  smm_.platform.expectedSettings.address = settings_.host;
  smm_.platform.expectedSettings.userName = settings_.userName;
  smm_.platform.expectedSettings.password = settings_.password;
  settings_.cipherSuite = 17;
  settings_.privilegeLevel = 2;
  settings_.workaroundFlags = 16;
  settings_.attempts = 5;
  settings_.sessionTimeoutMs = 1234;
  settings_.retransmissionTimeoutMs = 250;
  std::vector<int> values;
  smm_.ChangeConstruction([&values](Exchange&) {
    values.clear();
    for (const char* const key : {"IPMI_CIPHER_SUITE", "IPMI_PRIVILEGE_LEVEL",
                                  "IPMI_WORKAROUND_FLAGS", "IPMI_CONNECT_RETRY_TIMES",
                                  "IPMI_SESSION_TIMEOUT_MS", "IPMI_RETRANSMISSION_TIMEOUT_MS"}) {
      values.push_back(GetGlobalConfigValue(key, -1));
    }
  });
  Read();
  EXPECT_THAT(values, ElementsAre(17, 2, 16, 5, 1234, 250));
  EXPECT_EQ(GetGlobalConfigValue("IPMI_CIPHER_SUITE", -1), -1);
}

/// What a pass of its own thread saw, as both threads were in the middle of theirs.
struct Seen {
  int cipherSuite = -1;
  int smmType = -1;
  std::vector<std::string> lines;
  Reading reading;
};

/// Waits in its construction until the other thread is in its own.
Seen ReadBeside(int cipherSuite, SMMIype generation, std::promise<void>& here,
                const std::shared_future<void>& there) {
  Seen seen;
  ScriptedSmm smm(generation);
  smm.ChangeConstruction([&, isFirst = true](Exchange&) mutable {
    if (!std::exchange(isFirst, false)) {
      return;
    }
    here.set_value();
    there.wait();
    seen.cipherSuite = GetGlobalConfigValue("IPMI_CIPHER_SUITE", -1);
    seen.smmType = GetGlobalConfigValue("SMM_TYPE", -1);
    Log(1, "SMMInventoryImpl", 7).Stream() << "generation " << static_cast<int>(generation);
  });
  EnclosureSettings settings;
  settings.cipherSuite = cipherSuite;
  Recorder observer;
  observer.logLevel = 1;
  seen.reading = Enclosure(settings).Read({}, observer);
  seen.lines = observer.lines;
  return seen;
}

TEST(Passes, TwoThreadsReadWithDifferentSettingsAtOnce) {
  std::promise<void> first;
  std::promise<void> second;
  const std::shared_future<void> firstIsThere = first.get_future().share();
  const std::shared_future<void> secondIsThere = second.get_future().share();
  Seen one;
  Seen other;
  std::thread thread([&] { one = ReadBeside(3, SMM_FIRST_GENERATION, first, secondIsThere); });
  other = ReadBeside(17, SMM_SECOND_GENERATION, second, firstIsThere);
  thread.join();
  EXPECT_EQ(one.cipherSuite, 3);
  EXPECT_EQ(one.smmType, SMM_FIRST_GENERATION);
  EXPECT_THAT(one.lines, ElementsAre("generation 0"));
  EXPECT_EQ(one.reading.detection->generation.value.value, SMM_FIRST_GENERATION);
  EXPECT_EQ(other.cipherSuite, 17);
  EXPECT_EQ(other.smmType, SMM_SECOND_GENERATION);
  EXPECT_THAT(other.lines, ElementsAre("generation 1"));
  EXPECT_EQ(other.reading.detection->generation.value.value, SMM_SECOND_GENERATION);
}

}  // namespace
}  // namespace Tavrin
