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
using testing::SizeIs;

using EnclosureTest = ScriptedEnclosure;

TEST_F(EnclosureTest, PasswordIsWipedOnceHandedOver) {
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(TheScript().password, "sesame");
  EXPECT_EQ(info_.password, "");
}

TEST_F(EnclosureTest, PlatformOfFourNodesIsDetected) {
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.generation.value, SMM_FIRST_GENERATION);
  EXPECT_EQ(detection.platformId.value, 254);
  EXPECT_EQ(detection.psuSlotCount.value, 2U);
  EXPECT_EQ(detection.nodeCount.value, 4U);
}

TEST_F(EnclosureTest, PlatformOfTwelveNodesIsDetectedWithItsSlots) {
  TheScript().nodeCount = 12;
  TheScript().psuStatus = PsuSlots(9);
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.platformId.value, 253);
  EXPECT_EQ(detection.psuSlotCount.value, 9U);
  EXPECT_EQ(detection.nodeCount.value, 12U);
}

TEST_F(EnclosureTest, DetectionAsksOnceAndNeverForTheStatusAgain) {
  Enclosure enclosure(info_, progress_);
  enclosure.ReadDetection();
  enclosure.ReadDetection();
  enclosure.ReadPsuStatus();
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "construction", "PSU status"));
}

TEST_F(EnclosureTest, RefusedPsuStatusStillCountsTheSlots) {
  TheScript().nodeCount = 12;
  TheScript().psuStatus = PsuSlots(6, StatusCode::UnusableAnswer);
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.psuSlotCount.status, StatusCode::Success);
  EXPECT_EQ(detection.psuSlotCount.value, 6U);
}

TEST_F(EnclosureTest, FailedExchangeLeavesTheSlotsUncounted) {
  TheScript().psuStatus = [](std::vector<PSUStatus>&) {
    WriteLine(2, kClient, "gone");
    return StatusCode::NotConnected;
  };
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.psuSlotCount.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.psuSlotCount.cause, "gone");
  EXPECT_EQ(detection.nodeCount.status, StatusCode::Success);
}

TEST_F(EnclosureTest, WarningAboutTwelveNodesDoesNotHideThem) {
  TheScript().nodeCount = 12;
  TheScript().construct = [] { WriteLine(2, kLibrary, "set default value 6"); };
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(enclosure.ReadDetection().nodeCount.value, 12U);
}

TEST_F(EnclosureTest, FailureBeforeTheLastAttemptIsForgotten) {
  TheScript().construct = [] {
    WriteLine(2, kClient, "no answer");
    WriteLine(3, kLibrary, "Try to get SMM status, retry 6 times");
  };
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(enclosure.ReadDetection().nodeCount.status, StatusCode::Success);
}

TEST_F(EnclosureTest, FailedConstructionLeavesWhatTheLibraryAssumesUnread) {
  FailConstruction();
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.generation.status, StatusCode::Success);
  EXPECT_EQ(detection.platformId.status, StatusCode::NoUsableResult);
  EXPECT_EQ(detection.platformId.cause, "no answer");
  EXPECT_EQ(detection.psuSlotCount.status, StatusCode::NoUsableResult);
  EXPECT_EQ(detection.nodeCount.status, StatusCode::NoUsableResult);
}

TEST_F(EnclosureTest, UnreachableSmmIsAskedOnlyOnce) {
  FailConstruction();
  TheScript().generation = [](SMMIype&) { return 3; };
  TheScript().psuStatus = [](std::vector<PSUStatus>&) {
    WriteLine(2, kClient, "connect failed: no answer from it");
    return StatusCode::NotConnected;
  };
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  const Identity identity = enclosure.ReadIdentity();
  const QueryResult<PsuSelection> selection = enclosure.SelectPsu(1);
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "construction", "PSU status"));
  EXPECT_EQ(detection.generation.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.platformId.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.psuSlotCount.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.nodeCount.cause, "connect failed: no answer from it");
  EXPECT_EQ(identity.serialNumber.status, StatusCode::NotConnected);
  EXPECT_EQ(identity.serialNumber.cause, "connect failed: no answer from it");
  EXPECT_EQ(selection.status, StatusCode::NotConnected);
  EXPECT_EQ(selection.value.sent, std::nullopt);
  EXPECT_EQ(selection.value.remark, "not sent: no connection could be opened");
}

TEST_F(EnclosureTest, FailedQueryDoesNotHideTheOthers) {
  TheScript().machineType = [](std::string&) {
    WriteLine(1, kLibrary, "Get smm mt failed with error code:193");
    return StatusCode::UnusableAnswer;
  };
  TheScript().serialNumber = [](std::string& text) { return Give(text, std::string("J123")); };
  Enclosure enclosure(info_, progress_);
  const Identity identity = enclosure.ReadIdentity();
  EXPECT_EQ(identity.machineType.status, StatusCode::UnusableAnswer);
  EXPECT_EQ(identity.machineType.cause, "Get smm mt failed with error code:193");
  EXPECT_EQ(identity.serialNumber.value, "J123");
  EXPECT_EQ(identity.serialNumber.cause, "");
}

TEST_F(EnclosureTest, ShortAnswerThatThrowsIsToldInWords) {
  TheScript().machineType = [](std::string&) -> int { throw std::bad_alloc(); };
  Enclosure enclosure(info_, progress_);
  const Identity identity = enclosure.ReadIdentity();
  EXPECT_EQ(identity.machineType.status, kExceptionStatus);
  EXPECT_EQ(
      identity.machineType.cause,
      "the answer was shorter than the bytes that lead it, as a refusal is, or memory ran out");
  EXPECT_EQ(identity.serialNumber.status, StatusCode::Success);
}

TEST_F(EnclosureTest, OtherExceptionIsToldInItsOwnWordsEscaped) {
  TheScript().serialNumber = [](std::string&) -> int { throw std::runtime_error("no\x1bway"); };
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(enclosure.ReadIdentity().serialNumber.cause, "no\\x1bway");
}

TEST_F(EnclosureTest, LibraryIsConstructedWithTheGenerationThatIsShown) {
  int given = kDetect;
  TheScript().generation = [](SMMIype& type) { return Give(type, SMM_SECOND_GENERATION); };
  TheScript().construct = [&given] { given = GetGlobalConfigValue("SMM_TYPE", kDetect); };
  Enclosure enclosure(info_, progress_);
  // A second detection could give something else.
  TheScript().generation = [](SMMIype& type) { return Give(type, SMM_FIRST_GENERATION); };
  EXPECT_EQ(given, SMM_SECOND_GENERATION);
  EXPECT_EQ(enclosure.ReadDetection().generation.value, SMM_SECOND_GENERATION);
}

TEST_F(EnclosureTest, UndetectedGenerationIsAFailedFieldAndLeftToTheLibrary) {
  int given = 7;
  TheScript().generation = [](SMMIype&) {
    WriteLine(2, kClient, "no answer");
    return 3;
  };
  TheScript().construct = [&given] { given = GetGlobalConfigValue("SMM_TYPE", kDetect); };
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(given, kDetect);
  EXPECT_EQ(detection.generation.status, StatusCode::NoUsableResult);
  EXPECT_EQ(detection.generation.cause,
            "no answer; the library tried again by itself and does not tell with what result");
  EXPECT_EQ(detection.nodeCount.status, StatusCode::Success);
}

TEST_F(EnclosureTest, ExceptionOfTheDetectionIsAFailedField) {
  TheScript().generation = [](SMMIype&) -> int { throw std::runtime_error("out of order"); };
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.generation.status, kExceptionStatus);
  EXPECT_THAT(detection.generation.cause, HasSubstr("out of order; the library tried again"));
  EXPECT_EQ(detection.nodeCount.value, 4U);
}

TEST_F(EnclosureTest, HostThatIsSilentDuringBothStepsIsComplainedAboutOnce) {
  TheScript().generation = [](SMMIype&) {
    WriteLine(2, kClient, "no answer");
    return 3;
  };
  FailConstruction();
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(out_.str(),
            "no answer; still trying\n"
            "reading the SMM's status: attempt 6 of 6, 3 seconds apart ...\n");
}

TEST_F(EnclosureTest, ExceptionOfTheConstructionPassesAndEndsTheProgress) {
  TheScript().construct = [] {
    WriteLine(3, kLibrary, "Try to get SMM status, retry 1 time");
    throw std::runtime_error("out of order");
  };
  EXPECT_THROW(Enclosure(info_, progress_), std::runtime_error);
  EXPECT_EQ(info_.password, "");
}

TEST_F(EnclosureTest, EachNodeHasItsOwnResult) {
  TheScript().nodeStatus = [](unsigned long node, NodeStatus& status) {
    status.permissionState = static_cast<int>(node);
    return node == 2 ? throw std::runtime_error("lost") : StatusCode::Success;
  };
  Enclosure enclosure(info_, progress_);
  const std::vector<QueryResult<NodeStatus>> nodes = enclosure.ReadNodeStatus();
  ASSERT_THAT(nodes, SizeIs(4));
  EXPECT_EQ(nodes[0].value.permissionState, 1);
  EXPECT_EQ(nodes[1].status, kExceptionStatus);
  EXPECT_EQ(nodes[3].value.permissionState, 4);
}

TEST_F(EnclosureTest, TwelveNodesAreAskedForTheirPower) {
  TheScript().nodeCount = 12;
  Enclosure enclosure(info_, progress_);
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
  Enclosure enclosure(info_, progress_);
  const QueryResult<std::vector<PSUFanSpeed>> fans = enclosure.ReadPsuFans();
  EXPECT_EQ(fans.status, StatusCode::NotConnected);
  EXPECT_THAT(fans.value, SizeIs(1));
}

TEST_F(EnclosureTest, SelectionTellsWhatWasSentOnTheFirstGeneration) {
  Enclosure enclosure(info_, progress_);
  const QueryResult<PsuSelection> selection = enclosure.SelectPsu(7);
  EXPECT_EQ(selection.status, StatusCode::Success);
  EXPECT_EQ(selection.value.asked, 7);
  EXPECT_EQ(selection.value.sent, 3);
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "construction", "selection of PSU 7"));
}

TEST_F(EnclosureTest, SelectionGoesByThePlatformOnTheSecondGeneration) {
  TheScript().generation = [](SMMIype& type) { return Give(type, SMM_SECOND_GENERATION); };
  TheScript().nodeCount = 12;
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(enclosure.SelectPsu(9).value.sent, 9);
  TheScript().nodeCount = 4;
  EXPECT_EQ(enclosure.SelectPsu(9).value.sent, std::nullopt);
}

TEST_F(EnclosureTest, SelectionWithoutAcknowledgementStillTellsWhatWasSent) {
  TheScript().selectPsu = [](int) {
    WriteLine(3, kLibrary, "Try to get PSU status, start retry 6 times");
    WriteLine(2, kLibrary, "response is empty or completionCode: \xc1");
    return StatusCode::NoUsableResult;
  };
  Enclosure enclosure(info_, progress_);
  const QueryResult<PsuSelection> selection = enclosure.SelectPsu(2);
  EXPECT_EQ(selection.status, StatusCode::NoUsableResult);
  EXPECT_EQ(selection.cause, "response is empty or completionCode: \\xc1");
  EXPECT_EQ(selection.value.sent, 2);
  EXPECT_THAT(out_.str(), HasSubstr("selecting the PSU: attempt 6 of 6, 3 seconds apart"));
}

TEST_F(EnclosureTest, SelectionThatNeverGotAConnectionSentNothing) {
  TheScript().selectPsu = [](int) {
    WriteLine(2, kClient, "connect failed: no answer");
    return StatusCode::NoUsableResult;
  };
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(enclosure.SelectPsu(1).value.sent, std::nullopt);
}

TEST_F(EnclosureTest, SelectionBetweenThePlatformsLimitsIsNotKnownWithoutAStatus) {
  FailConstruction();
  TheScript().generation = [](SMMIype& type) { return Give(type, SMM_SECOND_GENERATION); };
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(enclosure.SelectPsu(2).value.sent, 2);
  EXPECT_EQ(enclosure.SelectPsu(3).value.sent, std::nullopt);
  EXPECT_EQ(enclosure.SelectPsu(3).value.remark, "not known: the SMM's status was not read");
}

TEST_F(EnclosureTest, SelectionByAnUndetectedGenerationIsSentAllTheSame) {
  TheScript().generation = [](SMMIype&) { return 3; };
  Enclosure enclosure(info_, progress_);
  const QueryResult<PsuSelection> selection = enclosure.SelectPsu(1);
  EXPECT_EQ(selection.status, StatusCode::Success);
  EXPECT_EQ(selection.value.sent, std::nullopt);
  EXPECT_THAT(selection.value.remark, HasSubstr("not known"));
}

}  // namespace
}  // namespace Tavrin
