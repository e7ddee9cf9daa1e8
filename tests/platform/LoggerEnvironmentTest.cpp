#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "platform/Log.h"
#include "platform/standalone/logger/LogControl.h"
#include "platform/standalone/logger/ThreadLog.h"

// The threshold is read off the environment once, so each of these has processes of its own.

namespace Tavrin {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

class LoggerEnvironment : public testing::Test {
 protected:
  LoggerEnvironment() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  /// A null pointer stands for none. What hangs is killed.
  static void SetThreshold(const char* text) {
    constexpr unsigned int kPatience = 10;
    alarm(kPatience);
    text == nullptr ? unsetenv("TAVRIN_LOG_LEVEL") : setenv("TAVRIN_LOG_LEVEL", text, 1);
  }

  /// Prints the threshold that the environment gives, asked for twice, and writes one line.
  [[noreturn]] static void Probe(const char* threshold) {
    SetThreshold(threshold);
    const unsigned int first = Log::GetMinLogLevel();
    std::cerr << "threshold " << first << "\nagain " << Log::GetMinLogLevel() << '\n';
    Log(2, "somewhere/Source", 12).Stream() << "red \x1b[31mtext\nforged";
    std::_Exit(EXIT_SUCCESS);
  }

  [[noreturn]] static void WriteHandledLine() {
    Log(2, "somewhere/Source", 12).Stream() << "handled";
    std::_Exit(EXIT_SUCCESS);
  }

  static void Print(const Standalone::LogLine& line) {
    std::cerr << Log::GetMinLogLevel() << ": " << line.text << '\n';
  }
};
using LoggerThreshold = LoggerEnvironment;
using LoggerSink = LoggerEnvironment;

struct ThresholdCase {
  const char* threshold;
  const char* expected;
};

TEST_F(LoggerThreshold, EnvironmentSetsIt) {
  const ThresholdCase rows[] = {{nullptr, "threshold 1\n"}, {"0", "threshold 0\n"},
                                {"1", "threshold 1\n"},     {"2", "threshold 2\n"},
                                {"3", "threshold 3\n"},     {"4", "threshold 4\n"}};
  for (const ThresholdCase& row : rows) {
    EXPECT_EXIT(Probe(row.threshold), ExitedWithCode(EXIT_SUCCESS),
                AllOf(HasSubstr(row.expected), Not(HasSubstr("expected 0 (off)"))));
  }
}

TEST_F(LoggerThreshold, MalformedValueLeavesOneAndIsReported) {
  for (const char* value : {"", "5", "-1", "2 ", " 2", "+2", "0x2", "2x", "debug", "4294967297"}) {
    EXPECT_EXIT(
        Probe(value), ExitedWithCode(EXIT_SUCCESS),
        AllOf(HasSubstr("threshold 1\n"), HasSubstr("again 1\n"),
              HasSubstr(" error platform/standalone/logger/Log:"),
              HasSubstr(std::string("TAVRIN_LOG_LEVEL is \"") + value +
                        "\"; expected 0 (off), 1 (error), 2 (warning), 3 (info) or 4 (debug); "
                        "1 holds\n")));
  }
}

TEST_F(LoggerThreshold, MalformedValueIsReportedOnlyOnce) {
  EXPECT_EXIT(Probe("loud"), ExitedWithCode(EXIT_SUCCESS),
              AllOf(HasSubstr("expected 0 "), Not(ContainsRegex("expected 0 .*expected 0 "))));
}

TEST_F(LoggerThreshold, HandlerMayAskForItBeforeAMalformedValueWasReported) {
  const auto write = [] {
    SetThreshold("loud");
    Standalone::SetLogLineHandler(Print);
    WriteHandledLine();
  };
  EXPECT_EXIT(write(), ExitedWithCode(EXIT_SUCCESS),
              MatchesRegex("1: TAVRIN_LOG_LEVEL is \"loud\"; [^\n]*\n1: handled\n"));
}

TEST_F(LoggerThreshold, MalformedValueIsNotLookedAtWhereAThreadHasItsOwn) {
  const auto write = [] {
    SetThreshold("loud");
    const Standalone::ThreadLog own(3, Print);
    WriteHandledLine();
  };
  EXPECT_EXIT(write(), ExitedWithCode(EXIT_SUCCESS), testing::Eq("3: handled\n"));
}

TEST_F(LoggerThreshold, MalformedValueIsReportedAlsoWhereAnotherOneIsSet) {
  const auto probe = [] {
    SetThreshold("loud");
    Standalone::SetMinLogLevel(3);
    Probe("loud");
  };
  EXPECT_EXIT(probe(), ExitedWithCode(EXIT_SUCCESS),
              AllOf(HasSubstr("TAVRIN_LOG_LEVEL is \"loud\""), HasSubstr("threshold 3\n")));
}

TEST_F(LoggerSink, LineShowsTimeLevelSourceAndEscapedTextWithoutColours) {
  EXPECT_EXIT(Probe("0"), ExitedWithCode(EXIT_SUCCESS),
              MatchesRegex("threshold 0\nagain 0\n"
                           "[0-9]+-[0-9]+-[0-9]+ [0-9]+:[0-9]+:[0-9]+.[0-9]+ warning "
                           "somewhere/Source:12: red \\\\x1b\\[31mtext\\\\nforged\n"));
}

TEST_F(LoggerSink, ClosedStandardErrorDoesNoHarm) {
  const auto write = [] {
    SetThreshold("1");
    close(STDERR_FILENO);
    WriteHandledLine();
  };
  EXPECT_EXIT(write(), ExitedWithCode(EXIT_SUCCESS), "");
}

}  // namespace
}  // namespace Tavrin
