#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

/// What a shell command prints on its standard output.
std::string RunShell(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string output;
  std::array<char, 256> chunk{};
  while (std::fgets(chunk.data(), chunk.size(), pipe.get()) != nullptr) {
    output += chunk.data();
  }
  return output;
}

/// What the probe prints on both its outputs with `assignments` before it on the command line.
std::string RunProbe(const std::string& assignments) {
  return RunShell(assignments + " " LOGGER_PROBE " 2>&1");
}

struct Row {
  const char* assignment;
  const char* expected;
};

TEST(LoggerThreshold, EnvironmentSetsIt) {
  const Row rows[] = {
      {"env -u TAVRIN_LOG_LEVEL", "threshold 1\n"}, {"TAVRIN_LOG_LEVEL=0", "threshold 0\n"},
      {"TAVRIN_LOG_LEVEL=1", "threshold 1\n"},      {"TAVRIN_LOG_LEVEL=2", "threshold 2\n"},
      {"TAVRIN_LOG_LEVEL=3", "threshold 3\n"},      {"TAVRIN_LOG_LEVEL=4", "threshold 4\n"},
  };
  for (const Row& row : rows) {
    EXPECT_THAT(RunProbe(row.assignment),
                AllOf(HasSubstr(row.expected), Not(HasSubstr("expected 0 (off)"))))
        << row.assignment;
  }
}

TEST(LoggerThreshold, MalformedValueLeavesOneAndIsReported) {
  for (const char* value : {"", "5", "-1", "2 ", " 2", "+2", "0x2", "2x", "debug", "4294967297"}) {
    EXPECT_THAT(
        RunProbe(std::string("TAVRIN_LOG_LEVEL='") + value + "'"),
        AllOf(HasSubstr("threshold 1\n"), HasSubstr("again 1\n"),
              HasSubstr(" error platform/standalone/logger/Log:"),
              HasSubstr(std::string("TAVRIN_LOG_LEVEL is \"") + value +
                        "\"; expected 0 (off), 1 (error), 2 (warning), 3 (info) or 4 (debug); "
                        "1 holds\n")))
        << value;
  }
}

TEST(LoggerThreshold, MalformedValueIsReportedOnlyOnce) {
  const std::string output = RunProbe("TAVRIN_LOG_LEVEL=loud");
  const std::size_t first = output.find("expected 0 (off)");
  ASSERT_NE(first, std::string::npos);
  EXPECT_EQ(output.find("expected 0 (off)", first + 1), std::string::npos);
}

TEST(LoggerThreshold, HandlerMayAskForItBeforeAMalformedValueWasReported) {
  EXPECT_THAT(RunShell("TAVRIN_LOG_LEVEL=loud timeout 10 " LOGGER_PROBE " handler"),
              MatchesRegex("1: TAVRIN_LOG_LEVEL is \"loud\"; [^\n]*\n1: handled\n"));
}

TEST(LoggerThreshold, MalformedValueIsNotLookedAtWhereAThreadHasItsOwn) {
  EXPECT_EQ(RunShell("TAVRIN_LOG_LEVEL=loud " LOGGER_PROBE " thread 2>&1"), "3: handled\n");
}

TEST(LoggerThreshold, MalformedValueIsReportedAlsoWhereAnotherOneIsSet) {
  EXPECT_THAT(RunShell("TAVRIN_LOG_LEVEL=loud " LOGGER_PROBE " set 2>&1"),
              AllOf(HasSubstr("TAVRIN_LOG_LEVEL is \"loud\""), HasSubstr("threshold 3\n")));
}

TEST(LoggerSink, LineShowsTimeLevelSourceAndEscapedTextWithoutColours) {
  EXPECT_THAT(RunProbe("TAVRIN_LOG_LEVEL=0"),
              MatchesRegex("threshold 0\nagain 0\n"
                           "[0-9]+-[0-9]+-[0-9]+ [0-9]+:[0-9]+:[0-9]+.[0-9]+ warning "
                           "somewhere/Source:12: red \\\\x1b\\[31mtext\\\\nforged\n"));
}

TEST(LoggerSink, ClosedStandardErrorDoesNoHarm) {
  EXPECT_THAT(RunShell(LOGGER_PROBE " 2>&-"), HasSubstr("again 1\n"));
}

}  // namespace
