#include "reading/Enclosure.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "platform/GlobalConfig.h"
#include "platform/standalone/globalconfig/ThreadConfig.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "tests/reading/ScriptedEnclosure.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::Exchange;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

using EnclosureTest = ScriptedEnclosure;

/// What a pass begins with when the first construction told no platform, and another was made.
const Steps kBeginningInVain = Steps(kStatusReads, kStatus) + kBeginning;

Steps EachNode(const std::string& operation, int nodes) {
  Steps steps;
  for (int node = 1; node <= nodes; ++node) {
    steps.push_back(operation + ' ' + std::to_string(node));
  }
  return steps;
}

TEST_F(EnclosureTest, PlatformOfFourNodesIsDetected) {
  const Detection detection = *Read().detection;
  EXPECT_EQ(detection.generation.value.value, SMM_FIRST_GENERATION);
  EXPECT_EQ(detection.platformId.value.value, 254);
  EXPECT_EQ(detection.psuSlotCount.value.value, 2);
  EXPECT_EQ(detection.nodeCount.value.value, 4);
}

TEST_F(EnclosureTest, PlatformOfTwelveNodesIsDetectedWithItsSlots) {
  smm_.generation = SMM_SECOND_GENERATION;
  const Detection detection = *Read().detection;
  EXPECT_EQ(detection.platformId.value.value, 253);
  EXPECT_EQ(detection.psuSlotCount.value.value, 9);
  EXPECT_EQ(detection.nodeCount.value.value, 12);
}

TEST_F(EnclosureTest, StatusOfThePsusIsAskedForOnceInAPass) {
  Read({Part::PsuStatus, Part::PsuFans, Part::PsuFirmware});
  EXPECT_EQ(smm_.Asked(), kBeginning + Steps(2, "GetPSUFanSpeed") + Steps(6, "GetPSUFwInfo"));
}

TEST_F(EnclosureTest, RefusedPsuStatusStillCountsTheSlots) {
  smm_.generation = SMM_SECOND_GENERATION;
  smm_.Change("GetPSUStatus", Refuses());
  const Detection detection = *Read().detection;
  EXPECT_EQ(detection.psuSlotCount.status, StatusCode::Success);
  EXPECT_EQ(detection.psuSlotCount.value.value, 9);
}

TEST_F(EnclosureTest, FailedExchangeLeavesTheSlotsUncounted) {
  smm_.Lose(kAfterConstruction, FailureCause::Silence, "no answer");
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
    smm_.ChangeConstruction(Gives(Bytes(row.length), row.completionCode));
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

TEST_F(EnclosureTest, StatusWithoutAnAnswerTellsNothingWhateverStandsInItsPlace) {
  smm_.ChangeConstruction([](Exchange& exchange) {
    exchange.sendResult = Standalone::ConnectResult::Failed;
    exchange.cause = FailureCause::FellSilent;
  });
  EXPECT_EQ(Read().detection->platformId.status, StatusCode::NoUsableResult);
}

TEST_F(EnclosureTest, SmmThatWasLostBeforeItsStatusWasReadIsAskedOnlyOnce) {
  smm_.generation = SMM_SECOND_GENERATION;
  smm_.Lose(kAfterDetection, FailureCause::Silence, "no answer from it");
  const Reading reading = Read({Part::Identity, Part::ChassisPower});
  EXPECT_EQ(smm_.Asked(), Steps{kStatus} + Steps(kStatusReads + 1, kInVain));
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
  smm_.Lose(kAfterDetection, FailureCause::Silence, "no answer");
  const Query<PsuSelection> selection = SelectPsu(1);
  EXPECT_EQ(selection.status, StatusCode::NotConnected);
  EXPECT_EQ(selection.value.asked, 1);
  EXPECT_FALSE(selection.value.isSent);
  EXPECT_EQ(selection.value.sent.value, std::nullopt);
  EXPECT_EQ(selection.duration.count(), 0);
  EXPECT_EQ(selection.value.sent.absence, Absence::QueryFailed);
  EXPECT_EQ(selection.value.remark, "nothing was sent");
  EXPECT_EQ(smm_.Asked(), Steps{kStatus} + Steps(kStatusReads + 1, kInVain));
}

TEST_F(EnclosureTest, SmmThatIsGoneIsNotConstructedOnceMore) {
  smm_.generation = SMM_SECOND_GENERATION;
  for (const FailureCause cause : {FailureCause::Silence, FailureCause::Unreachable}) {
    smm_.Lose(kAfterDetection, cause, "nobody there", kAfterConstruction - kAfterDetection);
    Read();
    EXPECT_EQ(smm_.Asked(), Steps{kStatus} + Steps(kStatusReads, kInVain) + Steps{"GetPSUStatus"});
  }
}

TEST_F(EnclosureTest, LostConnectionWithAKnownStatusIsTriedAnewByEachQuery) {
  smm_.Lose(kAfterBeginning, FailureCause::Silence, "no answer", 1);
  const Identity identity = *Read({Part::Identity}).identity;
  EXPECT_EQ(identity.machineType.status, StatusCode::NotConnected);
  EXPECT_EQ(identity.serialNumber.status, StatusCode::Success);
}

TEST_F(EnclosureTest, SecondGenerationWithoutAPlatformIsConstructedOnceMore) {
  std::size_t statusReads = 0;
  smm_.generation = SMM_SECOND_GENERATION;
  smm_.ChangeConstruction([&statusReads](Exchange& exchange) {
    exchange.completionCode = ++statusReads <= kStatusReads ? 0xC0 : 0;
  });
  const Reading reading = Read({Part::ChassisPower});
  EXPECT_EQ(statusReads, 2 * kStatusReads);
  EXPECT_EQ(reading.detection->platformId.status, StatusCode::Success);
  EXPECT_EQ(reading.chassisPower->status, StatusCode::Success);
}

TEST_F(EnclosureTest, SecondGenerationWithoutAPlatformIsNotAskedWhatDependsOnIt) {
  smm_.generation = SMM_SECOND_GENERATION;
  smm_.ChangeConstruction(Refuses());
  const Reading reading = Read({Part::ChassisPower, Part::PowerCaps});
  EXPECT_EQ(smm_.Asked(), kBeginningInVain);
  EXPECT_EQ(reading.chassisPower->status, StatusCode::NoUsableResult);
  EXPECT_EQ(reading.chassisPower->cause.missing, "platform");
  EXPECT_EQ(reading.chassisPower->cause.completionCode, 0xC1);
  EXPECT_EQ(reading.chassisPower->askedAt, std::chrono::system_clock::time_point());
  EXPECT_EQ(reading.powerCaps->status, StatusCode::NoUsableResult);
}

TEST_F(EnclosureTest, SecondGenerationWithoutAPlatformIsNotAskedToSelectAHighPsu) {
  smm_.generation = SMM_SECOND_GENERATION;
  smm_.ChangeConstruction(Refuses());
  const Query<PsuSelection> selection = SelectPsu(3);
  EXPECT_EQ(selection.status, StatusCode::NoUsableResult);
  EXPECT_EQ(selection.cause.missing, "platform");
  EXPECT_FALSE(selection.value.isSent);
  EXPECT_EQ(selection.value.remark, "nothing was sent");
  EXPECT_EQ(smm_.Asked(), kBeginningInVain);
}

TEST_F(EnclosureTest, SecondGenerationWithoutAPlatformIsAskedTheRest) {
  smm_.generation = SMM_SECOND_GENERATION;
  smm_.ChangeConstruction(Refuses());
  const Reading reading = Read({Part::NodePower, Part::PsuFans});
  EXPECT_THAT(*reading.nodePower, SizeIs(4));
  EXPECT_EQ(reading.psuFans->status, StatusCode::Success);
  EXPECT_EQ(smm_.Asked(),
            kBeginningInVain + EachNode("GetNodePowerConsumption", 4) + Steps(2, "GetPSUFanSpeed"));
  EXPECT_EQ(SelectPsu(2).value.sent.value, 2);
  EXPECT_EQ(smm_.Asked(), kBeginningInVain + Steps{"SelectPSU 2"});
}

TEST_F(EnclosureTest, FirstGenerationNeedsNoPlatform) {
  smm_.ChangeConstruction(Refuses());
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
    smm_.Lose(kAfterBeginning, row.cause, row.words);
    const Reading reading = Read({Part::Identity, Part::ChassisPower});
    EXPECT_EQ(smm_.Asked(), kBeginning + Steps{kInVain});
    EXPECT_EQ(reading.identity->name.status, StatusCode::NotConnected);
    EXPECT_EQ(reading.identity->name.cause.kind, row.cause);
    EXPECT_EQ(reading.identity->name.cause.words, row.words);
    EXPECT_EQ(reading.chassisPower->status, StatusCode::NotConnected);
  }
}

TEST_F(EnclosureTest, OtherFailureOfTheLoginLetsTheNextOneTry) {
  smm_.Lose(kAfterBeginning, FailureCause::PrivilegeRefused, "not that level", 1);
  int attemptsAllowed = -1;
  smm_.Change("GetSmmSN", [&attemptsAllowed](Exchange&) {
    attemptsAllowed = GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 3);
  });
  EXPECT_EQ(Read({Part::Identity}).identity->serialNumber.status, StatusCode::Success);
  EXPECT_EQ(attemptsAllowed, 3);
}

TEST_F(EnclosureTest, RefusedLoginInTheMiddleOfTheConstructionIsTheLast) {
  smm_.generation = SMM_SECOND_GENERATION;
  smm_.Lose(kAfterDetection, FailureCause::PasswordRefused, "wrong password");
  const Detection detection = *Read().detection;
  EXPECT_THAT(smm_.platform.events, Contains("connect").Times(2));
  EXPECT_EQ(GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 3), 3);
  EXPECT_EQ(smm_.Asked(), Steps{kStatus} + Steps(kStatusReads, kInVain));
  EXPECT_EQ(detection.generation.status, StatusCode::Success);
  EXPECT_EQ(detection.platformId.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.platformId.cause.words, "wrong password");
}

TEST_F(EnclosureTest, RefusalThatTheThreadMetBeforeThePassStopsNothing) {
  smm_.Lose(0, FailureCause::PasswordRefused, "the password of another SMM");
  EXPECT_TRUE(Read().failure);
  smm_.Heal();
  // The detection writes a line about this before it makes an exchange.
  const Standalone::ThreadConfig malformed({{"SMM_TYPE", 7}});
  EXPECT_EQ(Read({Part::Identity}).identity->name.status, StatusCode::Success);
}

TEST_F(EnclosureTest, RefusedLoginInTheMiddleOfTheSelectionIsItsCause) {
  smm_.Lose(kAfterBeginning, FailureCause::PasswordRefused, "wrong password");
  const Query<PsuSelection> selection = SelectPsu(1);
  EXPECT_EQ(selection.cause.words, "wrong password");
  EXPECT_EQ(selection.value.sent.value, std::nullopt);
}

TEST_F(EnclosureTest, FailedQueryDoesNotHideTheOthers) {
  smm_.Change("GetSmmMT", Refuses());
  const Identity identity = *Read({Part::Identity}).identity;
  EXPECT_EQ(identity.machineType.status, StatusCode::UnusableAnswer);
  EXPECT_EQ(identity.machineType.cause.completionCode, 0xC1);
  EXPECT_EQ(identity.machineType.cause.missing, "");
  EXPECT_EQ(identity.machineType.value.absence, Absence::QueryFailed);
  EXPECT_EQ(identity.serialNumber.value.value, "SIM100010001");
  EXPECT_EQ(identity.serialNumber.cause.completionCode, 0);
  EXPECT_EQ(identity.serialNumber.cause.words, "");
}

TEST_F(EnclosureTest, ShortAnswerThatThrowsIsToldInWords) {
  smm_.generation = SMM_SECOND_GENERATION;
  smm_.Change("GetSmmMT", Gives({0x05}));
  const Identity identity = *Read({Part::Identity}).identity;
  EXPECT_EQ(identity.machineType.status, kExceptionStatus);
  EXPECT_EQ(identity.machineType.cause.words,
            "its answer has 1 byte, which is shorter than what leads an answer, or memory ran out");
  EXPECT_EQ(identity.serialNumber.status, StatusCode::Success);
}

TEST_F(EnclosureTest, RefusalAndSilenceThatThrowAreToldAsSuch) {
  smm_.generation = SMM_SECOND_GENERATION;
  smm_.Change("GetSmmMT", Refuses(0xD4));
  smm_.Change("GetSmmName", FallsSilent(FailureCause::FellSilent, "no answer any more"));
  const Identity identity = *Read({Part::Identity}).identity;
  EXPECT_EQ(identity.machineType.status, kExceptionStatus);
  EXPECT_EQ(identity.machineType.cause.completionCode, 0xD4);
  EXPECT_THAT(identity.machineType.cause.words, Not(HasSubstr("memory")));
  EXPECT_EQ(identity.name.status, kExceptionStatus);
  EXPECT_EQ(identity.name.cause.kind, FailureCause::FellSilent);
  EXPECT_EQ(identity.name.cause.words, "no answer any more");
}

TEST_F(EnclosureTest, OtherExceptionIsToldInItsOwnWordsEscaped) {
  smm_.Change("GetSmmSN", Throws(std::runtime_error("no\x1bway")));
  EXPECT_EQ(Read({Part::Identity}).identity->serialNumber.cause.words, "no\\x1bway");
}

TEST_F(EnclosureTest, LibraryIsConstructedWithTheGenerationThatIsTold) {
  int given = -1;
  smm_.generation = SMM_SECOND_GENERATION;
  smm_.ChangeConstruction([&given](Exchange&) { given = GetGlobalConfigValue("SMM_TYPE", -1); });
  EXPECT_EQ(Read().detection->generation.value.value, SMM_SECOND_GENERATION);
  EXPECT_EQ(given, SMM_SECOND_GENERATION);
  EXPECT_EQ(GetGlobalConfigValue("SMM_TYPE", -1), -1);
}

TEST_F(EnclosureTest, ExceptionOfTheConstructionPasses) {
  smm_.ChangeConstruction(Throws(std::runtime_error("out of order")));
  EXPECT_THROW(Read(), std::runtime_error);
}

TEST_F(EnclosureTest, EachNodeHasItsOwnOutcome) {
  smm_.Change("GetNodeStatus", [](Exchange& exchange) {
    exchange.response.at(3) = exchange.data.at(0);
    if (exchange.data.at(0) == 2) {
      throw std::runtime_error("lost");
    }
  });
  const std::vector<Query<NodeState>> nodes = *Read({Part::NodeStatus}).nodeStatus;
  ASSERT_THAT(nodes, SizeIs(4));
  EXPECT_EQ(nodes[0].value.permission.value, 1);
  EXPECT_EQ(nodes[1].status, kExceptionStatus);
  EXPECT_EQ(nodes[1].value.permission.absence, Absence::QueryFailed);
  EXPECT_EQ(nodes[3].value.permission.value, 4);
}

TEST_F(EnclosureTest, TwelveNodesAreAskedForTheirPower) {
  smm_.generation = SMM_SECOND_GENERATION;
  EXPECT_THAT(*Read({Part::NodePower}).nodePower, SizeIs(12));
  EXPECT_EQ(smm_.Asked(), kBeginning + EachNode("GetNodePowerConsumption", 12));
}

TEST_F(EnclosureTest, RecordsOfEarlierSlotsStayWhenALaterOneFails) {
  smm_.Lose(kAfterBeginning + 1, FailureCause::Silence, "no answer");
  const SlotQuery<PsuFans> fans = *Read({Part::PsuFans}).psuFans;
  EXPECT_EQ(fans.status, StatusCode::NotConnected);
  ASSERT_THAT(fans.value, SizeIs(2));
  EXPECT_EQ(fans.value[0].speedA.value, 5490);
  EXPECT_EQ(fans.value[1].speedA.absence, Absence::QueryFailed);
}

TEST_F(EnclosureTest, SlotWithoutARecordIsThereAllTheSame) {
  constexpr std::uint8_t kBusOfTheFirstSlot = 0x0F;
  smm_.Change("GetPSUFwInfo", [](Exchange& exchange) {
    exchange.completionCode = exchange.data.at(0) == kBusOfTheFirstSlot ? 0xC1 : 0;
  });
  const SlotQuery<PsuFirmware> firmware = *Read({Part::PsuFirmware}).psuFirmware;
  ASSERT_THAT(firmware.value, SizeIs(2));
  EXPECT_EQ(firmware.value[0].version.absence, Absence::SlotUnanswered);
  EXPECT_EQ(firmware.value[1].version.value, "1.08");
}

TEST_F(EnclosureTest, FlagsOfARefusedPsuStatusAreAbsent) {
  smm_.generation = SMM_SECOND_GENERATION;
  smm_.Change("GetPSUStatus", Refuses());
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
  EXPECT_EQ(smm_.Asked(), kBeginning + Steps{"SelectPSU 3"});
}

TEST_F(EnclosureTest, SelectionGoesByThePlatformOnTheSecondGeneration) {
  smm_.generation = SMM_SECOND_GENERATION;
  EXPECT_EQ(SelectPsu(9).value.sent.value, 9);
  smm_.ChangeConstruction(Gives(Double::StatusAnswer(0xFE, 0x00)));
  const PsuSelection selection = SelectPsu(9).value;
  EXPECT_EQ(selection.sent.absence, Absence::NotReported);
  EXPECT_TRUE(selection.isSent);
}

TEST_F(EnclosureTest, SelectionWithoutAcknowledgementStillTellsWhatWasSent) {
  smm_.Change("SelectPSU", Refuses());
  const Query<PsuSelection> selection = SelectPsu(2);
  EXPECT_EQ(selection.status, StatusCode::NoUsableResult);
  EXPECT_EQ(selection.cause.completionCode, 0xC1);
  EXPECT_EQ(selection.value.sent.value, 2);
}

TEST_F(EnclosureTest, SelectionWithoutAnswerIsNotKnownToBeSent) {
  smm_.Lose(kAfterBeginning, FailureCause::Silence, "no answer");
  const PsuSelection selection = SelectPsu(1).value;
  EXPECT_FALSE(selection.isSent);
  EXPECT_EQ(selection.sent.value, std::nullopt);
  EXPECT_EQ(selection.remark, "not known to have been sent: the last attempt got no answer");
}

TEST_F(EnclosureTest, FailuresOfAllKindsHideNoOtherQuery) {
  smm_.Change("GetPSUFanSpeed", [this](Exchange& exchange) {
    if (exchange.data.at(0) == 2) {
      smm_.Lose(smm_.platform.exchanges.size(), FailureCause::Silence, "no answer");
    }
  });
  smm_.Change("GetSmmMT", Gives({' ', ' ', ' ', ' '}));
  smm_.Change("GetChassisPowerConsumption", Throws(std::runtime_error("out of order")));
  smm_.Change("GetNodePowerConsumption", [](Exchange& exchange) {
    exchange.completionCode = exchange.data.at(0) == 3 ? 0xC1 : 0;
  });
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
