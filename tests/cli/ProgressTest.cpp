#include "tools/smm-inventory/terminal/Progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Tavrin {
namespace {

using Standalone::FailureCause;

constexpr const char* kLibrary = "module/smm/smm_inventory/impl/SMMInventoryImpl";
constexpr const char* kConfig = "platform/standalone/globalconfig/GlobalConfig";

struct Shown {
  explicit Shown(unsigned int shownLevel = 0, bool isTerminal = false)
      : console(out, isTerminal), progress(console, shownLevel) {}

  void Log(unsigned int level, const std::string& source, const std::string& text) {
    progress.LineWritten({level, source, 7, text});
  }
  void Fail(const std::string& words, FailureCause kind = FailureCause::Silence) {
    progress.AttemptFailed({words, kind, 0, ""});
  }

  std::ostringstream out;
  Console console;
  Progress progress;
};

TEST(Progress, AttemptsAreLinesWhereNoTerminalIs) {
  Shown shown;
  shown.progress.WaitBegins("reading");
  shown.progress.AttemptBegins(1, 6);
  shown.progress.AttemptBegins(2, 6);
  shown.progress.WaitEnds();
  EXPECT_EQ(shown.out.str(),
            "reading: attempt 1 of 6, 3 seconds apart ...\n"
            "reading: attempt 2 of 6, 3 seconds apart ...\n");
}

TEST(Progress, FailureIsShownBetweenTheAttempts) {
  Shown shown;
  shown.progress.WaitBegins("selecting");
  shown.progress.AttemptBegins(1, 6);
  shown.Fail("no answer");
  shown.progress.AttemptBegins(6, 6);
  shown.progress.WaitEnds();
  EXPECT_EQ(shown.out.str(),
            "selecting: attempt 1 of 6, 3 seconds apart ...\n"
            "no answer; still trying\n"
            "selecting: attempt 6 of 6, 3 seconds apart ...\n");
}

TEST(Progress, AttemptsReplaceOneAnotherOnATerminal) {
  Shown shown(0, true);
  shown.progress.WaitBegins("reading");
  shown.progress.AttemptBegins(1, 6);
  shown.progress.AttemptBegins(2, 6);
  shown.progress.WaitEnds();
  EXPECT_EQ(shown.out.str(),
            "reading: attempt 1 of 6, 3 seconds apart ..."
            "\r\x1b[Kreading: attempt 2 of 6, 3 seconds apart ..."
            "\r\x1b[K");
}

TEST(Progress, LinesPushTheStatusDownOnATerminal) {
  Shown shown(0, true);
  shown.progress.WaitBegins("reading");
  shown.progress.AttemptBegins(1, 6);
  shown.Fail("no answer");
  EXPECT_EQ(shown.out.str(),
            "reading: attempt 1 of 6, 3 seconds apart ..."
            "\r\x1b[Kno answer; still trying\nreading: attempt 1 of 6, 3 seconds apart ...");
}

TEST(Progress, ClientFailureIsShownAtOnceAndOnlyOnce) {
  Shown shown;
  shown.progress.WaitBegins("reading");
  shown.Fail("no answer");
  EXPECT_EQ(shown.out.str(), "no answer; still trying\n");
  shown.Log(1, kLibrary, "connect failed with error:3");
  shown.Fail("no answer");
  EXPECT_EQ(shown.out.str(), "no answer; still trying\n");
}

TEST(Progress, OtherClientFailureIsShownToo) {
  Shown shown;
  shown.progress.WaitBegins("reading");
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
  shown.progress.WaitBegins("reading");
  shown.Fail("wrong password", FailureCause::PasswordRefused);
  shown.Fail("unknown user", FailureCause::UserNameRefused);
  EXPECT_EQ(shown.out.str(), "");
}

TEST(Progress, WhatWasStoppedOrHasNoTimeLeftIsNotTriedAgain) {
  Shown shown;
  shown.progress.WaitBegins("reading");
  shown.Fail("stopped", FailureCause::Stopped);
  shown.Fail("time is over", FailureCause::TimeOver);
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

TEST(Progress, FailureThatIsShownAsALineIsNotSaidTwice) {
  Shown shown(2);
  shown.progress.WaitBegins("reading");
  shown.Fail("no answer");
  EXPECT_EQ(shown.out.str(), "");
}

TEST(Progress, ErrorsAreLookedAtEvenWhereNoneAreShown) {
  EXPECT_EQ(Shown(0).progress.LogLevel(), 1U);
  EXPECT_EQ(Shown(3).progress.LogLevel(), 3U);
}

TEST(Progress, ErrorThatIsNotAboutTheEnvironmentIsNotShownUnasked) {
  Shown shown;
  shown.Log(1, kLibrary, "connect failed with error:3");
  EXPECT_EQ(shown.out.str(), "");
}

TEST(Progress, ComplaintAboutTheEnvironmentIsAlwaysShown) {
  Shown shown;
  shown.Log(1, kConfig, "IPMI_PRIVILEGE_LEVEL is \"\x1b\"");
  EXPECT_EQ(shown.out.str(), "smm-inventory: IPMI_PRIVILEGE_LEVEL is \"\\x1b\"\n");
}

TEST(Progress, StatusFitsOneRowOfATerminal) {
  Shown shown;
  shown.progress.WaitBegins("reading the SMM's status");
  shown.progress.AttemptBegins(6, 6);
  EXPECT_LE(shown.out.str().size(), 79U);
}

}  // namespace
}  // namespace Tavrin
