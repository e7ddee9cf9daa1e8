#include "reading/Enclosure.h"

#include <gmock/gmock.h>

#include <new>
#include <stdexcept>

#include "platform/GlobalConfig.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "tests/reading/ScriptedEnclosure.h"

namespace Tavrin {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

using EnclosureTest = ScriptedEnclosure;

TEST_F(EnclosureTest, PlatformOfFourNodesIsDetected) {
  const Detection detection = *Read().detection;
  EXPECT_EQ(detection.generation.value.value, SMM_FIRST_GENERATION);
  EXPECT_EQ(detection.platformId.value.value, 254);
  EXPECT_EQ(detection.psuSlotCount.value.value, 2);
  EXPECT_EQ(detection.nodeCount.value.value, 4);
}

TEST_F(EnclosureTest, PlatformOfTwelveNodesIsDetectedWithItsSlots) {
  TheScript().nodeCount = 12;
  TheScript().psuStatus = PsuSlots(9);
  const Detection detection = *Read().detection;
  EXPECT_EQ(detection.platformId.value.value, 253);
  EXPECT_EQ(detection.psuSlotCount.value.value, 9);
  EXPECT_EQ(detection.nodeCount.value.value, 12);
}

TEST_F(EnclosureTest, StatusOfThePsusIsAskedForOnceInAPass) {
  Read({Part::PsuStatus, Part::PsuFans, Part::PsuFirmware});
  EXPECT_THAT(TheScript().asked,
              ElementsAre("generation", "construction", "PSU status", "fans", "firmware"));
}

TEST_F(EnclosureTest, RefusedPsuStatusStillCountsTheSlots) {
  TheScript().nodeCount = 12;
  TheScript().psuStatus = PsuSlots(6, StatusCode::UnusableAnswer);
  const Detection detection = *Read().detection;
  EXPECT_EQ(detection.psuSlotCount.status, StatusCode::Success);
  EXPECT_EQ(detection.psuSlotCount.value.value, 6);
}

TEST_F(EnclosureTest, FailedExchangeLeavesTheSlotsUncounted) {
  TheScript().psuStatus = [](std::vector<PSUStatus>&) {
    return LoseConnection(FailureCause::Silence, "no answer");
  };
  const Detection detection = *Read().detection;
  EXPECT_EQ(detection.psuSlotCount.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.psuSlotCount.cause.words, "no answer");
  EXPECT_EQ(detection.psuSlotCount.value.absence, Absence::QueryFailed);
  EXPECT_EQ(detection.nodeCount.status, StatusCode::Success);
}

struct StatusEnding {
  std::uint8_t completionCode;
  std::size_t length;
  std::string words;
};

TEST_F(EnclosureTest, StatusThatTellsNoPlatformLeavesWhatTheLibraryAssumesUnread) {
  const std::vector<StatusEnding> table = {{0xC1, 0, "its answer is empty"},
                                           {0xC1, 14, "its answer has 14 bytes"},
                                           {0, 0, "its answer is empty"},
                                           {0, 1, "its answer has 1 byte"},
                                           {0, 13, "its answer has 13 bytes"}};
  for (const StatusEnding& row : table) {
    SCOPED_TRACE(row.words);
    TheScript().construct = [&row] { EndAnswered(row.completionCode, row.length); };
    const Detection detection = *Read().detection;
    EXPECT_EQ(detection.generation.status, StatusCode::Success);
    EXPECT_EQ(detection.platformId.status, StatusCode::NoUsableResult);
    EXPECT_EQ(detection.platformId.cause.words, row.words);
    EXPECT_EQ(detection.platformId.cause.completionCode, row.completionCode);
    EXPECT_EQ(detection.platformId.value.value, std::nullopt);
    EXPECT_EQ(detection.psuSlotCount.status, StatusCode::NoUsableResult);
    EXPECT_EQ(detection.nodeCount.status, StatusCode::NoUsableResult);
  }
}

TEST_F(EnclosureTest, SmmThatWasLostBeforeItsStatusWasReadIsAskedOnlyOnce) {
  TheScript().generation = Generation(SMM_SECOND_GENERATION);
  TheScript().construct = [] { EndUnanswered(FailureCause::Silence, "no answer"); };
  TheScript().psuStatus = [](std::vector<PSUStatus>&) {
    return LoseConnection(FailureCause::Silence, "no answer from it");
  };
  const Reading reading = Read({Part::Identity, Part::ChassisPower});
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "construction", "PSU status"));
  EXPECT_EQ(reading.detection->generation.status, StatusCode::Success);
  EXPECT_EQ(reading.detection->platformId.status, StatusCode::NotConnected);
  EXPECT_EQ(reading.detection->psuSlotCount.status, StatusCode::NotConnected);
  EXPECT_EQ(reading.detection->nodeCount.cause.words, "no answer from it");
  EXPECT_EQ(reading.identity->serialNumber.status, StatusCode::NotConnected);
  EXPECT_EQ(reading.identity->serialNumber.cause.words, "no answer from it");
  EXPECT_EQ(reading.chassisPower->status, StatusCode::NotConnected);
  EXPECT_EQ(reading.chassisPower->cause.missing, "");
}

TEST_F(EnclosureTest, SelectionOnALostSmmIsNotSent) {
  TheScript().construct = [] { EndUnanswered(FailureCause::Silence, "no answer"); };
  TheScript().psuStatus = [](std::vector<PSUStatus>&) { return StatusCode::NotConnected; };
  const Query<PsuSelection> selection = SelectPsu(1);
  EXPECT_EQ(selection.status, StatusCode::NotConnected);
  EXPECT_EQ(selection.value.asked, 1);
  EXPECT_FALSE(selection.value.isSent);
  EXPECT_EQ(selection.value.sent.value, std::nullopt);
  EXPECT_EQ(selection.value.sent.absence, Absence::QueryFailed);
  EXPECT_EQ(selection.value.remark, "nothing was sent");
  EXPECT_THAT(TheScript().asked, Not(Contains("selection of PSU 1")));
}

TEST_F(EnclosureTest, SmmThatIsGoneIsNotConstructedOnceMore) {
  TheScript().generation = Generation(SMM_SECOND_GENERATION);
  for (const FailureCause cause : {FailureCause::Silence, FailureCause::Unreachable}) {
    TheScript().asked.clear();
    TheScript().construct = [cause] { EndUnanswered(cause, "nobody there"); };
    Read();
    EXPECT_THAT(TheScript().asked, ElementsAre("generation", "construction", "PSU status"));
  }
}

TEST_F(EnclosureTest, LostConnectionWithAKnownStatusIsTriedAnewByEachQuery) {
  TheScript().machineType = [](std::string&) {
    return LoseConnection(FailureCause::Silence, "no answer");
  };
  const Identity identity = *Read({Part::Identity}).identity;
  EXPECT_EQ(identity.machineType.status, StatusCode::NotConnected);
  EXPECT_EQ(identity.serialNumber.status, StatusCode::Success);
}

TEST_F(EnclosureTest, SecondGenerationWithoutAPlatformIsConstructedOnceMore) {
  int constructions = 0;
  TheScript().generation = Generation(SMM_SECOND_GENERATION);
  TheScript().construct = [&constructions] {
    ++constructions;
    EndAnswered(constructions == 1 ? 0xC0 : 0, 14);
  };
  const Reading reading = Read({Part::ChassisPower});
  EXPECT_EQ(constructions, 2);
  EXPECT_EQ(reading.detection->platformId.status, StatusCode::Success);
  EXPECT_EQ(reading.chassisPower->status, StatusCode::Success);
}

TEST_F(EnclosureTest, SecondGenerationWithoutAPlatformIsNotAskedWhatDependsOnIt) {
  TheScript().generation = Generation(SMM_SECOND_GENERATION);
  RefuseStatus();
  const Reading reading = Read({Part::ChassisPower, Part::PowerCaps});
  EXPECT_THAT(TheScript().asked,
              ElementsAre("generation", "construction", "construction", "PSU status"));
  EXPECT_EQ(reading.chassisPower->status, StatusCode::NoUsableResult);
  EXPECT_EQ(reading.chassisPower->cause.missing, "platform");
  EXPECT_EQ(reading.chassisPower->cause.completionCode, 0xC1);
  EXPECT_EQ(reading.chassisPower->askedAt, std::chrono::system_clock::time_point());
  EXPECT_EQ(reading.powerCaps->status, StatusCode::NoUsableResult);
}

TEST_F(EnclosureTest, SecondGenerationWithoutAPlatformIsNotAskedToSelectAHighPsu) {
  TheScript().generation = Generation(SMM_SECOND_GENERATION);
  RefuseStatus();
  const Query<PsuSelection> selection = SelectPsu(3);
  EXPECT_EQ(selection.status, StatusCode::NoUsableResult);
  EXPECT_EQ(selection.cause.missing, "platform");
  EXPECT_FALSE(selection.value.isSent);
  EXPECT_EQ(selection.value.remark, "nothing was sent");
  EXPECT_THAT(TheScript().asked, Not(Contains("selection of PSU 3")));
}

TEST_F(EnclosureTest, SecondGenerationWithoutAPlatformIsAskedTheRest) {
  TheScript().generation = Generation(SMM_SECOND_GENERATION);
  RefuseStatus();
  const Reading reading = Read({Part::NodePower, Part::PsuFans});
  EXPECT_THAT(*reading.nodePower, SizeIs(4));
  EXPECT_EQ(reading.psuFans->status, StatusCode::Success);
  EXPECT_EQ(SelectPsu(2).value.sent.value, 2);
  EXPECT_THAT(
      TheScript().asked,
      ElementsAre("generation", "construction", "construction", "PSU status", "power of node 1",
                  "power of node 2", "power of node 3", "power of node 4", "fans", "generation",
                  "construction", "construction", "PSU status", "selection of PSU 2"));
}

TEST_F(EnclosureTest, FirstGenerationNeedsNoPlatform) {
  RefuseStatus();
  const Reading reading = Read({Part::ChassisPower, Part::PowerCaps});
  EXPECT_EQ(reading.chassisPower->status, StatusCode::Success);
  EXPECT_EQ(reading.powerCaps->status, StatusCode::Success);
  EXPECT_EQ(SelectPsu(3).value.sent.value, 3);
}

struct Refused {
  FailureCause cause;
  std::string words;
};

TEST_F(EnclosureTest, RefusedLoginEndsEveryFurtherOneOfThePass) {
  const std::vector<Refused> table = {{FailureCause::UserNameRefused, "unknown user"},
                                      {FailureCause::PasswordRefused, "wrong password"}};
  for (const Refused& row : table) {
    SCOPED_TRACE(row.words);
    TheScript().asked.clear();
    TheScript().machineType = [&row](std::string&) { return LoseConnection(row.cause, row.words); };
    const Reading reading = Read({Part::Identity, Part::ChassisPower});
    EXPECT_THAT(TheScript().asked,
                ElementsAre("generation", "construction", "PSU status", "machine type"));
    EXPECT_EQ(reading.identity->name.status, StatusCode::NotConnected);
    EXPECT_EQ(reading.identity->name.cause.kind, row.cause);
    EXPECT_EQ(reading.identity->name.cause.words, row.words);
    EXPECT_EQ(reading.chassisPower->status, StatusCode::NotConnected);
  }
}

TEST_F(EnclosureTest, OtherFailureOfTheLoginLetsTheNextOneTry) {
  TheScript().machineType = [](std::string&) {
    return LoseConnection(FailureCause::PrivilegeRefused, "not that level");
  };
  int attemptsAllowed = -1;
  TheScript().serialNumber = [&attemptsAllowed](std::string&) {
    attemptsAllowed = GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 3);
    return StatusCode::Success;
  };
  EXPECT_EQ(Read({Part::Identity}).identity->serialNumber.status, StatusCode::Success);
  EXPECT_EQ(attemptsAllowed, 3);
}

TEST_F(EnclosureTest, RefusedLoginInTheMiddleOfTheConstructionIsTheLast) {
  int attemptsAllowed = -1;
  TheScript().generation = Generation(SMM_SECOND_GENERATION);
  TheScript().construct = [&attemptsAllowed] {
    WriteLine(3, kLibrary, "Try to get SMM status, retry 1 time");
    LoseConnection(FailureCause::PasswordRefused, "wrong password");
    attemptsAllowed = GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 3);
    WriteLine(3, kLibrary, "Try to get SMM status, retry 2 times");
    EndUnanswered(FailureCause::NoAttempt, "");
  };
  const Detection detection = *Read().detection;
  EXPECT_EQ(attemptsAllowed, 0);
  EXPECT_EQ(GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 3), 3);
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "construction"));
  EXPECT_EQ(detection.generation.status, StatusCode::Success);
  EXPECT_EQ(detection.platformId.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.platformId.cause.words, "wrong password");
}

TEST_F(EnclosureTest, RefusalThatTheThreadMetBeforeThePassStopsNothing) {
  EndUnanswered(FailureCause::PasswordRefused, "the password of another SMM");
  int attemptsAllowed = -1;
  TheScript().generation = [&attemptsAllowed](SMMIype& type) {
    WriteLine(2, "platform/standalone/smmcommoninfo/SMMInfo", "SMM_TYPE is \"7\"");
    attemptsAllowed = GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 3);
    EndAnswered(0, 14);
    return Give(type, SMM_FIRST_GENERATION);
  };
  EXPECT_EQ(Read({Part::Identity}).identity->name.status, StatusCode::Success);
  EXPECT_EQ(attemptsAllowed, 3);
}

TEST_F(EnclosureTest, RefusedLoginInTheMiddleOfTheSelectionIsItsCause) {
  TheScript().selectPsu = [](int) {
    LoseConnection(FailureCause::PasswordRefused, "wrong password");
    EndUnanswered(FailureCause::NoAttempt, "");
    return StatusCode::NoUsableResult;
  };
  const Query<PsuSelection> selection = SelectPsu(1);
  EXPECT_EQ(selection.cause.words, "wrong password");
  EXPECT_EQ(selection.value.sent.value, std::nullopt);
}

TEST_F(EnclosureTest, FailedQueryDoesNotHideTheOthers) {
  TheScript().machineType = [](std::string&) {
    EndAnswered(0xC1, 0);
    return StatusCode::UnusableAnswer;
  };
  TheScript().serialNumber = [](std::string& text) { return Give(text, std::string("J123")); };
  const Identity identity = *Read({Part::Identity}).identity;
  EXPECT_EQ(identity.machineType.status, StatusCode::UnusableAnswer);
  EXPECT_EQ(identity.machineType.cause.completionCode, 0xC1);
  EXPECT_EQ(identity.machineType.value.absence, Absence::QueryFailed);
  EXPECT_EQ(identity.serialNumber.value.value, "J123");
  EXPECT_EQ(identity.serialNumber.cause.completionCode, 0);
  EXPECT_EQ(identity.serialNumber.cause.words, "");
}

TEST_F(EnclosureTest, ShortAnswerThatThrowsIsToldInWords) {
  TheScript().machineType = [](std::string&) -> int {
    EndAnswered(0, 1);
    throw std::bad_alloc();
  };
  const Identity identity = *Read({Part::Identity}).identity;
  EXPECT_EQ(identity.machineType.status, kExceptionStatus);
  EXPECT_EQ(identity.machineType.cause.words,
            "its answer has 1 byte, which is shorter than what leads an answer, or memory ran out");
  EXPECT_EQ(identity.serialNumber.status, StatusCode::Success);
}

TEST_F(EnclosureTest, RefusalAndSilenceThatThrowAreToldAsSuch) {
  TheScript().machineType = [](std::string&) -> int {
    EndAnswered(0xD4, 0);
    throw std::bad_alloc();
  };
  TheScript().name = [](std::string&) -> int {
    EndUnanswered(FailureCause::FellSilent, "no answer any more");
    throw std::bad_alloc();
  };
  const Identity identity = *Read({Part::Identity}).identity;
  EXPECT_EQ(identity.machineType.cause.completionCode, 0xD4);
  EXPECT_THAT(identity.machineType.cause.words, Not(HasSubstr("memory")));
  EXPECT_EQ(identity.name.cause.kind, FailureCause::FellSilent);
  EXPECT_EQ(identity.name.cause.words, "no answer any more");
}

TEST_F(EnclosureTest, OtherExceptionIsToldInItsOwnWordsEscaped) {
  TheScript().serialNumber = [](std::string&) -> int { throw std::runtime_error("no\x1bway"); };
  EXPECT_EQ(Read({Part::Identity}).identity->serialNumber.cause.words, "no\\x1bway");
}

TEST_F(EnclosureTest, LibraryIsConstructedWithTheGenerationThatIsTold) {
  int given = -1;
  TheScript().generation = Generation(SMM_SECOND_GENERATION);
  TheScript().construct = [&given] {
    given = GetGlobalConfigValue("SMM_TYPE", -1);
    EndAnswered(0, 14);
  };
  EXPECT_EQ(Read().detection->generation.value.value, SMM_SECOND_GENERATION);
  EXPECT_EQ(given, SMM_SECOND_GENERATION);
  EXPECT_EQ(GetGlobalConfigValue("SMM_TYPE", -1), -1);
}

TEST_F(EnclosureTest, ExceptionOfTheConstructionPasses) {
  TheScript().construct = [] { throw std::runtime_error("out of order"); };
  EXPECT_THROW(Read(), std::runtime_error);
}

TEST_F(EnclosureTest, EachNodeHasItsOwnOutcome) {
  TheScript().nodeStatus = [](unsigned long node, NodeStatus& status) {
    status.permissionState = static_cast<int>(node);
    return node == 2 ? throw std::runtime_error("lost") : StatusCode::Success;
  };
  const std::vector<Query<NodeState>> nodes = *Read({Part::NodeStatus}).nodeStatus;
  ASSERT_THAT(nodes, SizeIs(4));
  EXPECT_EQ(nodes[0].value.permission.value, 1);
  EXPECT_EQ(nodes[1].status, kExceptionStatus);
  EXPECT_EQ(nodes[1].value.permission.absence, Absence::QueryFailed);
  EXPECT_EQ(nodes[3].value.permission.value, 4);
}

TEST_F(EnclosureTest, TwelveNodesAreAskedForTheirPower) {
  TheScript().nodeCount = 12;
  EXPECT_THAT(*Read({Part::NodePower}).nodePower, SizeIs(12));
  EXPECT_THAT(TheScript().asked, Contains("power of node 1"));
  EXPECT_EQ(TheScript().asked.back(), "power of node 12");
}

TEST_F(EnclosureTest, RecordsOfEarlierSlotsStayWhenALaterOneFails) {
  TheScript().fans = [](std::vector<PSUFanSpeed>& fans) {
    fans.push_back({"PSU1", "10", "20", "", "", "Normal"});
    return StatusCode::NotConnected;
  };
  const SlotQuery<PsuFans> fans = *Read({Part::PsuFans}).psuFans;
  EXPECT_EQ(fans.status, StatusCode::NotConnected);
  ASSERT_THAT(fans.value, SizeIs(2));
  EXPECT_EQ(fans.value[0].speedA.value, 10);
  EXPECT_EQ(fans.value[1].speedA.absence, Absence::QueryFailed);
}

TEST_F(EnclosureTest, SlotWithoutARecordIsThereAllTheSame) {
  TheScript().firmware = [](std::vector<PSUFwInfo>& firmware) {
    firmware.push_back({"PSU2", "id", "1.0a", "2", "Power Supply 2"});
    return StatusCode::Success;
  };
  const SlotQuery<PsuFirmware> firmware = *Read({Part::PsuFirmware}).psuFirmware;
  ASSERT_THAT(firmware.value, SizeIs(2));
  EXPECT_EQ(firmware.value[0].version.absence, Absence::SlotUnanswered);
  EXPECT_EQ(firmware.value[1].version.value, "1.0a");
}

TEST_F(EnclosureTest, FlagsOfARefusedPsuStatusAreAbsent) {
  TheScript().psuStatus = PsuSlots(9, StatusCode::UnusableAnswer);
  const SlotQuery<PsuFlags> flags = *Read({Part::PsuStatus}).psuStatus;
  EXPECT_EQ(flags.status, StatusCode::UnusableAnswer);
  ASSERT_THAT(flags.value, SizeIs(9));
  EXPECT_EQ(flags.value[0].present.absence, Absence::QueryFailed);
  EXPECT_EQ(flags.value[8].present.absence, Absence::QueryFailed);
}

TEST_F(EnclosureTest, SelectionTellsWhatWasSentOnTheFirstGeneration) {
  const Query<PsuSelection> selection = SelectPsu(7);
  EXPECT_EQ(selection.status, StatusCode::Success);
  EXPECT_EQ(selection.value.asked, 7);
  EXPECT_EQ(selection.value.sent.value, 3);
  EXPECT_THAT(TheScript().asked,
              ElementsAre("generation", "construction", "PSU status", "selection of PSU 7"));
}

TEST_F(EnclosureTest, SelectionGoesByThePlatformOnTheSecondGeneration) {
  TheScript().generation = Generation(SMM_SECOND_GENERATION);
  TheScript().nodeCount = 12;
  EXPECT_EQ(SelectPsu(9).value.sent.value, 9);
  TheScript().nodeCount = 4;
  const PsuSelection selection = SelectPsu(9).value;
  EXPECT_EQ(selection.sent.absence, Absence::NotReported);
  EXPECT_TRUE(selection.isSent);
}

TEST_F(EnclosureTest, SelectionWithoutAcknowledgementStillTellsWhatWasSent) {
  TheScript().selectPsu = [](int) {
    EndAnswered(0xC1, 0);
    return StatusCode::NoUsableResult;
  };
  const Query<PsuSelection> selection = SelectPsu(2);
  EXPECT_EQ(selection.status, StatusCode::NoUsableResult);
  EXPECT_EQ(selection.cause.completionCode, 0xC1);
  EXPECT_EQ(selection.value.sent.value, 2);
}

TEST_F(EnclosureTest, SelectionWithoutAnswerIsNotKnownToBeSent) {
  TheScript().selectPsu = [](int) {
    LoseConnection(FailureCause::Silence, "no answer");
    return StatusCode::NoUsableResult;
  };
  const PsuSelection selection = SelectPsu(1).value;
  EXPECT_FALSE(selection.isSent);
  EXPECT_EQ(selection.sent.value, std::nullopt);
  EXPECT_EQ(selection.remark, "not known to have been sent: the last attempt got no answer");
}

TEST_F(EnclosureTest, FailuresOfAllKindsHideNoOtherQuery) {
  TheScript().machineType = [](std::string&) { return StatusCode::NoUsableResult; };
  TheScript().chassisPower = [](ChassisPowerCon&) -> int { throw std::bad_alloc(); };
  TheScript().nodePower = [](unsigned long node, ChassisPowerCon&) {
    return node == 3 ? StatusCode::UnusableAnswer : StatusCode::Success;
  };
  TheScript().firmware = [](std::vector<PSUFwInfo>&) { return StatusCode::NotConnected; };
  const Reading reading = Read(kEverything);
  EXPECT_EQ(reading.identity->machineType.status, StatusCode::NoUsableResult);
  EXPECT_EQ(reading.identity->name.status, StatusCode::Success);
  EXPECT_EQ(reading.chassisPower->status, kExceptionStatus);
  EXPECT_EQ(reading.powerCaps->status, StatusCode::Success);
  EXPECT_EQ((*reading.nodePower)[2].status, StatusCode::UnusableAnswer);
  EXPECT_EQ((*reading.nodePower)[3].status, StatusCode::Success);
  EXPECT_EQ(reading.psuFirmware->status, StatusCode::NotConnected);
  EXPECT_EQ(reading.psuStatus->status, StatusCode::Success);
}

}  // namespace
}  // namespace Tavrin
