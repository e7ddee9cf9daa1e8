#include "reading/Unread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace Tavrin {
namespace {

QueryOutcome Why(const std::string& words = "the time is over") {
  QueryOutcome why;
  why.status = StatusCode::NotConnected;
  why.cause.words = words;
  why.cause.kind = Standalone::FailureCause::TimeOver;
  return why;
}

Query<Number> Counted(std::int64_t number) { return {{}, {number, "", Absence::None}}; }

Reading Detected() {
  Reading reading;
  reading.detection.emplace();
  reading.detection->nodeCount = Counted(12);
  reading.detection->psuSlotCount = Counted(9);
  return reading;
}

const std::vector<Part> kAll(kPartsToAskFor.begin(), kPartsToAskFor.end());

void ExpectFailed(const QueryOutcome& outcome) {
  EXPECT_EQ(outcome.status, StatusCode::NotConnected);
  EXPECT_EQ(outcome.cause.words, "the time is over");
}

TEST(FillUnread, WithoutADetectionTheFailureSaysWhy) {
  Reading reading;
  FillUnread(kAll, Why(), reading);
  ASSERT_TRUE(reading.failure);
  ExpectFailed(*reading.failure);
  EXPECT_FALSE(reading.identity);
  EXPECT_FALSE(reading.psuStatus);
  FillUnread(kAll, Why("another"), reading);
  ExpectFailed(*reading.failure);
}

TEST(FillUnread, EachPartThatWasAskedForFailsWithTheReason) {
  Reading reading = Detected();
  FillUnread(kAll, Why(), reading);
  EXPECT_FALSE(reading.failure);
  ExpectFailed(reading.identity.value().machineType);
  ExpectFailed(reading.identity->serialNumber);
  ExpectFailed(reading.identity->firmwareVersion);
  ExpectFailed(reading.identity->name);
  ExpectFailed(reading.chassisPower.value());
  ExpectFailed(reading.powerCaps.value());
  ExpectFailed(reading.psuFans.value());
  ExpectFailed(reading.psuFirmware.value());
  ExpectFailed(reading.psuStatus.value());
  for (const auto& node : reading.nodeStatus.value()) {
    ExpectFailed(node);
    EXPECT_EQ(node.value.width.absence, Absence::QueryFailed);
  }
  for (const auto& node : reading.nodePower.value()) {
    ExpectFailed(node);
  }
  EXPECT_FALSE(reading.psuSelection);
}

TEST(FillUnread, NodesAndSlotsAreAsManyAsTheDetectionTells) {
  Reading reading = Detected();
  FillUnread(kAll, Why(), reading);
  EXPECT_EQ(reading.nodeStatus.value().size(), 12U);
  EXPECT_EQ(reading.nodePower.value().size(), 12U);
  ASSERT_EQ(reading.psuFans.value().value.size(), 9U);
  EXPECT_EQ(reading.psuFans->value.at(8).slot, 9U);
  EXPECT_EQ(reading.psuFans->value.at(8).speedA.absence, Absence::QueryFailed);
  EXPECT_EQ(reading.psuFirmware.value().value.size(), 9U);
  EXPECT_EQ(reading.psuFirmware->value.at(8).version.absence, Absence::QueryFailed);
  EXPECT_EQ(reading.psuStatus.value().value.size(), 9U);
  EXPECT_EQ(reading.psuStatus->value.at(8).present.absence, Absence::QueryFailed);
}

TEST(FillUnread, WhereTheyWereNotCountedThereAreFourNodesAndNoSlot) {
  Reading reading;
  reading.detection.emplace();
  FillUnread(kAll, Why(), reading);
  EXPECT_EQ(reading.nodeStatus.value().size(), 4U);
  EXPECT_TRUE(reading.psuFans.value().value.empty());
  ExpectFailed(*reading.psuFans);
}

TEST(FillUnread, WhatIsThereAndWhatWasNotAskedForStays) {
  Reading reading = Detected();
  reading.chassisPower.emplace();
  reading.nodeStatus.emplace(2);
  FillUnread({Part::ChassisPower, Part::NodeStatus, Part::PsuStatus}, Why(), reading);
  EXPECT_TRUE(reading.chassisPower->Succeeded());
  EXPECT_EQ(reading.nodeStatus->size(), 2U);
  EXPECT_TRUE(reading.nodeStatus->front().Succeeded());
  ExpectFailed(reading.psuStatus.value());
  EXPECT_FALSE(reading.identity);
  EXPECT_FALSE(reading.psuFans);
}

TEST(FillUnselected, WithoutADetectionTheFailureSaysWhy) {
  Reading reading;
  FillUnselected(2, Why(), reading);
  EXPECT_EQ(reading.failure.value().cause.words, Why().cause.words);
  EXPECT_FALSE(reading.psuSelection);
}

TEST(FillUnselected, SelectionIsNotKnownToHaveBeenSent) {
  Reading reading = Detected();
  FillUnselected(2, Why(), reading);
  ExpectFailed(reading.psuSelection.value());
  EXPECT_EQ(reading.psuSelection->value.asked, 2);
  EXPECT_FALSE(reading.psuSelection->value.isSent);
  EXPECT_EQ(reading.psuSelection->value.remark, "not known to have been sent");
}

TEST(FillUnselected, SelectionThatCameAboutStays) {
  Reading reading = Detected();
  reading.psuSelection.emplace();
  FillUnselected(2, Why(), reading);
  EXPECT_TRUE(reading.psuSelection->Succeeded());
}

TEST(FillUnread, EachPartIsFilledWithoutTheOthers) {
  for (const Part part : {Part::Identity, Part::ChassisPower, Part::PowerCaps, Part::NodeStatus,
                          Part::NodePower, Part::PsuFans, Part::PsuFirmware, Part::PsuStatus}) {
    Reading reading = Detected();
    FillUnread({part}, Why(), reading);
    const std::vector<bool> filled = {
        reading.identity.has_value(),    reading.chassisPower.has_value(),
        reading.powerCaps.has_value(),   reading.nodeStatus.has_value(),
        reading.nodePower.has_value(),   reading.psuFans.has_value(),
        reading.psuFirmware.has_value(), reading.psuStatus.has_value()};
    EXPECT_EQ(std::count(filled.begin(), filled.end(), true), 1) << static_cast<int>(part);
  }
}

}  // namespace
}  // namespace Tavrin
