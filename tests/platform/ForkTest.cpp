#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/GlobalConfig.h"
#include "platform/Log.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/globalconfig/ThreadConfig.h"
#include "platform/standalone/logger/LogControl.h"
#include "platform/standalone/logger/ThreadLog.h"
#include "tests/platform/ScopedEnvironment.h"

// Children that are forked while other threads log and configure. What they find locked stays so.

namespace Tavrin {
namespace {

void LogOneLine() { Log(1, "some/Source", 1).Stream() << "a line of text"; }

/// A fresh key each time, so that one has to be added.
void UseConfiguration(int number) {
  const std::string key = "PLATFORM_FORK_TEST_" + std::to_string(number);
  Standalone::SetGlobalConfigValue(key, number);
  GetGlobalConfigValue(key, 0);
  GetGlobalConfigValue("PLATFORM_FORK_TEST_MALFORMED", 0);
}

/// Returns whether the thread's own value and handler hold.
bool UseWhatIsTheThreadsOwn(int number) {
  int lines = 0;
  const Standalone::ThreadLog log(4, [&lines](const Standalone::LogLine& /*line*/) { ++lines; });
  Standalone::ThreadConfig config({{"PLATFORM_FORK_TEST_OWN", -1}});
  config.Set("PLATFORM_FORK_TEST_OWN", number);
  LogOneLine();
  return lines == 1 && GetGlobalConfigValue("PLATFORM_FORK_TEST_OWN", -1) == number;
}

/// Threads that do something over and over while they live.
class Busy {
 public:
  Busy(std::size_t count, const std::function<void()>& work) {
    for (std::size_t i = 0; i < count; ++i) {
      threads_.emplace_back([this, work] {
        while (!ends_) {
          work();
        }
      });
    }
  }
  ~Busy() {
    ends_ = true;
    for (std::thread& thread : threads_) {
      thread.join();
    }
  }
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;

 private:
  std::atomic<bool> ends_{false};
  std::vector<std::thread> threads_;
};

/// Sends standard error nowhere while it lives.
class QuietStandardError {
 public:
  QuietStandardError() : before_(dup(STDERR_FILENO)) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDERR_FILENO);
    close(nowhere);
  }
  ~QuietStandardError() {
    dup2(before_, STDERR_FILENO);
    close(before_);
  }
  QuietStandardError(const QuietStandardError&) = delete;
  QuietStandardError& operator=(const QuietStandardError&) = delete;

 private:
  int before_;
};

/// Whether the process ends by itself, and well, within ten seconds.
bool Ends(pid_t process) {
  const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  int status = 0;
  while (waitpid(process, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > giveUp) {
      kill(process, SIGKILL);
      waitpid(process, &status, 0);
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// Forks children that do this, until one hangs.
void ExpectThatChildrenEnd(const std::function<void(int)>& work) {
  constexpr int kChildren = 300;
  bool isSound = true;
  for (int i = 0; i < kChildren && isSound; ++i) {
    const pid_t process = fork();
    if (process == 0) {
      work(i);
      _exit(0);
    }
    isSound = Ends(process);
    EXPECT_TRUE(isSound) << "child " << i;
  }
}

TEST(Fork, ChildrenLogWhileThreadsLogToStandardError) {
  const QuietStandardError quiet;
  const Busy busy(3, LogOneLine);
  ExpectThatChildrenEnd([](int /*number*/) { LogOneLine(); });
}

TEST(Fork, ChildrenLogWhileThreadsLogToAHandler) {
  std::string last;
  Standalone::SetLogLineHandler([&last](const Standalone::LogLine& line) { last = line.text; });
  {
    const Busy busy(3, LogOneLine);
    ExpectThatChildrenEnd([](int /*number*/) { LogOneLine(); });
  }
  Standalone::SetLogLineHandler({});
  EXPECT_EQ(last, "a line of text");
}

TEST(Fork, ChildrenChangeTheHandlerAndTheThresholdWhileThreadsDo) {
  const QuietStandardError quiet;
  const auto change = [] {
    Standalone::SetMinLogLevel(2);
    Standalone::SetLogLineHandler([](const Standalone::LogLine& /*line*/) {});
    Standalone::SetLogLineHandler({});
  };
  const Busy busy(3, change);
  ExpectThatChildrenEnd([&change](int /*number*/) { change(); });
}

TEST(Fork, ChildrenConfigureWhileThreadsDo) {
  const QuietStandardError quiet;
  const ScopedEnvironment malformed("PLATFORM_FORK_TEST_MALFORMED", "no");
  const Busy busy(3, [] { UseConfiguration(-1); });
  ExpectThatChildrenEnd(UseConfiguration);
}

TEST(Fork, ChildrenHaveALogAndValuesOfTheThreadWhileThreadsDo) {
  const Busy busy(3, [] { UseWhatIsTheThreadsOwn(-1); });
  ExpectThatChildrenEnd([](int number) { _exit(UseWhatIsTheThreadsOwn(number) ? 0 : 1); });
}

TEST(Fork, ChildKeepsTheLogAndValuesOfTheThreadThatForked) {
  int lines = 0;
  const Standalone::ThreadLog log(4, [&lines](const Standalone::LogLine& /*line*/) { ++lines; });
  const Standalone::ThreadConfig config({{"PLATFORM_FORK_TEST_KEPT", 1}});
  ExpectThatChildrenEnd([&lines](int /*number*/) {
    LogOneLine();
    _exit(lines == 1 && GetGlobalConfigValue("PLATFORM_FORK_TEST_KEPT", 0) == 1 ? 0 : 1);
  });
  EXPECT_EQ(lines, 0);
}

TEST(Fork, ThreadsHandlerMayForkAndBothSidesGoOn) {
  int lines = 0;
  pid_t process = -1;
  const Standalone::ThreadLog log(
      4, [&](const Standalone::LogLine& /*line*/) { process = ++lines == 1 ? fork() : process; });
  LogOneLine();
  LogOneLine();
  if (process == 0) {
    _exit(lines == 2 ? 0 : 1);
  }
  EXPECT_EQ(lines, 2);
  EXPECT_TRUE(Ends(process));
}

TEST(Fork, WaitsForTheHandlerOfAnotherThread) {
  std::atomic<bool> isCalled{false};
  std::atomic<bool> isDone{false};
  Standalone::SetLogLineHandler([&](const Standalone::LogLine& /*line*/) {
    isCalled = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    isDone = true;
  });
  std::thread logging(LogOneLine);
  while (!isCalled) {
    std::this_thread::yield();
  }
  const pid_t process = fork();
  const bool hasWaited = isDone;
  if (process == 0) {
    _exit(hasWaited ? 0 : 1);
  }
  logging.join();
  Standalone::SetLogLineHandler({});
  EXPECT_TRUE(hasWaited);
  EXPECT_TRUE(Ends(process));
}

TEST(Fork, HandlerMayForkAndBothSidesGoOn) {
  int lines = 0;
  pid_t process = -1;
  Standalone::SetLogLineHandler(
      [&](const Standalone::LogLine& /*line*/) { process = ++lines == 1 ? fork() : process; });
  LogOneLine();
  LogOneLine();
  if (process == 0) {
    _exit(lines == 2 ? 0 : 1);
  }
  Standalone::SetLogLineHandler({});
  EXPECT_EQ(lines, 2);
  EXPECT_TRUE(Ends(process));
}

}  // namespace
}  // namespace Tavrin
