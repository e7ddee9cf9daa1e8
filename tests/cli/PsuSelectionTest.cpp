#include "tools/smm-inventory/PsuSelection.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace Tavrin {
namespace {

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kGreatest = std::numeric_limits<int>::max();
constexpr const char* kAsAsked = "as asked for";
constexpr const char* kNegative = "negative: its low 8 bits are sent";
constexpr const char* kClamped = "clamped: a first-generation request holds at most 3";
constexpr const char* kLeftOutOf253 = "left out of the request: platform 253 takes at most 9";
constexpr const char* kLeftOutOf254 = "left out of the request: platform 254 takes at most 2";

struct SelectionRow {
  SMMIype generation;
  std::int32_t platformId;
  int asked;
  std::optional<int> sent;
  std::string remark;
};

TEST(PsuSelection, SentIsWhatTheGenerationAndThePlatformMakeOfTheNumber) {
  const auto other = static_cast<SMMIype>(7);
  const std::vector<SelectionRow> table = {
      {SMM_FIRST_GENERATION, 254, 0, 0, kAsAsked},
      {SMM_FIRST_GENERATION, 254, 3, 3, kAsAsked},
      {SMM_FIRST_GENERATION, 254, 4, 3, kClamped},
      {SMM_FIRST_GENERATION, 253, 9, 3, kClamped},
      {SMM_FIRST_GENERATION, 254, kGreatest, 3, kClamped},
      {SMM_FIRST_GENERATION, 254, -1, 0xFF, kNegative},
      {SMM_FIRST_GENERATION, 254, -300, 0xD4, kNegative},
      {SMM_FIRST_GENERATION, 254, kLeast, 0, kNegative},
      {other, 254, 4, 3, kClamped},
      {SMM_SECOND_GENERATION, 253, 9, 9, kAsAsked},
      {SMM_SECOND_GENERATION, 253, 10, {}, kLeftOutOf253},
      {SMM_SECOND_GENERATION, 253, -1, 0xFF, kNegative},
      {SMM_SECOND_GENERATION, 254, 2, 2, kAsAsked},
      {SMM_SECOND_GENERATION, 254, 3, {}, kLeftOutOf254},
      {SMM_SECOND_GENERATION, 254, kGreatest, {}, kLeftOutOf254},
      {SMM_SECOND_GENERATION, 254, kLeast, 0, kNegative},
  };
  for (const SelectionRow& row : table) {
    SCOPED_TRACE(testing::Message()
                 << row.generation << ", " << row.platformId << ", " << row.asked);
    const PsuSelection selection = PredictPsuSelection(row.asked, row.generation, row.platformId);
    EXPECT_EQ(selection.asked, row.asked);
    EXPECT_EQ(selection.sent, row.sent);
    EXPECT_EQ(selection.remark, row.remark);
  }
}

}  // namespace
}  // namespace Tavrin
