#include "platform/standalone/globalconfig/ThreadConfig.h"

#include <gmock/gmock.h>

#include <future>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/GlobalConfig.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "tests/platform/LogCapture.h"
#include "tests/platform/ScopedEnvironment.h"

namespace Tavrin {
namespace {

using Standalone::SetGlobalConfigValue;
using Standalone::ThreadConfig;
using testing::IsEmpty;

constexpr int kDefault = 42;

int Read(const std::string& key) { return GetGlobalConfigValue(key, kDefault); }

int ReadOnAnotherThread(const std::string& key) {
  return std::async(std::launch::async, Read, key).get();
}

TEST(ThreadConfig, ThreadWinsOverProcessOverEnvironmentOverDefault) {
  const std::string key = "PLATFORM_TEST_PRECEDENCE";
  EXPECT_EQ(Read(key), kDefault);
  const ScopedEnvironment environment(key, "1");
  EXPECT_EQ(Read(key), 1);
  SetGlobalConfigValue(key, 2);
  EXPECT_EQ(Read(key), 2);
  const ThreadConfig ofTheThread({{key, 3}});
  EXPECT_EQ(Read(key), 3);
}

TEST(ThreadConfig, ThreadWinsOverWhateverTheProcessSetsMeanwhile) {
  const std::string key = "PLATFORM_TEST_SET_MEANWHILE";
  {
    const ThreadConfig ofTheThread({{key, 1}});
    SetGlobalConfigValue(key, 2);
    EXPECT_EQ(Read(key), 1);
  }
  EXPECT_EQ(Read(key), 2);
}

TEST(ThreadConfig, KeyWithoutAValueOfTheThreadIsReadAsEver) {
  const ScopedEnvironment environment("PLATFORM_TEST_OTHER_KEY", "1");
  const ThreadConfig ofTheThread({{"PLATFORM_TEST_KEY", 3}});
  EXPECT_EQ(Read("PLATFORM_TEST_OTHER_KEY"), 1);
  EXPECT_EQ(Read("PLATFORM_TEST_THIRD_KEY"), kDefault);
}

TEST(ThreadConfig, MalformedEnvironmentBehindAValueOfTheThreadIsNotReported) {
  const LogCapture capture;
  const ScopedEnvironment environment("PLATFORM_TEST_COVERED", "no");
  const ThreadConfig ofTheThread({{"PLATFORM_TEST_COVERED", 3}});
  EXPECT_EQ(Read("PLATFORM_TEST_COVERED"), 3);
  EXPECT_THAT(capture.lines, IsEmpty());
}

TEST(ThreadConfig, InnermostHoldsKeyByKeyAndTheOuterOnesComeBack) {
  const std::string both = "PLATFORM_TEST_BOTH";
  const std::string outside = "PLATFORM_TEST_OUTSIDE";
  {
    const ThreadConfig outer({{both, 1}, {outside, 2}});
    {
      const ThreadConfig inner({{both, 3}});
      const ThreadConfig innermost({});
      EXPECT_EQ(Read(both), 3);
      EXPECT_EQ(Read(outside), 2);
    }
    EXPECT_EQ(Read(both), 1);
  }
  EXPECT_EQ(Read(both), kDefault);
  EXPECT_EQ(Read(outside), kDefault);
}

TEST(ThreadConfig, ExceptionEndsItToo) {
  try {
    const ThreadConfig ofTheThread({{"PLATFORM_TEST_LEFT", 1}});
    throw std::runtime_error("left");
  } catch (const std::runtime_error&) {
    EXPECT_EQ(Read("PLATFORM_TEST_LEFT"), kDefault);
  }
}

TEST(ThreadConfig, SetChangesAndAddsInItsOwnOnly) {
  ThreadConfig outer({{"PLATFORM_TEST_CHANGED", 1}});
  {
    ThreadConfig inner({{"PLATFORM_TEST_CHANGED", 2}});
    inner.Set("PLATFORM_TEST_CHANGED", 3);
    inner.Set("PLATFORM_TEST_ADDED", 4);
    EXPECT_EQ(Read("PLATFORM_TEST_CHANGED"), 3);
    EXPECT_EQ(Read("PLATFORM_TEST_ADDED"), 4);
    outer.Set("PLATFORM_TEST_CHANGED", 5);
    EXPECT_EQ(Read("PLATFORM_TEST_CHANGED"), 3);
  }
  EXPECT_EQ(Read("PLATFORM_TEST_CHANGED"), 5);
  EXPECT_EQ(Read("PLATFORM_TEST_ADDED"), kDefault);
}

TEST(ThreadConfig, OtherThreadsDoNotSeeIt) {
  const std::string key = "PLATFORM_TEST_FOREIGN";
  SetGlobalConfigValue(key, 1);
  const ThreadConfig ofThisThread({{key, 2}});
  EXPECT_EQ(ReadOnAnotherThread(key), 1);
  EXPECT_EQ(Read(key), 2);
}

TEST(ThreadConfig, ThreadsReadTheirOwnAtTheSameTime) {
  const std::string key = "PLATFORM_TEST_EACH";
  std::vector<std::future<int>> strangers;
  for (int index = 0; index < 8; ++index) {
    strangers.push_back(std::async(std::launch::async, [index, &key] {
      ThreadConfig own({{key, index}});
      int foreign = 0;
      for (int count = 0; count < 2000; ++count) {
        own.Set(key, index + 8 * count);
        SetGlobalConfigValue(key, -1);
        foreign += Read(key) == index + 8 * count ? 0 : 1;
      }
      return foreign;
    }));
  }
  for (std::future<int>& foreign : strangers) {
    EXPECT_EQ(foreign.get(), 0);
  }
}

}  // namespace
}  // namespace Tavrin
