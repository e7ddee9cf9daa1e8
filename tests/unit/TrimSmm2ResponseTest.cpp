#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "tests/unit/InventoryDouble.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::Line;
using ::testing::ElementsAre;

class TrimSmm2Response : public Double::InventoryTest {
 protected:
  std::string text = "as passed";
};

TEST_F(TrimSmm2Response, FirstGenerationAnswersAreDecodedAsReceivedWithoutRewriteLines) {
  inventory.smmType = SMM_FIRST_GENERATION;
  platform.Expect(0x32, 0xB0, {0x05, 0x00}, {'A', 'B', 'C', 'D'});
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::Success);
  EXPECT_EQ(text, "ABCD");
  EXPECT_THAT(platform.lines,
              ElementsAre(Line{4, "Send impi cmd suceess: FN=0x32 cmd=0xb0 data=0x5 0x0 "},
                          Line{4, "Response=A B C D "}, Line{4, "Response=0x41 0x42 0x43 0x44 "}));
}

TEST_F(TrimSmm2Response, UnknownSmmTypeFollowsTheFirstGeneration) {
  inventory.smmType = static_cast<SMMIype>(7);
  platform.Expect(0x32, 0xB0, {0x05, 0x00}, {'A', 'B', 'C', 'D'});
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::Success);
  EXPECT_EQ(text, "ABCD");
}

TEST_F(TrimSmm2Response, SecondGenerationAnswerLosesItsFirstTwoBytesAndIsLoggedAnew) {
  inventory.smmType = SMM_SECOND_GENERATION;
  platform.Expect(0x32, 0xB0, {0x05, 0x00}, {0x12, 0x00, 'A', 'B', 'C', 'D'});
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::Success);
  EXPECT_EQ(text, "ABCD");
  EXPECT_THAT(
      platform.lines,
      ElementsAre(Line{4, "Send impi cmd suceess: FN=0x32 cmd=0xb0 data=0x5 0x0 "},
                  Line{4, std::string("Response=\x12 \0 A B C D ", 21)},
                  Line{4, "Response=0x12 0x0 0x41 0x42 0x43 0x44 "}, Line{4, "it is smm2..."},
                  Line{4, "New response=A B C D "}, Line{4, "New response=0x41 0x42 0x43 0x44 "}));
}

TEST_F(TrimSmm2Response, AnswerOfExactlyTwoBytesBecomesEmptyAndIsRejected) {
  inventory.smmType = SMM_SECOND_GENERATION;
  platform.logThreshold = 4;
  platform.Expect(0x32, 0xB0, {0x05, 0x01}, {0x12, 0x00});
  EXPECT_EQ(inventory.GetSmmSN(text), StatusCode::UnusableAnswer);
  EXPECT_EQ(text, "as passed");
  EXPECT_EQ(platform.lines.back(), (Line{1, "Get smm sn failed with error code:0"}));
  EXPECT_EQ(platform.lines[platform.lines.size() - 2], (Line{4, "New response="}));
}

TEST_F(TrimSmm2Response, AnswerShorterThanTheBytesToRemoveRaisesBadAllocAfterTheFirstLine) {
  inventory.smmType = SMM_SECOND_GENERATION;
  const std::vector<Bytes> answers = {{}, {0x12}};
  for (const Bytes& answer : answers) {
    platform.Expect(0x32, 0xB0, {0x05, 0x00}, answer);
    EXPECT_THROW(inventory.GetSmmMT(text), std::bad_alloc) << answer.size() << " bytes";
    EXPECT_EQ(platform.lines.back(), (Line{4, "it is smm2..."})) << answer.size() << " bytes";
    platform.Expect(0x32, 0xB0, {0x05, 0x01}, answer, 0xC1);
    EXPECT_THROW(inventory.GetSmmSN(text), std::bad_alloc) << answer.size() << " bytes";
    EXPECT_EQ(platform.lines.back(), (Line{4, "it is smm2..."})) << answer.size() << " bytes";
  }
  EXPECT_EQ(text, "as passed");
}

TEST_F(TrimSmm2Response, BytesAreRemovedWhateverTheCompletionCode) {
  inventory.smmType = SMM_SECOND_GENERATION;
  platform.Expect(0x32, 0xB0, {0x05, 0x00}, {0x12, 0x00, 'A'}, 0xC1);
  EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::UnusableAnswer);
  EXPECT_EQ(platform.lines[platform.lines.size() - 2], (Line{4, "New response=0x41 "}));
}

TEST_F(TrimSmm2Response, BytesAreRemovedWithoutALineBelowThreshold4) {
  inventory.smmType = SMM_SECOND_GENERATION;
  for (const unsigned int threshold : {0U, 1U, 2U, 3U}) {
    platform.logThreshold = threshold;
    platform.Expect(0x32, 0xB0, {0x05, 0x00}, {0x12, 0x00, 'A', 'B', 'C', 'D'});
    EXPECT_EQ(inventory.GetSmmMT(text), StatusCode::Success);
    EXPECT_EQ(text, "ABCD");
  }
  EXPECT_THAT(platform.lines, ::testing::IsEmpty());
}

}  // namespace
}  // namespace Tavrin
