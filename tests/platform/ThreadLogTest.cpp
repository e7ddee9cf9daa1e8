#include "platform/standalone/logger/ThreadLog.h"

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/GlobalConfig.h"
#include "platform/Log.h"
#include "tests/platform/LogCapture.h"
#include "tests/platform/ScopedEnvironment.h"

namespace Tavrin {
namespace {

using Standalone::LogLine;
using Standalone::ThreadLog;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::SizeIs;

using Lines = std::vector<LogLine>;

std::function<void(const LogLine&)> Into(Lines& lines) {
  return [&lines](const LogLine& line) { lines.push_back(line); };
}

void Write(const std::string& text, unsigned int level = 1) {
  Log(level, "some/Source", 7).Stream() << text;
}

/// As those write who keep to the threshold.
void WriteAtEveryLevel(const std::string& text) {
  for (unsigned int level = 1; level <= 4; ++level) {
    if (Log::GetMinLogLevel() >= level) {
      Write(text, level);
    }
  }
}

auto HasText(const std::string& text) { return Field(&LogLine::text, text); }

TEST(ThreadLog, LineGoesToTheThreadsHandlerUnescapedAndToNothingElse) {
  const LogCapture process;
  Lines lines;
  {
    const ThreadLog own(4, Into(lines));
    Log(3, "some/Source", 77).Stream() << "text " << 5 << '\x1b';
  }
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_EQ(lines[0].level, 3U);
  EXPECT_EQ(lines[0].source, "some/Source");
  EXPECT_EQ(lines[0].line, 77U);
  EXPECT_EQ(lines[0].text, "text 5\x1b");
  EXPECT_THAT(process.lines, IsEmpty());
}

TEST(ThreadLog, NothingReachesStandardError) {
  Lines lines;
  testing::internal::CaptureStderr();
  {
    const ThreadLog own(4, Into(lines));
    Write("own");
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_THAT(lines, SizeIs(1));
}

TEST(ThreadLog, ThresholdHoldsOnTheThreadWhateverTheProcessHas) {
  const LogCapture process(2);
  const ThreadLog own(3, {});
  EXPECT_EQ(Log::GetMinLogLevel(), 3U);
  Standalone::SetMinLogLevel(4);
  EXPECT_EQ(Log::GetMinLogLevel(), 3U);
  EXPECT_EQ(std::async(std::launch::async, Log::GetMinLogLevel).get(), 4U);
}

TEST(ThreadLog, ThresholdMayBeOffAndIsCappedAtDebug) {
  const ThreadLog greatest(9, {});
  EXPECT_EQ(Log::GetMinLogLevel(), 4U);
  const ThreadLog off(0, {});
  EXPECT_EQ(Log::GetMinLogLevel(), 0U);
}

TEST(ThreadLog, InnermostHoldsAndTheOuterOnesComeBack) {
  const LogCapture process(1);
  Lines outside;
  Lines inside;
  {
    const ThreadLog outer(2, Into(outside));
    {
      const ThreadLog inner(3, Into(inside));
      EXPECT_EQ(Log::GetMinLogLevel(), 3U);
      Write("inner");
    }
    EXPECT_EQ(Log::GetMinLogLevel(), 2U);
    Write("outer");
  }
  EXPECT_EQ(Log::GetMinLogLevel(), 1U);
  Write("process");
  EXPECT_THAT(inside, ElementsAre(HasText("inner")));
  EXPECT_THAT(outside, ElementsAre(HasText("outer")));
  EXPECT_THAT(process.lines, ElementsAre(HasText("process")));
}

TEST(ThreadLog, ExceptionEndsItToo) {
  const LogCapture process(1);
  try {
    const ThreadLog own(4, {});
    throw std::runtime_error("left");
  } catch (const std::runtime_error&) {
    Write("process");
  }
  EXPECT_EQ(Log::GetMinLogLevel(), 1U);
  EXPECT_THAT(process.lines, ElementsAre(HasText("process")));
}

TEST(ThreadLog, HandlerThatThrowsLosesTheLineAndNoMore) {
  const LogCapture process;
  int calls = 0;
  const ThreadLog own(4, [&calls](const LogLine& /*line*/) {
    ++calls;
    throw std::runtime_error("handler");
  });
  EXPECT_NO_THROW(Write("lost"));
  EXPECT_NO_THROW(Write("lost, too"));
  EXPECT_EQ(calls, 2);
  EXPECT_THAT(process.lines, IsEmpty());
}

TEST(ThreadLog, EmptyHandlerDropsLines) {
  const LogCapture process;
  const ThreadLog own(4, {});
  EXPECT_NO_THROW(Write("dropped"));
  EXPECT_THAT(process.lines, IsEmpty());
}

TEST(ThreadLog, HandlerMayAskForTheThreshold) {
  unsigned int asked = 9;
  const ThreadLog own(3, [&asked](const LogLine& /*line*/) { asked = Log::GetMinLogLevel(); });
  Write("line");
  EXPECT_EQ(asked, 3U);
}

TEST(ThreadLog, OtherThreadsLinesGoWhereTheyWent) {
  const LogCapture process;
  Lines lines;
  const ThreadLog own(4, Into(lines));
  std::async(std::launch::async, [] { Write("other"); }).get();
  EXPECT_THAT(process.lines, ElementsAre(HasText("other")));
  EXPECT_THAT(lines, IsEmpty());
}

TEST(ThreadLog, LineWrittenAfterItsEndGoesToTheProcess) {
  const LogCapture process;
  Lines lines;
  {
    Log outlives(1, "some/Source", 1);
    { const ThreadLog own(4, Into(lines)); }
    outlives.Stream() << "late";
  }
  EXPECT_THAT(process.lines, ElementsAre(HasText("late")));
  EXPECT_THAT(lines, IsEmpty());
}

TEST(ThreadLog, MalformedConfigurationIsToldToTheThreadThatMetIt) {
  const LogCapture process;
  const ScopedEnvironment environment("PLATFORM_TEST_MET_BY_A_THREAD", "no");
  Lines lines;
  const ThreadLog own(1, Into(lines));
  EXPECT_EQ(GetGlobalConfigValue("PLATFORM_TEST_MET_BY_A_THREAD", 1), 1);
  EXPECT_EQ(GetGlobalConfigValue("PLATFORM_TEST_MET_BY_A_THREAD", 1), 1);
  EXPECT_THAT(lines, SizeIs(1));
  EXPECT_THAT(process.lines, IsEmpty());
}

TEST(ThreadLog, EachOfManyThreadsHasItsOwnLinesAndThreshold) {
  constexpr unsigned int threadCount = 8;
  constexpr std::size_t rounds = 500;
  const LogCapture process;
  std::vector<std::future<Lines>> written;
  for (unsigned int index = 0; index < threadCount; ++index) {
    written.push_back(std::async(std::launch::async, [index] {
      Lines lines;
      const ThreadLog own(index % 5, Into(lines));
      for (std::size_t round = 0; round < rounds; ++round) {
        WriteAtEveryLevel(std::to_string(index));
      }
      return lines;
    }));
  }
  for (unsigned int index = 0; index < threadCount; ++index) {
    const Lines lines = written[index].get();
    EXPECT_THAT(lines, SizeIs(rounds * (index % 5)));
    EXPECT_THAT(lines, Each(HasText(std::to_string(index))));
    EXPECT_THAT(lines, Each(Field(&LogLine::level, testing::Le(index % 5))));
  }
  EXPECT_THAT(process.lines, IsEmpty());
}

/// Something that another thread waits for, though not for ever.
class Signal {
 public:
  void Give() { promise_.set_value(); }
  bool Comes() { return future_.wait_for(std::chrono::seconds(20)) == std::future_status::ready; }

 private:
  std::promise<void> promise_;
  std::future<void> future_ = promise_.get_future();
};

TEST(ThreadLog, HandlersOfTwoThreadsRunAtTheSameTime) {
  Signal inFirst;
  Signal inSecond;
  bool secondCame = false;
  auto first = std::async(std::launch::async, [&] {
    const ThreadLog own(4, [&](const LogLine& /*line*/) {
      inFirst.Give();
      secondCame = inSecond.Comes();
    });
    Write("first");
  });
  bool firstCame = false;
  const ThreadLog own(4, [&](const LogLine& /*line*/) {
    inSecond.Give();
    firstCame = inFirst.Comes();
  });
  Write("second");
  first.get();
  EXPECT_TRUE(firstCame);
  EXPECT_TRUE(secondCame);
}

TEST(ThreadLog, HandlerRunsWhileThatOfTheProcessDoes) {
  Signal inProcess;
  Signal inOwn;
  bool ownCame = false;
  const LogCapture restoresAtTheEnd;
  Standalone::SetLogLineHandler([&](const LogLine& /*line*/) {
    inProcess.Give();
    ownCame = inOwn.Comes();
  });
  auto other = std::async(std::launch::async, [] { Write("process"); });
  ASSERT_TRUE(inProcess.Comes());
  const ThreadLog own(4, [&](const LogLine& /*line*/) { inOwn.Give(); });
  Write("own");
  other.get();
  EXPECT_TRUE(ownCame);
}

}  // namespace
}  // namespace Tavrin
