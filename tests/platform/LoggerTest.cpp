#include <gmock/gmock.h>

#include <locale>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/Log.h"
#include "tests/platform/LogCapture.h"

namespace Tavrin {
namespace {

using testing::Each;
using testing::Field;
using testing::SizeIs;

TEST(EscapeControlBytes, IsThereForProgramsOutside) {
  EXPECT_EQ(Standalone::EscapeControlBytes("a\n\x1b\\"), "a\\n\\x1b\\\\");
}

TEST(Log, HandlerGetsEveryPartOfTheLineUnescaped) {
  const LogCapture capture;
  Log(3, "some/Source", 77).Stream() << "text " << 5 << '\x1b';
  ASSERT_THAT(capture.lines, SizeIs(1));
  EXPECT_EQ(capture.lines[0].level, 3U);
  EXPECT_EQ(capture.lines[0].source, "some/Source");
  EXPECT_EQ(capture.lines[0].line, 77U);
  EXPECT_EQ(capture.lines[0].text, "text 5\x1b");
}

TEST(Log, LineIsHandedOnOnlyWhenDestroyed) {
  const LogCapture capture;
  {
    Log log(1, "some/Source", 1);
    log.Stream() << "half";
    EXPECT_THAT(capture.lines, SizeIs(0));
    log.Stream() << " whole";
  }
  ASSERT_THAT(capture.lines, SizeIs(1));
  EXPECT_EQ(capture.lines[0].text, "half whole");
}

TEST(Log, WrittenLineGoesOutWhateverTheThreshold) {
  const LogCapture capture(0);
  Log(4, "some/Source", 1).Stream() << "kept";
  EXPECT_THAT(capture.lines, SizeIs(1));
}

TEST(Log, EmptyHandlerRestoresStandardError) {
  { const LogCapture replaced; }
  testing::internal::CaptureStderr();
  Log(1, "some/Source", 9).Stream() << "plain";
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::EndsWith("error some/Source:9: plain\n"));
}

TEST(Log, LevelsAreNamedOnStandardError) {
  const std::vector<std::string> names = {"error", "error", "warning", "info",
                                          "debug", "debug", "debug"};
  for (unsigned int level = 0; level < names.size(); ++level) {
    testing::internal::CaptureStderr();
    Log(level, "some/Source", 9).Stream() << "plain";
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::EndsWith(names[level] + " some/Source:9: plain\n"));
  }
}

TEST(Log, LineThatAHandlerTakesIsNotWrittenAsWell) {
  const LogCapture capture;
  testing::internal::CaptureStderr();
  Log(1, "some/Source", 9).Stream() << "handled";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Log, ThresholdSetAtRunTimeIsCappedAtDebug) {
  const LogCapture capture(2);
  EXPECT_EQ(Log::GetMinLogLevel(), 2U);
  Standalone::SetMinLogLevel(0);
  EXPECT_EQ(Log::GetMinLogLevel(), 0U);
  Standalone::SetMinLogLevel(9);
  EXPECT_EQ(Log::GetMinLogLevel(), 4U);
}

TEST(Log, ExceptionOfTheHandlerStaysInside) {
  const LogCapture restoresAtTheEnd;
  Standalone::SetLogLineHandler(
      [](const Standalone::LogLine&) { throw std::runtime_error("handler"); });
  EXPECT_NO_THROW(Log(1, "some/Source", 1).Stream() << "lost");
}

/// Groups digits, as many a national locale does.
struct Grouping : std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(Log, NumbersReadTheSameUnderAnyGlobalLocale) {
  const LogCapture capture;
  const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
  Log(1, "some/Source", 1).Stream() << 1234567;
  std::locale::global(before);
  ASSERT_THAT(capture.lines, SizeIs(1));
  EXPECT_EQ(capture.lines[0].text, "1234567");
}

TEST(Log, LinesOfManyThreadsArriveWholeAndOneAtATime) {
  constexpr std::size_t threadCount = 8;
  constexpr std::size_t linesEach = 200;
  const std::string text(300, 'x');
  const LogCapture capture;
  std::vector<std::thread> threads;
  for (std::size_t index = 0; index < threadCount; ++index) {
    threads.emplace_back([&text] {
      for (std::size_t count = 0; count < linesEach; ++count) {
        Log(1, "some/Source", 1).Stream() << text;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_THAT(capture.lines, SizeIs(threadCount * linesEach));
  EXPECT_THAT(capture.lines, Each(Field(&Standalone::LogLine::text, text)));
}

}  // namespace
}  // namespace Tavrin
