#include "tools/smm-inventory/Enclosure.h"

#include <gmock/gmock.h>

#include <new>
#include <sstream>
#include <stdexcept>

#include "platform/Log.h"
#include "tests/cli/InventoryDouble.h"

namespace Tavrin {
namespace {

using testing::ElementsAre;

constexpr const char* kLibrary = "module/smm/smm_inventory/impl/SMMInventoryImpl";
constexpr const char* kClient = "platform/standalone/ipmi_client/IpmiClient";

void WriteLine(unsigned int level, const std::string& source, const std::string& text) {
  Log(level, source, 1).Stream() << text;
}

/// A whole enclosure of platform 254; each test changes what it is about.
class EnclosureTest : public testing::Test {
 protected:
  EnclosureTest() : console_(out_, false), progress_(console_, 0) {
    Standalone::SetLogLineHandler(
        [this](const Standalone::LogLine& line) { progress_.Take(line); });
    info_.password = "sesame";
    TheScript() = InventoryScript();
    TheScript().machineType = [](std::string& text) { return Give(text, std::string("M1X2")); };
    TheScript().serialNumber = [](std::string& text) { return Give(text, std::string("J123")); };
    TheScript().generation = [](SMMIype& type) { return Give(type, SMM_FIRST_GENERATION); };
    TheScript().status = StatusOf(254, 2);
  }
  ~EnclosureTest() override { Standalone::SetLogLineHandler({}); }

  template <typename Value>
  static int Give(Value& out, const Value& value) {
    out = value;
    return StatusCode::Success;
  }
  static std::function<int(SMMStatus&)> StatusOf(std::int32_t platformId, std::int32_t psuSlots) {
    return [=](SMMStatus& status) {
      status.platformId = platformId;
      status.psuSlotCount = psuSlots;
      return StatusCode::Success;
    };
  }
  static void FailConstruction() {
    TheScript().construct = [] {
      WriteLine(3, kLibrary, "Try to get SMM status, retry 6 times");
      WriteLine(2, kClient, "no answer");
      WriteLine(2, kLibrary, "response is empty or completeCode: \xff");
    };
  }

  std::ostringstream out_;
  Console console_;
  Progress progress_;
  TavrinConnection::ConnectionInfo info_;
};

TEST_F(EnclosureTest, PasswordIsWipedOnceHandedOver) {
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(TheScript().password, "sesame");
  EXPECT_EQ(info_.password, "");
}

TEST_F(EnclosureTest, PlatformOfFourNodesNeedsNoSecondStatusRead) {
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.generation.value, SMM_FIRST_GENERATION);
  EXPECT_EQ(detection.status.value.platformId, 254);
  EXPECT_EQ(detection.status.value.psuSlotCount, 2);
  EXPECT_EQ(detection.nodeCount.value, 4U);
  EXPECT_THAT(TheScript().asked, ElementsAre("generation"));
}

TEST_F(EnclosureTest, PlatformOfTwelveNodesHasItsSlotsCounted) {
  TheScript().nodeCount = 12;
  TheScript().status = StatusOf(253, 9);
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.status.value.platformId, 253);
  EXPECT_EQ(detection.status.value.psuSlotCount, 9);
  EXPECT_EQ(detection.nodeCount.value, 12U);
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "status"));
}

TEST_F(EnclosureTest, WarningAboutTwelveNodesDoesNotHideThem) {
  TheScript().nodeCount = 12;
  TheScript().status = StatusOf(253, 6);
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
  EXPECT_THAT(TheScript().asked, ElementsAre("generation"));
}

TEST_F(EnclosureTest, FailedConstructionHasTheStatusReadAgain) {
  FailConstruction();
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_THAT(TheScript().asked, ElementsAre("generation", "status"));
  EXPECT_EQ(detection.status.value.psuSlotCount, 2);
  EXPECT_EQ(detection.nodeCount.value, 4U);
}

TEST_F(EnclosureTest, AssumedNodesAreNotReportedWhenTheSecondReadContradicts) {
  FailConstruction();
  TheScript().status = StatusOf(253, 9);
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.status.value.psuSlotCount, 9);
  EXPECT_EQ(detection.nodeCount.status, StatusCode::NoUsableResult);
  EXPECT_EQ(detection.nodeCount.cause, "the first status read failed");
}

TEST_F(EnclosureTest, FailedStatusReadsLeaveSlotsAndNodesUnread) {
  FailConstruction();
  TheScript().status = [](SMMStatus&) {
    WriteLine(2, kClient, "gone");
    return StatusCode::NoUsableResult;
  };
  Enclosure enclosure(info_, progress_);
  const Detection detection = enclosure.ReadDetection();
  EXPECT_EQ(detection.status.status, StatusCode::NoUsableResult);
  EXPECT_EQ(detection.status.cause, "gone");
  EXPECT_EQ(detection.nodeCount.status, StatusCode::NoUsableResult);
  EXPECT_EQ(detection.nodeCount.cause, "gone");
}

TEST_F(EnclosureTest, CutStatusAnswerIsNotReportedAsRead) {
  FailConstruction();
  TheScript().status = [](SMMStatus&) { return StatusCode::Success; };
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(enclosure.ReadDetection().status.status, StatusCode::NoUsableResult);
}

TEST_F(EnclosureTest, FailedStatusThatFilledTheRecordStaysFailed) {
  FailConstruction();
  TheScript().status = [](SMMStatus& status) {
    status.psuSlotCount = 9;
    return StatusCode::NoUsableResult;
  };
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(enclosure.ReadDetection().status.status, StatusCode::NoUsableResult);
}

TEST_F(EnclosureTest, UnreachableSmmIsAskedOnlyOnce) {
  FailConstruction();
  TheScript().machineType = [](std::string&) {
    WriteLine(2, kClient, "no answer from it");
    return StatusCode::NotConnected;
  };
  Enclosure enclosure(info_, progress_);
  const Identity identity = enclosure.ReadIdentity();
  const Detection detection = enclosure.ReadDetection();
  EXPECT_THAT(TheScript().asked, ElementsAre("machine type"));
  EXPECT_EQ(identity.serialNumber.status, StatusCode::NotConnected);
  EXPECT_EQ(identity.serialNumber.cause, "no answer from it");
  EXPECT_EQ(detection.generation.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.status.status, StatusCode::NotConnected);
  EXPECT_EQ(detection.nodeCount.status, StatusCode::NotConnected);
}

TEST_F(EnclosureTest, FailedQueryDoesNotHideTheOthers) {
  TheScript().machineType = [](std::string&) {
    WriteLine(1, kLibrary, "Get smm mt failed with error code:193");
    return StatusCode::UnusableAnswer;
  };
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
  EXPECT_EQ(identity.machineType.cause,
            "the answer was shorter than the bytes that lead it, or memory ran out");
  EXPECT_EQ(identity.serialNumber.value, "J123");
}

TEST_F(EnclosureTest, OtherExceptionIsToldInItsOwnWordsEscaped) {
  TheScript().serialNumber = [](std::string&) -> int { throw std::runtime_error("no\x1bway"); };
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(enclosure.ReadIdentity().serialNumber.cause, "no\\x1bway");
}

TEST_F(EnclosureTest, UndetectedGenerationIsAFailedField) {
  TheScript().generation = [](SMMIype&) { return 3; };
  Enclosure enclosure(info_, progress_);
  EXPECT_EQ(enclosure.ReadDetection().generation.status, StatusCode::NoUsableResult);
}

TEST_F(EnclosureTest, ExceptionOfTheConstructionPassesAndEndsTheProgress) {
  TheScript().construct = [] {
    WriteLine(3, kLibrary, "Try to get SMM status, retry 1 time");
    throw std::runtime_error("out of order");
  };
  EXPECT_THROW(Enclosure(info_, progress_), std::runtime_error);
}

}  // namespace
}  // namespace Tavrin
