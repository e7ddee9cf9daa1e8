#include "tools/smm-inventory/Progress.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/cli/ScriptedEnclosure.h"

namespace Tavrin {
namespace {

constexpr const char* kConfig = "platform/standalone/globalconfig/GlobalConfig";

struct Shown {
  explicit Shown(unsigned int shownLevel = 0, bool isTerminal = false)
      : console(out, isTerminal), progress(console, shownLevel) {}

  void Log(unsigned int level, const std::string& source, const std::string& text) {
    progress.Take({level, source, 7, text});
  }
  /// The client's line gives more than the words that people are shown.
  void Fail(const std::string& words, FailureCause cause = FailureCause::Silence) {
    EndUnanswered(cause, words);
    Log(2, kClient, "connect failed: " + words + "; advice in terms of IPMI_KEY");
  }

  std::ostringstream out;
  Console console;
  Progress progress;
};

TEST(Progress, AttemptsAreLinesWhereNoTerminalIs) {
  Shown shown;
  shown.progress.BeginWait("reading");
  shown.Log(3, kLibrary, "Try to get SMM status, retry 1 time");
  shown.Log(3, kLibrary, "Try to get SMM status, retry 2 times");
  shown.progress.EndWait();
  EXPECT_EQ(shown.out.str(),
            "reading: attempt 1 of 6, 3 seconds apart ...\n"
            "reading: attempt 2 of 6, 3 seconds apart ...\n");
}

TEST(Progress, AttemptsOfThePsuSelectionAreShownTheSameWay) {
  Shown shown;
  shown.progress.BeginWait("selecting");
  shown.Log(3, kLibrary, "Try to get PSU status, start retry 1 time");
  shown.Fail("no answer");
  shown.Log(3, kLibrary, "Try to get PSU status, start retry 6 times");
  shown.progress.EndWait();
  EXPECT_EQ(shown.out.str(),
            "selecting: attempt 1 of 6, 3 seconds apart ...\n"
            "no answer; still trying\n"
            "selecting: attempt 6 of 6, 3 seconds apart ...\n");
}

TEST(Progress, AttemptsReplaceOneAnotherOnATerminal) {
  Shown shown(0, true);
  shown.progress.BeginWait("reading");
  shown.Log(3, kLibrary, "Try to get SMM status, retry 1 time");
  shown.Log(3, kLibrary, "Try to get SMM status, retry 2 times");
  shown.progress.EndWait();
  EXPECT_EQ(shown.out.str(),
            "reading: attempt 1 of 6, 3 seconds apart ..."
            "\r\x1b[Kreading: attempt 2 of 6, 3 seconds apart ..."
            "\r\x1b[K");
}

TEST(Progress, LinesPushTheStatusDownOnATerminal) {
  Shown shown(0, true);
  shown.progress.BeginWait("reading");
  shown.Log(3, kLibrary, "Try to get SMM status, retry 1 time");
  shown.Fail("no answer");
  EXPECT_EQ(shown.out.str(),
            "reading: attempt 1 of 6, 3 seconds apart ..."
            "\r\x1b[Kno answer; still trying\nreading: attempt 1 of 6, 3 seconds apart ...");
}

TEST(Progress, ClientFailureIsShownAtOnceAndOnlyOnce) {
  Shown shown;
  shown.progress.BeginWait("reading");
  shown.Fail("no answer");
  EXPECT_EQ(shown.out.str(), "no answer; still trying\n");
  shown.Log(1, kLibrary, "connect failed with error:3");
  shown.Fail("no answer");
  EXPECT_EQ(shown.out.str(), "no answer; still trying\n");
}

TEST(Progress, OtherClientFailureIsShownToo) {
  Shown shown;
  shown.progress.BeginWait("reading");
  shown.Fail("no answer");
  shown.Fail("no session is free");
  EXPECT_EQ(shown.out.str(), "no answer; still trying\nno session is free; still trying\n");
}

TEST(Progress, ClientFailureOutsideAWaitIsNotShown) {
  Shown shown;
  shown.Fail("no answer");
  EXPECT_EQ(shown.out.str(), "");
}

TEST(Progress, RefusedLoginIsNotTriedAgain) {
  Shown shown;
  shown.progress.BeginWait("reading");
  shown.Fail("wrong password", FailureCause::PasswordRefused);
  shown.Fail("unknown user", FailureCause::UserNameRefused);
  EXPECT_EQ(shown.out.str(), "");
}

TEST(Progress, LogLinesUpToTheShownLevelAreShownEscaped) {
  Shown shown(3);
  shown.Log(1, kLibrary, "\x1b[2Jforged\nline");
  shown.Log(2, kLibrary, "b");
  shown.Log(3, kLibrary, "c");
  shown.Log(4, kLibrary, "d");
  const std::string source = kLibrary;
  EXPECT_EQ(shown.out.str(), "[error] " + source + ":7: \\x1b[2Jforged\\nline\n[warning] " +
                                 source + ":7: b\n[info] " + source + ":7: c\n");
}

TEST(Progress, ShownLogLineIsNotSaidTwice) {
  Shown shown(2);
  shown.progress.BeginWait("reading");
  shown.Fail("no answer");
  EXPECT_EQ(shown.out.str(), "[warning] " + std::string(kClient) +
                                 ":7: connect failed: no answer; advice in terms of IPMI_KEY\n");
}

TEST(Progress, ComplaintAboutTheEnvironmentIsAlwaysShown) {
  Shown shown;
  shown.Log(1, kConfig, "IPMI_PRIVILEGE_LEVEL is \"\x1b\"");
  EXPECT_EQ(shown.out.str(), "smm-inventory: IPMI_PRIVILEGE_LEVEL is \"\\x1b\"\n");
}

TEST(Progress, StatusFitsOneRowOfATerminal) {
  Shown shown;
  shown.progress.BeginWait("reading the SMM's status");
  shown.Log(3, kLibrary, "Try to get SMM status, retry 6 times");
  EXPECT_LE(shown.out.str().size(), 79U);
}

}  // namespace
}  // namespace Tavrin
