#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <ctime>
#include <vector>

#include "tests/unit/InventoryTest.h"

namespace Tavrin {
namespace {

using Double::SleepEnd;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr unsigned int kSeconds = 3;

/// The pause of a PSU selection whose second answer is an acknowledgement.
class Pause : public Double::InventoryTest {
 protected:
  void SelectWithOnePause() {
    inventory.smmType = SMM_FIRST_GENERATION;
    platform.Expect(0x32, 0xF4, {0x00, 0x02}, {0x02, 0x02});
    platform.Expect(0x32, 0xF4, {0x00, 0x02}, {0x02});
    inventory.SelectPSUImpl(2);
    EXPECT_THAT(platform.pauses, ElementsAre(kSeconds));
  }

  static double MonotonicSeconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return SecondsOf(now);
  }

  static double SecondsOf(const timespec& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
  }
};

TEST_F(Pause, NobodyInterruptsIsOneSleep) {
  SelectWithOnePause();
  EXPECT_THAT(platform.waits, IsEmpty());
}

TEST_F(Pause, CutShortByASignalLastsUntilItsEndOnTheMonotonicClock) {
  for (const unsigned int left : {3U, 1U, 0U}) {
    platform.ForgetWhatHappened();
    platform.sleepEnds = {{left, EINTR}};
    const double before = MonotonicSeconds();
    SelectWithOnePause();
    const double after = MonotonicSeconds();
    ASSERT_THAT(platform.waits, SizeIs(1)) << left << " s left";
    EXPECT_EQ(platform.waits[0].clock, CLOCK_MONOTONIC);
    EXPECT_EQ(platform.waits[0].flags, TIMER_ABSTIME);
    EXPECT_GE(SecondsOf(platform.waits[0].until), before + kSeconds);
    EXPECT_LE(SecondsOf(platform.waits[0].until), after + kSeconds);
  }
}

TEST_F(Pause, CutShortAgainAndAgainKeepsItsEnd) {
  platform.sleepEnds = {{0, EINTR}};
  platform.waitResults = {EINTR, EINTR, 0};
  SelectWithOnePause();
  ASSERT_THAT(platform.waits, SizeIs(3));
  EXPECT_EQ(SecondsOf(platform.waits[2].until), SecondsOf(platform.waits[0].until));
}

TEST_F(Pause, WaitThatFailsOtherwiseIsNotRepeated) {
  platform.sleepEnds = {{0, EINTR}};
  platform.waitResults = {EINVAL};
  SelectWithOnePause();
  EXPECT_THAT(platform.waits, SizeIs(1));
}

TEST_F(Pause, SleepThatSaysSomethingIsLeftGoesOnWhateverErrnoHolds) {
  platform.sleepEnds = {{1, 0}};
  SelectWithOnePause();
  EXPECT_THAT(platform.waits, SizeIs(1));
}

TEST_F(Pause, InterruptionOfSomethingBeforeItDoesNotCount) {
  errno = EINTR;
  SelectWithOnePause();
  EXPECT_THAT(platform.waits, IsEmpty());
}

TEST_F(Pause, OtherErrorDoesNotProlongIt) {
  platform.sleepEnds = {{0, EINVAL}};
  SelectWithOnePause();
  EXPECT_THAT(platform.waits, IsEmpty());
}

TEST_F(Pause, ErrnoIsLeftAsItWas) {
  for (const SleepEnd& end : std::vector<SleepEnd>{{0, 0}, {0, EINTR}}) {
    platform.ForgetWhatHappened();
    platform.sleepEnds = {end};
    inventory.smmType = SMM_FIRST_GENERATION;
    int afterThePause = 0;
    platform.Expect(0x32, 0xF4, {0x00, 0x02}, {0x02, 0x02});
    platform.script.back().onRequest = [](Double::Exchange&) { errno = EDOM; };
    platform.Expect(0x32, 0xF4, {0x00, 0x02}, {0x02});
    platform.script.back().onRequest = [&afterThePause](Double::Exchange&) {
      afterThePause = errno;
    };
    inventory.SelectPSUImpl(2);
    EXPECT_EQ(afterThePause, EDOM);
  }
}

}  // namespace
}  // namespace Tavrin
