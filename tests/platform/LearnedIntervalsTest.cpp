#include "platform/standalone/ipmi_client/LearnedIntervals.h"

#include <gtest/gtest.h>

namespace Tavrin::Standalone {
namespace {

using std::chrono::milliseconds;

TEST(LearnedIntervals, NothingIsKnownAtFirst) {
  EXPECT_EQ(LearnedInterval("192.0.2.1", 623), milliseconds(0));
}

TEST(LearnedIntervals, EachAddressAndPortHasItsOwn) {
  LearnInterval("192.0.2.2", 623, milliseconds(1200));
  LearnInterval("192.0.2.2", 624, milliseconds(2400));
  EXPECT_EQ(LearnedInterval("192.0.2.2", 623), milliseconds(1200));
  EXPECT_EQ(LearnedInterval("192.0.2.2", 624), milliseconds(2400));
  EXPECT_EQ(LearnedInterval("192.0.2.3", 623), milliseconds(0));
}

TEST(LearnedIntervals, LatestOneHoldsAndZeroForgets) {
  LearnInterval("192.0.2.4", 623, milliseconds(1200));
  LearnInterval("192.0.2.4", 623, milliseconds(1100));
  EXPECT_EQ(LearnedInterval("192.0.2.4", 623), milliseconds(1100));
  LearnInterval("192.0.2.4", 623, milliseconds(0));
  EXPECT_EQ(LearnedInterval("192.0.2.4", 623), milliseconds(0));
}

TEST(LearnedIntervals, MoreThanFourThousandPushEarlierOnesOut) {
  constexpr int kLearned = 5000;
  for (int port = 1; port <= kLearned; ++port) {
    LearnInterval("192.0.2.5", port, milliseconds(1200));
  }
  int known = 0;
  for (int port = 1; port <= kLearned; ++port) {
    known += LearnedInterval("192.0.2.5", port).count() > 0 ? 1 : 0;
  }
  EXPECT_EQ(known, 4096);
  LearnInterval("192.0.2.6", 1, milliseconds(0));
  EXPECT_EQ(LearnedInterval("192.0.2.5", kLearned - 4095), milliseconds(1200));
  EXPECT_EQ(LearnedInterval("192.0.2.5", kLearned), milliseconds(1200));
}

}  // namespace
}  // namespace Tavrin::Standalone
