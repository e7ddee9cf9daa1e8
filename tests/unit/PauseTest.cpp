#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <ctime>
#include <utility>
#include <vector>

#include "tests/doubles/Pauses.h"
#include "tests/unit/InventoryTest.h"

namespace Tavrin {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr unsigned int kSeconds = 3;

/// How one call of sleep() ends.
struct SleepEnd {
  unsigned int result = 0;
  int error = 0;  ///< What it leaves in errno, unless 0.
};

/// One wait for a time on a clock.
struct Wait {
  clockid_t clock = CLOCK_REALTIME;
  int flags = 0;
  timespec until = {};
};

/// The pause of a PSU selection whose second answer is an acknowledgement.
class Pause : public Double::InventoryTest {
 protected:
  Pause() {
    Double::onPause = [this](unsigned int seconds) {
      Double::PlayPause(seconds);
      errno = sleepEnd.error != 0 ? sleepEnd.error : errno;
      return std::exchange(sleepEnd, {}).result;
    };
    Double::onWait = [this](clockid_t clock, int flags, const timespec& until) {
      waits.push_back({clock, flags, until});
      return waits.size() <= waitResults.size() ? waitResults[waits.size() - 1] : 0;
    };
  }
  ~Pause() override {
    Double::onPause = Double::PlayPause;
    Double::onWait = nullptr;
  }

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

  SleepEnd sleepEnd;             ///< Of the next call of sleep(); then it returns 0.
  std::vector<Wait> waits;       ///< Those that were made.
  std::vector<int> waitResults;  ///< Of the first waits; then they return 0.
};

TEST_F(Pause, NobodyInterruptsIsOneSleep) {
  SelectWithOnePause();
  EXPECT_THAT(waits, IsEmpty());
}

TEST_F(Pause, CutShortByASignalLastsUntilItsEndOnTheMonotonicClock) {
  for (const unsigned int left : {3U, 1U, 0U}) {
    platform.ForgetWhatHappened();
    waits.clear();
    sleepEnd = {left, EINTR};
    const double before = MonotonicSeconds();
    SelectWithOnePause();
    const double after = MonotonicSeconds();
    ASSERT_THAT(waits, SizeIs(1)) << left << " s left";
    EXPECT_EQ(waits[0].clock, CLOCK_MONOTONIC);
    EXPECT_EQ(waits[0].flags, TIMER_ABSTIME);
    EXPECT_GE(SecondsOf(waits[0].until), before + kSeconds);
    EXPECT_LE(SecondsOf(waits[0].until), after + kSeconds);
  }
}

TEST_F(Pause, CutShortAgainAndAgainKeepsItsEnd) {
  sleepEnd = {0, EINTR};
  waitResults = {EINTR, EINTR, 0};
  SelectWithOnePause();
  ASSERT_THAT(waits, SizeIs(3));
  EXPECT_EQ(SecondsOf(waits[2].until), SecondsOf(waits[0].until));
}

TEST_F(Pause, WaitThatFailsOtherwiseIsNotRepeated) {
  sleepEnd = {0, EINTR};
  waitResults = {EINVAL};
  SelectWithOnePause();
  EXPECT_THAT(waits, SizeIs(1));
}

TEST_F(Pause, SleepThatSaysSomethingIsLeftGoesOnWhateverErrnoHolds) {
  sleepEnd = {1, 0};
  SelectWithOnePause();
  EXPECT_THAT(waits, SizeIs(1));
}

TEST_F(Pause, InterruptionOfSomethingBeforeItDoesNotCount) {
  errno = EINTR;
  SelectWithOnePause();
  EXPECT_THAT(waits, IsEmpty());
}

TEST_F(Pause, OtherErrorDoesNotProlongIt) {
  sleepEnd = {0, EINVAL};
  SelectWithOnePause();
  EXPECT_THAT(waits, IsEmpty());
}

TEST_F(Pause, ErrnoIsLeftAsItWas) {
  for (const SleepEnd& end : std::vector<SleepEnd>{{0, 0}, {0, EINTR}}) {
    platform.ForgetWhatHappened();
    sleepEnd = end;
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
