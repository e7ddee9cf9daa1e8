#include <gmock/gmock.h>

#include <future>
#include <stdexcept>
#include <thread>

#include "platform/GlobalConfig.h"
#include "tests/reading/ScriptedEnclosure.h"

// What one pass leaves for the next, and for another one at the same time.

namespace Tavrin {
namespace {

using testing::ElementsAre;

class PassesTest : public ScriptedEnclosure {
 protected:
  /// One more pass over the same enclosure.
  Reading ReadAgain(const std::vector<Part>& parts = {}) {
    TheScript().asked.clear();
    return enclosure_.Read(parts, observer_);
  }
  static void BeAway() {
    TheScript().generation = [](SMMIype&) {
      LoseConnection(FailureCause::Silence, "no answer");
      return 1;
    };
  }
  static void Refuse() {
    TheScript().generation = [](SMMIype&) {
      LoseConnection(FailureCause::PasswordRefused, "wrong password");
      return 1;
    };
  }

  Enclosure enclosure_{EnclosureSettings()};
};

TEST_F(PassesTest, ObjectOfASoundPassIsTakenForTheNext) {
  ReadAgain();
  const Reading reading = ReadAgain({Part::Identity});
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "PSU status", "machine type",
                                             "serial number", "firmware version", "name"));
  EXPECT_EQ(reading.detection->platformId.value.value, 254);
  EXPECT_EQ(reading.identity->name.status, StatusCode::Success);
}

TEST_F(PassesTest, ReadingsAreNotThoseOfThePassBefore) {
  ReadAgain();
  TheScript().psuStatus = PsuSlots(6);
  EXPECT_EQ(ReadAgain().detection->psuSlotCount.value.value, 6);
}

TEST_F(PassesTest, EnclosureThatIsAwayAndComesBackIsReadAgain) {
  ReadAgain();
  BeAway();
  EXPECT_EQ(ReadAgain().failure->cause.words, "no answer");
  TheScript().generation = Generation(SMM_FIRST_GENERATION);
  const Reading reading = ReadAgain({Part::PowerCaps});
  EXPECT_FALSE(reading.failure);
  EXPECT_EQ(reading.powerCaps->status, StatusCode::Success);
  EXPECT_THAT(TheScript().asked,
              ElementsAre("generation", "construction", "PSU status", "power caps"));
}

TEST_F(PassesTest, EnclosureThatWasNeverThereIsReadOnceItIs) {
  BeAway();
  EXPECT_TRUE(ReadAgain().failure);
  TheScript().generation = Generation(SMM_FIRST_GENERATION);
  EXPECT_FALSE(ReadAgain().failure);
}

TEST_F(PassesTest, EnclosureThatGetsLostInAPassIsConstructedAnewInTheNext) {
  TheScript().name = [](std::string&) { return LoseConnection(FailureCause::Silence, "gone"); };
  EXPECT_EQ(ReadAgain({Part::Identity}).identity->name.cause.words, "gone");
  TheScript().name = [](std::string&) { return StatusCode::Success; };
  EXPECT_EQ(ReadAgain({Part::Identity}).identity->name.status, StatusCode::Success);
  EXPECT_EQ(TheScript().asked.at(1), "construction");
}

TEST_F(PassesTest, QueryThatTheSmmRefusesLeavesTheObject) {
  TheScript().name = [](std::string&) {
    EndAnswered(0xC1, 0);
    return StatusCode::UnusableAnswer;
  };
  ReadAgain({Part::Identity});
  ReadAgain();
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "PSU status"));
}

TEST_F(PassesTest, StatusThatWasNotReadIsReadInTheNextPass) {
  RefuseStatus();
  EXPECT_EQ(ReadAgain().detection->platformId.status, StatusCode::NoUsableResult);
  TheScript().construct = [] { EndAnswered(0, 14); };
  EXPECT_EQ(ReadAgain().detection->platformId.status, StatusCode::Success);
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "construction", "PSU status"));
}

TEST_F(PassesTest, LossOfOnePassHoldsInThatPassAlone) {
  TheScript().construct = [] { EndUnanswered(FailureCause::Silence, "no answer"); };
  TheScript().psuStatus = [](std::vector<PSUStatus>&) {
    return LoseConnection(FailureCause::Silence, "no answer");
  };
  EXPECT_EQ(ReadAgain({Part::PowerCaps}).powerCaps->status, StatusCode::NotConnected);
  TheScript() = SoundEnclosure();
  EXPECT_EQ(ReadAgain({Part::PowerCaps}).powerCaps->status, StatusCode::Success);
}

TEST_F(PassesTest, NewGenerationIsNoticedAndTheObjectConstructedAnew) {
  ReadAgain();
  int given = -1;
  TheScript().generation = [](SMMIype& type) {
    // What the pass before was constructed with must not be what is taken for configured.
    EXPECT_EQ(GetGlobalConfigValue("SMM_TYPE", -1), -1);
    return Give(type, SMM_SECOND_GENERATION);
  };
  TheScript().construct = [&given] {
    given = GetGlobalConfigValue("SMM_TYPE", -1);
    EndAnswered(0, 14);
  };
  const Reading reading = ReadAgain();
  EXPECT_EQ(reading.detection->generation.value.value, SMM_SECOND_GENERATION);
  EXPECT_EQ(given, SMM_SECOND_GENERATION);
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "construction", "PSU status"));
}

TEST_F(PassesTest, ObjectThatMayNotFitTheSmmAnyMoreIsConstructedAnew) {
  const std::vector<std::uint8_t> before = TheScript().statusAnswer;
  std::vector<std::uint8_t> otherPlatform = before;
  otherPlatform.at(0) = 0xFD;
  std::vector<std::uint8_t> otherSlots = before;
  otherSlots.at(13) = 0x03;
  const std::vector<std::uint8_t> tooShort(13);
  const std::vector<std::uint8_t> ofAConfiguredGeneration;
  for (const auto& now : {otherPlatform, otherSlots, tooShort, ofAConfiguredGeneration}) {
    TheScript().statusAnswer = before;
    ReadAgain();
    TheScript().statusAnswer = now;
    ReadAgain();
    EXPECT_THAT(TheScript().asked, ElementsAre("generation", "construction", "PSU status"));
  }
}

TEST_F(PassesTest, OtherBytesOfTheStatusLeaveTheObject) {
  ReadAgain();
  TheScript().statusAnswer.at(1) = 0xFF;
  TheScript().statusAnswer.push_back(0xFF);
  ReadAgain();
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "PSU status"));
}

TEST_F(PassesTest, RefusedPasswordStopsThePassThatItHappenedInAlone) {
  Refuse();
  const Reading refused = ReadAgain(kEverything);
  EXPECT_EQ(refused.failure->cause.kind, FailureCause::PasswordRefused);
  EXPECT_THAT(TheScript().asked, ElementsAre("generation"));

  int attemptsAllowed = -1;
  TheScript().generation = [&attemptsAllowed](SMMIype& type) {
    attemptsAllowed = GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 3);
    EndAnswered(0, 14);
    return Give(type, SMM_FIRST_GENERATION);
  };
  const Reading reading = ReadAgain({Part::Identity});
  EXPECT_EQ(attemptsAllowed, 3);
  EXPECT_EQ(reading.identity->name.status, StatusCode::Success);
}

TEST_F(PassesTest, RefusalInTheMiddleOfAPassEndsWithIt) {
  TheScript().machineType = [](std::string&) {
    return LoseConnection(FailureCause::PasswordRefused, "wrong password");
  };
  EXPECT_EQ(ReadAgain({Part::Identity}).identity->name.cause.words, "wrong password");
  TheScript().machineType = [](std::string&) { return StatusCode::Success; };
  TheScript().generation = [](SMMIype& type) {
    EndAnswered(0, 14);
    return Give(type, SMM_FIRST_GENERATION);
  };
  EXPECT_EQ(ReadAgain({Part::Identity}).identity->name.status, StatusCode::Success);
}

TEST_F(PassesTest, ExceptionOfTheConstructionLeavesNoObject) {
  TheScript().construct = [] { throw std::runtime_error("out of order"); };
  EXPECT_THROW(ReadAgain(), std::runtime_error);
  TheScript().construct = [] { EndAnswered(0, 14); };
  EXPECT_TRUE(ReadAgain().detection);
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "construction", "PSU status"));
}

TEST_F(PassesTest, LibraryGetsTheSettingsOfTheEnclosure) {
  EnclosureSettings settings;
  settings.password = "sesame";
  settings.cipherSuite = 17;
  settings.privilegeLevel = 2;
  settings.workaroundFlags = 16;
  settings.attempts = 5;
  settings.sessionTimeoutMs = 1234;
  settings.retransmissionTimeoutMs = 250;
  std::vector<int> values;
  TheScript().construct = [&values] {
    for (const char* const key : {"IPMI_CIPHER_SUITE", "IPMI_PRIVILEGE_LEVEL",
                                  "IPMI_WORKAROUND_FLAGS", "IPMI_CONNECT_RETRY_TIMES",
                                  "IPMI_SESSION_TIMEOUT_MS", "IPMI_RETRANSMISSION_TIMEOUT_MS"}) {
      values.push_back(GetGlobalConfigValue(key, -1));
    }
  };
  Enclosure(settings).Read({}, observer_);
  EXPECT_THAT(values, ElementsAre(17, 2, 16, 5, 1234, 250));
  EXPECT_EQ(TheScript().password, "sesame");
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
  TheScript() = SoundEnclosure();
  TheScript().generation = Generation(generation);
  TheScript().construct = [&] {
    here.set_value();
    there.wait();
    seen.cipherSuite = GetGlobalConfigValue("IPMI_CIPHER_SUITE", -1);
    seen.smmType = GetGlobalConfigValue("SMM_TYPE", -1);
    WriteLine(1, kLibrary, "generation " + std::to_string(generation));
    EndAnswered(0, 14);
  };
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
