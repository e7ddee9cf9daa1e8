#include "module/smm/smm_inventory/impl/NodeStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "tests/unit/InventoryTest.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::ExchangeLines;
using Double::Line;
using Double::OfSmmType;
using Double::TrimLines;
using StatusCode::Success;
using StatusCode::UnusableAnswer;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NodeStatusQuery : public Double::InventoryTest {
 protected:
  static constexpr const char* kAsPassed = "power|width|height|-7";

  NodeStatusQuery() { Reset(); }

  void Reset() {
    out.powerState = "power";
    out.width = "width";
    out.height = "height";
    out.permissionState = -7;
  }

  int Get(const Bytes& response, std::uint8_t completionCode = 0) {
    Reset();
    platform.Expect(0x32, 0xA7, {0x02}, response, completionCode);
    return inventory.GetNodeStatus(2, out);
  }

  std::string Output() const {
    return out.powerState + '|' + out.width + '|' + out.height + '|' +
           std::to_string(out.permissionState);
  }

  NodeStatus out;
};

TEST_F(NodeStatusQuery, EveryLengthAndCompletionCodeHasItsOutcome) {
  ExpectOutcomes(
      {OfSmmType(0).Lengths(0, 3).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(0)
           .Lengths(4, 4)
           .WithCode0({Success, "Power ON|32|64|3"})
           .WithOtherCodes({UnusableAnswer, kAsPassed}),
       OfSmmType(0).Lengths(5, 7).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(7).Lengths(0, 3).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(7)
           .Lengths(4, 4)
           .WithCode0({Success, "Power ON|32|64|3"})
           .WithOtherCodes({UnusableAnswer, kAsPassed}),
       OfSmmType(7).Lengths(5, 7).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(1).Lengths(0, 3).Always({UnusableAnswer, kAsPassed}),
       OfSmmType(1)
           .Lengths(4, 4)
           .WithCode0({Success, "Power ON|32|64|3"})
           .WithOtherCodes({UnusableAnswer, kAsPassed}),
       OfSmmType(1)
           .Lengths(5, 5)
           .WithCode0({Success, "No Permission|64|3|4"})
           .WithOtherCodes({UnusableAnswer, kAsPassed}),
       OfSmmType(1).Lengths(6, 7).Always({UnusableAnswer, kAsPassed})},
      {0x80, 0x20, 0x40, 0x03, 0x04, 0x05, 0x06},
      [this](const Bytes& answer, std::uint8_t code) { return Get(answer, code); },
      [this] { return Output(); });
}

TEST_F(NodeStatusQuery, EveryNodeUpToTheCountIsAskedByItsNumber) {
  for (const unsigned long count : {4UL, 12UL}) {
    inventory.nodeCount = count;
    for (unsigned long node = 1; node <= count; ++node) {
      platform.Expect(0x32, 0xA7, {static_cast<std::uint8_t>(node)}, {0x80, 1, 1, 0});
      EXPECT_EQ(inventory.GetNodeStatus(node, out), Success) << node << " of " << count;
    }
  }
}

TEST_F(NodeStatusQuery, NodeOutOfRangeIsRefusedAndNothingSent) {
  for (const unsigned long count : {4UL, 12UL}) {
    inventory.nodeCount = count;
    for (const unsigned long node :
         {0UL, count + 1, 257UL, std::numeric_limits<unsigned long>::max()}) {
      platform.ForgetWhatHappened();
      EXPECT_EQ(inventory.GetNodeStatus(node, out), UnusableAnswer);
      EXPECT_THAT(platform.events, IsEmpty()) << node << " of " << count;
      EXPECT_THAT(platform.lines,
                  ElementsAre(Line{1, "node " + std::to_string(node) + "is wrong: need 1-" +
                                          std::to_string(count)}));
    }
  }
  EXPECT_EQ(Output(), kAsPassed);
}

TEST_F(NodeStatusQuery, RefusalIsLoggedFromThreshold1On) {
  ExpectLines({{1, "node 5is wrong: need 1-4"}},
              [&] { EXPECT_EQ(inventory.GetNodeStatus(5, out), UnusableAnswer); });
}

TEST_F(NodeStatusQuery, EveryPowerStateCodeHasItsText) {
  const std::map<unsigned int, std::string> known = {
      {0x00, "Power OFF"}, {0x20, "No Permission"}, {0x40, "Power Fault"}, {0x80, "Power ON"}};
  platform.logThreshold = 3;
  for (unsigned int code = 0; code <= 0xFF; ++code) {
    platform.ForgetWhatHappened();
    const bool isKnown = known.count(code) != 0;
    EXPECT_EQ(Get({static_cast<std::uint8_t>(code), 1, 1, 0}), Success);
    EXPECT_EQ(out.powerState, isKnown ? known.at(code) : "Fault") << "code " << code;
    EXPECT_EQ(platform.lines,
              isKnown ? std::vector<Line>{} : (std::vector<Line>{{1, "Wrong result"}}))
        << "code " << code;
  }
}

TEST_F(NodeStatusQuery, EveryWidthCodeHasItsText) {
  const std::map<unsigned int, std::string> named = {{1, "Half"}, {2, "Full"}, {255, "N/A"}};
  for (unsigned int code = 0; code <= 0xFF; ++code) {
    EXPECT_EQ(Get({0x80, static_cast<std::uint8_t>(code), 1, 0}), Success);
    EXPECT_EQ(out.width, named.count(code) != 0 ? named.at(code) : std::to_string(code));
  }
}

TEST_F(NodeStatusQuery, EveryHeightCodeIsANumberBut255) {
  for (unsigned int code = 0; code <= 0xFF; ++code) {
    EXPECT_EQ(Get({0x80, 1, static_cast<std::uint8_t>(code), 0}), Success);
    EXPECT_EQ(out.height, code == 255 ? "N/A" : std::to_string(code));
  }
}

TEST_F(NodeStatusQuery, FullWidthGoesWithAHeightThatIsNotAvailable) {
  EXPECT_EQ(Get({0x80, 2, 255, 0}), Success);
  EXPECT_EQ(Output(), "Power ON|Full|N/A|0");
}

TEST_F(NodeStatusQuery, EveryPermissionByteIsStoredAsItIsAndLeavesThePowerState) {
  for (int code = 0; code <= 0xFF; ++code) {
    EXPECT_EQ(Get({0x80, 1, 1, static_cast<std::uint8_t>(code)}), Success);
    EXPECT_EQ(out.permissionState, code);
    EXPECT_EQ(out.powerState, "Power ON");
  }
}

TEST_F(NodeStatusQuery, CodesAreLoggedAsOneLineAtThreshold4) {
  const Bytes answer = {0x80, 1, 1, 0};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa7 data=0x2 ", answer) +
                  std::vector<Line>{{4,
                                     "The Node status is :\nNode Power State 128\nWidth 1\n"
                                     "Height 1\nPermission state 0"}},
              [&] { EXPECT_EQ(Get(answer), Success); });
  EXPECT_EQ(Output(), "Power ON|Half|1|0");
}

TEST_F(NodeStatusQuery, UnknownPowerStateIsLoggedBeforeTheCodes) {
  const Bytes answer = {0x60, 2, 255, 0x20};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa7 data=0x2 ", answer) +
                  std::vector<Line>{{1, "Wrong result"},
                                    {4,
                                     "The Node status is :\nNode Power State 96\nWidth 2\n"
                                     "Height 255\nPermission state 32"}},
              [&] { EXPECT_EQ(Get(answer), Success); });
  EXPECT_EQ(Output(), "Fault|Full|N/A|32");
}

TEST_F(NodeStatusQuery, RecordIsFilledBehindTheWrongResultLineAndBeforeTheCodes) {
  std::vector<std::string> seen;
  platform.whileWritten = [&](const Line&) { seen.push_back(Output()); };
  EXPECT_EQ(Get({0x60, 2, 255, 0x20}), Success);
  ASSERT_EQ(seen.size(), 5U);
  EXPECT_EQ(platform.lines[3], (Line{1, "Wrong result"}));
  EXPECT_EQ(seen[3], kAsPassed);
  EXPECT_EQ(seen[4], "Fault|Full|N/A|32");
}

TEST_F(NodeStatusQuery, ThresholdIsTestedAnewForEachLine) {
  platform.laterThresholds = {0, 0, 0, 1, 3};
  EXPECT_EQ(Get({0x60, 2, 255, 0x20}), Success);
  EXPECT_THAT(platform.lines, ElementsAre(Line{1, "Wrong result"}));
  platform.ForgetWhatHappened();
  platform.laterThresholds = {0, 0, 0, 0, 4};
  EXPECT_EQ(Get({0x60, 2, 255, 0x20}), Success);
  EXPECT_THAT(platform.laterThresholds, IsEmpty());
  ASSERT_EQ(platform.lines.size(), 1U);
  EXPECT_EQ(platform.lines.front().level, 4U);
}

TEST_F(NodeStatusQuery, LengthsBeyond255AreLoggedAsTheyAre) {
  for (const SMMIype smmType : {SMM_FIRST_GENERATION, SMM_SECOND_GENERATION}) {
    inventory.smmType = smmType;
    for (const std::size_t length : std::vector<std::size_t>{256, 260, 261, 300}) {
      EXPECT_EQ(Get(Bytes(length, 0x80)), UnusableAnswer);
      EXPECT_EQ(platform.lines.back().text,
                "The Node status is :\nGet Node statue failed with completionCode is 0, "
                "response.size() is " +
                    std::to_string(length));
    }
  }
}

TEST_F(NodeStatusQuery, FiveBytesFromTheFirstGenerationAreLoggedWithTheirNumber) {
  const Bytes answer = {0x77, 0x80, 1, 1, 0};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa7 data=0x2 ", answer) +
                  std::vector<Line>{{4,
                                     "The Node status is :\nGet Node statue failed with "
                                     "completionCode is 0, response.size() is 5"}},
              [&] { EXPECT_EQ(Get(answer), UnusableAnswer); });
}

TEST_F(NodeStatusQuery, FiveBytesFromTheSecondGenerationLoseTheFirst) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes answer = {0x77, 0x80, 1, 1, 0};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa7 data=0x2 ", answer) + TrimLines({0x80, 1, 1, 0}) +
                  std::vector<Line>{{4,
                                     "The Node status is :\nNode Power State 128\nWidth 1\n"
                                     "Height 1\nPermission state 0"}},
              [&] { EXPECT_EQ(Get(answer), Success); });
}

TEST_F(NodeStatusQuery, FourBytesFromTheSecondGenerationAreDecodedAsTheyStand) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes answer = {0x80, 1, 1, 0};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa7 data=0x2 ", answer) +
                  std::vector<Line>{{4,
                                     "The Node status is :\nNode Power State 128\nWidth 1\n"
                                     "Height 1\nPermission state 0"}},
              [&] { EXPECT_EQ(Get(answer), Success); });
}

TEST_F(NodeStatusQuery, SecondGenerationFailureIsNotShortened) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const Bytes answer = {0x77, 0x80, 1, 1, 0};
  ExpectLines(ExchangeLines("FN=0x32 cmd=0xa7 data=0x2 ", answer) +
                  std::vector<Line>{{4,
                                     "The Node status is :\nGet Node statue failed with "
                                     "completionCode is 193, response.size() is 5"}},
              [&] { EXPECT_EQ(Get(answer, 0xC1), UnusableAnswer); });
}

TEST_F(NodeStatusQuery, StatusOfTheExchangeIsHandedOn) {
  inventory.smmType = SMM_SECOND_GENERATION;
  ExpectExchangeStatusesHandedOn([this] { return inventory.GetNodeStatus(1, out); });
  EXPECT_EQ(Output(), kAsPassed);
}

TEST_F(NodeStatusQuery, TextsAndLinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  EXPECT_EQ(Get({0x80, 123, 234, 210}), Success);
  EXPECT_EQ(out.width, "123");
  EXPECT_EQ(out.height, "234");
  EXPECT_EQ(platform.lines.back(),
            (Line{4,
                  "The Node status is :\nNode Power State 128\nWidth 123\nHeight 234\n"
                  "Permission state 210"}));
  EXPECT_EQ(Get(Bytes(10, 0), 0xC1), UnusableAnswer);
  EXPECT_EQ(platform.lines.back(),
            (Line{4,
                  "The Node status is :\nGet Node statue failed with completionCode is 193, "
                  "response.size() is 10"}));
  inventory.nodeCount = 12;
  EXPECT_EQ(inventory.GetNodeStatus(1234, out), UnusableAnswer);
  EXPECT_EQ(platform.lines.back(), (Line{1, "node 1234is wrong: need 1-12"}));
}

TEST(NodeStatusCodes, AreZeroBeforeAnAnswerIsRead) {
  EXPECT_EQ(NodeStatusCodesText(NodeStatusCodes()),
            "\nNode Power State 0\nWidth 0\nHeight 0\nPermission state 0");
}

}  // namespace
}  // namespace Tavrin
