#include "reading/SelectionPrediction.h"

#include <gtest/gtest.h>

#include <vector>

namespace Tavrin {
namespace {

constexpr const char* kAsAsked = "as asked for";
constexpr const char* kHighest =
    "3 was sent, the highest that a first-generation SMM takes; an acknowledgement is for that one "
    "and selects no other";
constexpr const char* kDropped =
    "no PSU was sent, since platform 254 takes at most 2; an acknowledgement is for a request "
    "without a PSU and selects nothing else";

struct SelectionRow {
  SMMIype generation;
  std::int32_t platformId;
  int asked;
  std::optional<std::int64_t> sent;
  std::string remark;
};

TEST(SelectionPrediction, SentIsWhatTheGenerationAndThePlatformMakeOfTheNumber) {
  const std::vector<SelectionRow> table = {
      {SMM_FIRST_GENERATION, 254, 1, 1, kAsAsked},   {SMM_FIRST_GENERATION, 254, 3, 3, kAsAsked},
      {SMM_FIRST_GENERATION, 254, 4, 3, kHighest},   {SMM_FIRST_GENERATION, 253, 9, 3, kHighest},
      {SMM_SECOND_GENERATION, 253, 1, 1, kAsAsked},  {SMM_SECOND_GENERATION, 253, 9, 9, kAsAsked},
      {SMM_SECOND_GENERATION, 254, 2, 2, kAsAsked},  {SMM_SECOND_GENERATION, 254, 3, {}, kDropped},
      {SMM_SECOND_GENERATION, 254, 9, {}, kDropped},
  };
  for (const SelectionRow& row : table) {
    SCOPED_TRACE(testing::Message()
                 << row.generation << ", " << row.platformId << ", " << row.asked);
    const PsuSelection selection = PredictPsuSelection(row.asked, row.generation, row.platformId);
    EXPECT_EQ(selection.asked, row.asked);
    EXPECT_TRUE(selection.isSent);
    EXPECT_EQ(selection.sent.value, row.sent);
    EXPECT_EQ(selection.sent.text, "");
    EXPECT_EQ(selection.sent.absence, row.sent ? Absence::None : Absence::NotReported);
    EXPECT_EQ(selection.remark, row.remark);
  }
}

}  // namespace
}  // namespace Tavrin
