#include "platform/GlobalConfig.h"

#include <gmock/gmock.h>

#include <atomic>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/standalone/globalconfig/ConfigControl.h"
#include "tests/platform/LogCapture.h"
#include "tests/platform/ScopedEnvironment.h"

namespace Tavrin {
namespace {

using Standalone::SetGlobalConfigValue;
using testing::SizeIs;

struct Row {
  const char* text;
  int expected;
};

TEST(GlobalConfig, UnsetKeyGivesTheDefault) {
  const LogCapture capture;
  EXPECT_EQ(GetGlobalConfigValue("PLATFORM_TEST_UNSET", 42), 42);
  EXPECT_THAT(capture.lines, SizeIs(0));
}

TEST(GlobalConfig, EnvironmentGivesTheValue) {
  const LogCapture capture;
  const Row rows[] = {{"0", 0},
                      {"7", 7},
                      {"-12", -12},
                      {"007", 7},
                      {"2147483647", std::numeric_limits<int>::max()},
                      {"-2147483648", std::numeric_limits<int>::min()}};
  for (const Row& row : rows) {
    const ScopedEnvironment variable("PLATFORM_TEST_GOOD", row.text);
    EXPECT_EQ(GetGlobalConfigValue("PLATFORM_TEST_GOOD", 42), row.expected) << row.text;
  }
  EXPECT_THAT(capture.lines, SizeIs(0));
}

TEST(GlobalConfig, MalformedTextLeavesTheDefaultAndIsReported) {
  const char* const texts[] = {"",           " 1",          "1 ", "+1",    "0x10", "1e3",
                               "2147483648", "-2147483649", "-",  "three", "3\n4", "1.0"};
  int number = 0;
  for (const char* const text : texts) {
    const LogCapture capture(1);
    const std::string key = "PLATFORM_TEST_BAD_" + std::to_string(++number);
    const ScopedEnvironment variable(key, text);
    EXPECT_EQ(GetGlobalConfigValue(key, 42), 42) << text;
    ASSERT_THAT(capture.lines, SizeIs(1)) << text;
    EXPECT_EQ(capture.lines[0].text,
              key + " is \"" + text +
                  "\"; expected a whole number from -2147483648 to 2147483647; the default 42 "
                  "holds");
    EXPECT_EQ(capture.lines[0].level, 1U);
    EXPECT_EQ(capture.lines[0].source, "platform/standalone/globalconfig/GlobalConfig");
  }
}

TEST(GlobalConfig, MalformedTextIsReportedOncePerKey) {
  const LogCapture capture;
  const ScopedEnvironment first("PLATFORM_TEST_ONCE_A", "no");
  const ScopedEnvironment second("PLATFORM_TEST_ONCE_B", "no");
  for (int count = 0; count < 3; ++count) {
    EXPECT_EQ(GetGlobalConfigValue("PLATFORM_TEST_ONCE_A", 1), 1);
    EXPECT_EQ(GetGlobalConfigValue("PLATFORM_TEST_ONCE_B", 2), 2);
  }
  EXPECT_THAT(capture.lines, SizeIs(2));
}

TEST(GlobalConfig, MalformedTextIsReportedOnceHoweverManyThreadsAsk) {
  constexpr int threadCount = 4;
  constexpr int keyCount = 600;
  const LogCapture capture;
  std::vector<std::unique_ptr<ScopedEnvironment>> variables;
  const auto keyOf = [](int number) { return "PLATFORM_TEST_ASKED_" + std::to_string(number); };
  for (int number = 0; number < keyCount; ++number) {
    variables.push_back(std::make_unique<ScopedEnvironment>(keyOf(number), "no"));
  }
  std::atomic<int> asking{0};
  std::vector<std::thread> threads;
  for (int index = 0; index < threadCount; ++index) {
    threads.emplace_back([&] {
      for (int number = 0; number < keyCount; ++number) {
        ++asking;
        while (asking < threadCount * (number + 1)) {  // So that all ask for it at the same time.
          std::this_thread::yield();
        }
        GetGlobalConfigValue(keyOf(number), 1);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  std::set<std::string> texts;
  for (const Standalone::LogLine& line : capture.lines) {
    texts.insert(line.text);
  }
  EXPECT_THAT(texts, SizeIs(keyCount));
  EXPECT_THAT(capture.lines, SizeIs(keyCount));
}

TEST(GlobalConfig, NothingIsReportedWithTheLogOff) {
  const LogCapture capture(0);
  const ScopedEnvironment variable("PLATFORM_TEST_QUIET", "no");
  EXPECT_EQ(GetGlobalConfigValue("PLATFORM_TEST_QUIET", 1), 1);
  EXPECT_THAT(capture.lines, SizeIs(0));
}

TEST(GlobalConfig, ValueSetAtRunTimeWinsOverTheEnvironment) {
  const LogCapture capture;
  const ScopedEnvironment good("PLATFORM_TEST_WINS", "5");
  const ScopedEnvironment bad("PLATFORM_TEST_WINS_TOO", "no");
  SetGlobalConfigValue("PLATFORM_TEST_WINS", 6);
  SetGlobalConfigValue("PLATFORM_TEST_WINS_TOO", -1);
  EXPECT_EQ(GetGlobalConfigValue("PLATFORM_TEST_WINS", 42), 6);
  EXPECT_EQ(GetGlobalConfigValue("PLATFORM_TEST_WINS_TOO", 42), -1);
  EXPECT_THAT(capture.lines, SizeIs(0));
}

TEST(GlobalConfig, LastValueSetAtRunTimeHolds) {
  SetGlobalConfigValue("PLATFORM_TEST_LAST", 1);
  SetGlobalConfigValue("PLATFORM_TEST_LAST", 2);
  EXPECT_EQ(GetGlobalConfigValue("PLATFORM_TEST_LAST", 42), 2);
}

TEST(GlobalConfig, KeysThatThreadsAddAtTheSameTimeAreAllKept) {
  constexpr int threadCount = 4;
  constexpr int keysEach = 400;
  const auto keyOf = [](int thread, int number) {
    return "PLATFORM_TEST_ADDED_" + std::to_string(thread) + "_" + std::to_string(number);
  };
  std::vector<std::thread> threads;
  for (int index = 0; index < threadCount; ++index) {
    threads.emplace_back([&, index] {
      for (int number = 0; number < keysEach; ++number) {
        SetGlobalConfigValue(keyOf(index, number), number);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (int index = 0; index < threadCount; ++index) {
    for (int number = 0; number < keysEach; ++number) {
      EXPECT_EQ(GetGlobalConfigValue(keyOf(index, number), -1), number) << index;
    }
  }
}

TEST(GlobalConfig, ThreadsSetAndReadAtTheSameTime) {
  constexpr int threadCount = 8;
  std::vector<std::thread> threads;
  std::vector<int> seen(threadCount, -1);
  for (int index = 0; index < threadCount; ++index) {
    threads.emplace_back([index, &seen] {
      const std::string own = "PLATFORM_TEST_THREAD_" + std::to_string(index);
      for (int count = 0; count <= 500; ++count) {
        SetGlobalConfigValue("PLATFORM_TEST_SHARED", index);
        SetGlobalConfigValue(own, count);
        seen[static_cast<std::size_t>(index)] = GetGlobalConfigValue(own, -1);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_THAT(seen, testing::Each(500));
  EXPECT_LT(GetGlobalConfigValue("PLATFORM_TEST_SHARED", 42), threadCount);
}

}  // namespace
}  // namespace Tavrin
