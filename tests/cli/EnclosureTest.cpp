#include "tools/smm-inventory/Enclosure.h"

#include <gmock/gmock.h>

#include <new>
#include <stdexcept>

#include "platform/GlobalConfig.h"
#include "tests/cli/ScriptedEnclosure.h"

namespace Tavrin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

using EnclosureTest = ScriptedEnclosure;

TEST_F(EnclosureTest, PlatformOfFourNodesIsDetected) {
  Enclosure enclosure = Construct();
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.generation.value, SMM_FIRST_GENERATION);
  EXPECT_EQ(detection.platformId.value, 254);
  EXPECT_EQ(detection.psuSlotCount.value, 2U);
  EXPECT_EQ(detection.nodeCount.value, 4U);
}

TEST_F(EnclosureTest, PlatformOfTwelveNodesIsDetectedWithItsSlots) {
  TheScript().nodeCount = 12;
  TheScript().psuStatus = PsuSlots(9);
  Enclosure enclosure = Construct();
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.platformId.value, 253);
  EXPECT_EQ(detection.psuSlotCount.value, 9U);
  EXPECT_EQ(detection.nodeCount.value, 12U);
}

TEST_F(EnclosureTest, DetectionAsksOnceAndNeverForTheStatusAgain) {
  Enclosure enclosure = Construct();
  enclosure.ReadDetection();
  enclosure.ReadDetection();
  enclosure.ReadPsuStatus();
  EXPECT_THAT(TheScript().asked, ElementsAre("construction", "PSU status"));
}

TEST_F(EnclosureTest, RefusedPsuStatusStillCountsTheSlots) {
  TheScript().nodeCount = 12;
  TheScript().psuStatus = PsuSlots(6, StatusCode::UnusableAnswer);
  Enclosure enclosure = Construct();
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.psuSlotCount.status, StatusCode::Success);
  EXPECT_EQ(detection.psuSlotCount.value, 6U);
}

TEST_F(EnclosureTest, FailedExchangeLeavesTheSlotsUncounted) {
  TheScript().psuStatus = [](std::vector<PSUStatus>&) {
    return LoseConnection(FailureCause::Silence, "no answer");
  };
  Enclosure enclosure = Construct();
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.psuSlotCount.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.psuSlotCount.cause.words, "no answer");
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
    Enclosure enclosure = Construct();
    const Detection detection = enclosure.ReadDetection();
    EXPECT_EQ(detection.generation.status, StatusCode::Success);
    EXPECT_EQ(detection.platformId.status, StatusCode::NoUsableResult);
    EXPECT_EQ(detection.platformId.cause.words, row.words);
    EXPECT_EQ(detection.platformId.cause.completionCode, row.completionCode);
    EXPECT_EQ(detection.psuSlotCount.status, StatusCode::NoUsableResult);
    EXPECT_EQ(detection.nodeCount.status, StatusCode::NoUsableResult);
  }
}

TEST_F(EnclosureTest, SmmThatWasLostBeforeItsStatusWasReadIsAskedOnlyOnce) {
  TheScript().construct = [] { EndUnanswered(FailureCause::Silence, "no answer"); };
  TheScript().psuStatus = [](std::vector<PSUStatus>&) {
    return LoseConnection(FailureCause::Silence, "no answer from it");
  };
  Enclosure enclosure = Construct(SMM_SECOND_GENERATION);
  const Detection detection = enclosure.ReadDetection();
  const Identity identity = enclosure.ReadIdentity();
  const QueryResult<ChassisPowerCon> power = enclosure.ReadChassisPower();
  const QueryResult<PsuSelection> selection = enclosure.SelectPsu(1);
  EXPECT_THAT(TheScript().asked, ElementsAre("construction", "PSU status"));
  EXPECT_EQ(detection.generation.status, StatusCode::Success);
  EXPECT_EQ(detection.platformId.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.psuSlotCount.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.nodeCount.cause.words, "no answer from it");
  EXPECT_EQ(identity.serialNumber.status, StatusCode::NotConnected);
  EXPECT_EQ(identity.serialNumber.cause.words, "no answer from it");
  EXPECT_EQ(power.status, StatusCode::NotConnected);
  EXPECT_EQ(power.cause.missing, "");
  EXPECT_EQ(selection.status, StatusCode::NotConnected);
  EXPECT_FALSE(selection.value.isSent);
  EXPECT_EQ(selection.value.sent, std::nullopt);
  EXPECT_EQ(selection.value.remark, "nothing was sent");
}

TEST_F(EnclosureTest, SmmThatIsGoneIsNotConstructedOnceMore) {
  for (const FailureCause cause : {FailureCause::Silence, FailureCause::Unreachable}) {
    TheScript().asked.clear();
    TheScript().construct = [cause] { EndUnanswered(cause, "nobody there"); };
    Construct(SMM_SECOND_GENERATION);
    EXPECT_THAT(TheScript().asked, ElementsAre("construction"));
  }
}

TEST_F(EnclosureTest, LostConnectionWithAKnownStatusIsTriedAnewByEachQuery) {
  TheScript().machineType = [](std::string&) {
    return LoseConnection(FailureCause::Silence, "no answer");
  };
  Enclosure enclosure = Construct();
  const Identity identity = enclosure.ReadIdentity();
  EXPECT_EQ(identity.machineType.status, StatusCode::NotConnected);
  EXPECT_EQ(identity.serialNumber.status, StatusCode::Success);
}

TEST_F(EnclosureTest, SecondGenerationWithoutAPlatformIsConstructedOnceMore) {
  int constructions = 0;
  TheScript().construct = [&constructions] {
    ++constructions;
    EndAnswered(constructions == 1 ? 0xC0 : 0, 14);
  };
  Enclosure enclosure = Construct(SMM_SECOND_GENERATION);
  EXPECT_EQ(constructions, 2);
  EXPECT_EQ(enclosure.ReadDetection().platformId.status, StatusCode::Success);
  EXPECT_EQ(enclosure.ReadChassisPower().status, StatusCode::Success);
}

TEST_F(EnclosureTest, SecondGenerationWithoutAPlatformIsNotAskedWhatDependsOnIt) {
  RefuseStatus();
  Enclosure enclosure = Construct(SMM_SECOND_GENERATION);
  const QueryResult<ChassisPowerCon> power = enclosure.ReadChassisPower();
  const QueryResult<ChassisPowerCap> caps = enclosure.ReadPowerCaps();
  const QueryResult<PsuSelection> selection = enclosure.SelectPsu(3);
  EXPECT_THAT(TheScript().asked, ElementsAre("construction", "construction"));
  EXPECT_EQ(power.status, StatusCode::NoUsableResult);
  EXPECT_EQ(power.cause.missing, "platform");
  EXPECT_EQ(power.cause.completionCode, 0xC1);
  EXPECT_EQ(caps.status, StatusCode::NoUsableResult);
  EXPECT_EQ(selection.status, StatusCode::NoUsableResult);
  EXPECT_EQ(selection.cause.missing, "platform");
  EXPECT_FALSE(selection.value.isSent);
  EXPECT_EQ(selection.value.remark, "nothing was sent");
}

TEST_F(EnclosureTest, SecondGenerationWithoutAPlatformIsAskedTheRest) {
  RefuseStatus();
  Enclosure enclosure = Construct(SMM_SECOND_GENERATION);
  TheScript().asked.clear();
  EXPECT_THAT(enclosure.ReadNodePower(), SizeIs(4));
  EXPECT_EQ(enclosure.ReadPsuFans().status, StatusCode::Success);
  EXPECT_EQ(enclosure.SelectPsu(2).value.sent, 2);
  EXPECT_THAT(TheScript().asked,
              ElementsAre("power of node 1", "power of node 2", "power of node 3",
                          "power of node 4", "fans", "selection of PSU 2"));
}

TEST_F(EnclosureTest, FirstGenerationNeedsNoPlatform) {
  RefuseStatus();
  Enclosure enclosure = Construct();
  EXPECT_EQ(enclosure.ReadChassisPower().status, StatusCode::Success);
  EXPECT_EQ(enclosure.ReadPowerCaps().status, StatusCode::Success);
  EXPECT_EQ(enclosure.SelectPsu(3).value.sent, 3);
  EXPECT_THAT(TheScript().asked,
              ElementsAre("construction", "chassis power", "power caps", "selection of PSU 3"));
}

struct Refused {
  FailureCause cause;
  std::string words;
};

TEST_F(EnclosureTest, RefusedLoginEndsEveryFurtherOne) {
  const std::vector<Refused> table = {{FailureCause::UserNameRefused, "unknown user"},
                                      {FailureCause::PasswordRefused, "wrong password"}};
  for (const Refused& row : table) {
    SCOPED_TRACE(row.words);
    guard_ = LoginGuard();
    TheScript().asked.clear();
    TheScript().machineType = [&row](std::string&) { return LoseConnection(row.cause, row.words); };
    Enclosure enclosure = Construct(SMM_SECOND_GENERATION);
    const Identity identity = enclosure.ReadIdentity();
    EXPECT_THAT(TheScript().asked, ElementsAre("construction", "machine type"));
    EXPECT_EQ(identity.name.status, StatusCode::NotConnected);
    EXPECT_EQ(identity.name.cause.kind, row.cause);
    EXPECT_EQ(identity.name.cause.words, row.words);
    EXPECT_EQ(GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 3), 0);
    EXPECT_EQ(enclosure.ReadChassisPower().status, StatusCode::NotConnected);
  }
}

TEST_F(EnclosureTest, OtherFailureOfTheLoginLetsTheNextOneTry) {
  TheScript().machineType = [](std::string&) {
    return LoseConnection(FailureCause::PrivilegeRefused, "not that level");
  };
  Enclosure enclosure = Construct();
  EXPECT_EQ(enclosure.ReadIdentity().serialNumber.status, StatusCode::Success);
  EXPECT_EQ(GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 0), 3);
}

TEST_F(EnclosureTest, RefusedLoginInTheMiddleOfTheConstructionIsTheLast) {
  int attemptsAllowed = -1;
  TheScript().construct = [&attemptsAllowed] {
    WriteLine(3, kLibrary, "Try to get SMM status, retry 1 time");
    LoseConnection(FailureCause::PasswordRefused, "wrong password");
    attemptsAllowed = GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 3);
    WriteLine(3, kLibrary, "Try to get SMM status, retry 2 times");
    EndUnanswered(FailureCause::NoAttempt, "");
  };
  Enclosure enclosure = Construct(SMM_SECOND_GENERATION);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(attemptsAllowed, 0);
  EXPECT_THAT(TheScript().asked, ElementsAre("construction"));
  EXPECT_EQ(detection.generation.status, StatusCode::Success);
  EXPECT_EQ(detection.platformId.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.platformId.cause.words, "wrong password");
  EXPECT_THAT(out_.str(), Not(HasSubstr("still trying")));
}

TEST_F(EnclosureTest, RefusedLoginInTheMiddleOfTheSelectionIsItsCause) {
  TheScript().selectPsu = [](int) {
    LoseConnection(FailureCause::PasswordRefused, "wrong password");
    EndUnanswered(FailureCause::NoAttempt, "");
    return StatusCode::NoUsableResult;
  };
  Enclosure enclosure = Construct();
  const QueryResult<PsuSelection> selection = enclosure.SelectPsu(1);
  EXPECT_EQ(selection.cause.words, "wrong password");
  EXPECT_EQ(selection.value.sent, std::nullopt);
}

TEST_F(EnclosureTest, FailedQueryDoesNotHideTheOthers) {
  TheScript().machineType = [](std::string&) {
    EndAnswered(0xC1, 0);
    return StatusCode::UnusableAnswer;
  };
  TheScript().serialNumber = [](std::string& text) { return Give(text, std::string("J123")); };
  Enclosure enclosure = Construct();
  const Identity identity = enclosure.ReadIdentity();
  EXPECT_EQ(identity.machineType.status, StatusCode::UnusableAnswer);
  EXPECT_EQ(identity.machineType.cause.completionCode, 0xC1);
  EXPECT_EQ(identity.serialNumber.value, "J123");
  EXPECT_EQ(identity.serialNumber.cause.completionCode, 0);
  EXPECT_EQ(identity.serialNumber.cause.words, "");
}

TEST_F(EnclosureTest, ShortAnswerThatThrowsIsToldInWords) {
  TheScript().machineType = [](std::string&) -> int {
    EndAnswered(0, 1);
    throw std::bad_alloc();
  };
  Enclosure enclosure = Construct();
  const Identity identity = enclosure.ReadIdentity();
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
  Enclosure enclosure = Construct();
  const Identity identity = enclosure.ReadIdentity();
  EXPECT_EQ(identity.machineType.cause.completionCode, 0xD4);
  EXPECT_THAT(identity.machineType.cause.words, Not(HasSubstr("memory")));
  EXPECT_EQ(identity.name.cause.kind, FailureCause::FellSilent);
  EXPECT_EQ(identity.name.cause.words, "no answer any more");
}

TEST_F(EnclosureTest, OtherExceptionIsToldInItsOwnWordsEscaped) {
  TheScript().serialNumber = [](std::string&) -> int { throw std::runtime_error("no\x1bway"); };
  Enclosure enclosure = Construct();
  EXPECT_EQ(enclosure.ReadIdentity().serialNumber.cause.words, "no\\x1bway");
}

TEST_F(EnclosureTest, LibraryIsConstructedWithTheGenerationThatIsShown) {
  int given = kDetect;
  TheScript().construct = [&given] {
    given = GetGlobalConfigValue("SMM_TYPE", kDetect);
    EndAnswered(0, 14);
  };
  Enclosure enclosure = Construct(SMM_SECOND_GENERATION);
  EXPECT_EQ(given, SMM_SECOND_GENERATION);
  EXPECT_EQ(enclosure.ReadDetection().generation.value, SMM_SECOND_GENERATION);
}

TEST_F(EnclosureTest, FailureDuringTheConstructionIsComplainedAboutOnce) {
  TheScript().construct = [] {
    LoseConnection(FailureCause::Silence, "no answer");
    LoseConnection(FailureCause::Silence, "no answer");
    WriteLine(3, kLibrary, "Try to get SMM status, retry 6 times");
  };
  Enclosure enclosure = Construct();
  EXPECT_EQ(out_.str(),
            "no answer; still trying\n"
            "reading the SMM's status: attempt 6 of 6, 3 seconds apart ...\n");
}

TEST_F(EnclosureTest, ExceptionOfTheConstructionPasses) {
  TheScript().construct = [] { throw std::runtime_error("out of order"); };
  EXPECT_THROW(Construct(), std::runtime_error);
}

TEST_F(EnclosureTest, EachNodeHasItsOwnResult) {
  TheScript().nodeStatus = [](unsigned long node, NodeStatus& status) {
    status.permissionState = static_cast<int>(node);
    return node == 2 ? throw std::runtime_error("lost") : StatusCode::Success;
  };
  Enclosure enclosure = Construct();
  const std::vector<QueryResult<NodeStatus>> nodes = enclosure.ReadNodeStatus();
  ASSERT_THAT(nodes, SizeIs(4));
  EXPECT_EQ(nodes[0].value.permissionState, 1);
  EXPECT_EQ(nodes[1].status, kExceptionStatus);
  EXPECT_EQ(nodes[3].value.permissionState, 4);
}

TEST_F(EnclosureTest, TwelveNodesAreAskedForTheirPower) {
  TheScript().nodeCount = 12;
  Enclosure enclosure = Construct();
  TheScript().asked.clear();
  EXPECT_THAT(enclosure.ReadNodePower(), SizeIs(12));
  EXPECT_EQ(TheScript().asked.front(), "power of node 1");
  EXPECT_EQ(TheScript().asked.back(), "power of node 12");
}

TEST_F(EnclosureTest, RecordsOfEarlierSlotsStayWhenALaterOneFails) {
  TheScript().fans = [](std::vector<PSUFanSpeed>& fans) {
    fans.emplace_back();
    return StatusCode::NotConnected;
  };
  Enclosure enclosure = Construct();
  const QueryResult<std::vector<PSUFanSpeed>> fans = enclosure.ReadPsuFans();
  EXPECT_EQ(fans.status, StatusCode::NotConnected);
  EXPECT_THAT(fans.value, SizeIs(1));
}

TEST_F(EnclosureTest, SelectionTellsWhatWasSentOnTheFirstGeneration) {
  Enclosure enclosure = Construct();
  const QueryResult<PsuSelection> selection = enclosure.SelectPsu(7);
  EXPECT_EQ(selection.status, StatusCode::Success);
  EXPECT_EQ(selection.value.asked, 7);
  EXPECT_EQ(selection.value.sent, 3);
  EXPECT_THAT(TheScript().asked, ElementsAre("construction", "selection of PSU 7"));
}

TEST_F(EnclosureTest, SelectionGoesByThePlatformOnTheSecondGeneration) {
  TheScript().nodeCount = 12;
  Enclosure enclosure = Construct(SMM_SECOND_GENERATION);
  EXPECT_EQ(enclosure.SelectPsu(9).value.sent, 9);
  TheScript().nodeCount = 4;
  const PsuSelection selection = enclosure.SelectPsu(9).value;
  EXPECT_EQ(selection.sent, std::nullopt);
  EXPECT_TRUE(selection.isSent);
}

TEST_F(EnclosureTest, SelectionWithoutAcknowledgementStillTellsWhatWasSent) {
  TheScript().selectPsu = [](int) {
    WriteLine(3, kLibrary, "Try to get PSU status, start retry 6 times");
    EndAnswered(0xC1, 0);
    return StatusCode::NoUsableResult;
  };
  Enclosure enclosure = Construct();
  const QueryResult<PsuSelection> selection = enclosure.SelectPsu(2);
  EXPECT_EQ(selection.status, StatusCode::NoUsableResult);
  EXPECT_EQ(selection.cause.completionCode, 0xC1);
  EXPECT_EQ(selection.value.sent, 2);
  EXPECT_THAT(out_.str(), HasSubstr("selecting the PSU: attempt 6 of 6, 3 seconds apart"));
}

TEST_F(EnclosureTest, SelectionWithoutAnswerIsNotKnownToBeSent) {
  TheScript().selectPsu = [](int) {
    LoseConnection(FailureCause::Silence, "no answer");
    return StatusCode::NoUsableResult;
  };
  Enclosure enclosure = Construct();
  const PsuSelection selection = enclosure.SelectPsu(1).value;
  EXPECT_FALSE(selection.isSent);
  EXPECT_EQ(selection.sent, std::nullopt);
  EXPECT_EQ(selection.remark, "not known to have been sent: the last attempt got no answer");
}

}  // namespace
}  // namespace Tavrin
