#include "reading/Observer.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "platform/standalone/logger/LogControl.h"
#include "tests/reading/ScriptedEnclosure.h"

namespace Tavrin {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using ObserverTest = ScriptedEnclosure;

TEST_F(ObserverTest, ConstructionIsAWaitOfSixAttempts) {
  TheScript().construct = [] {
    WriteLine(3, kLibrary, "Try to get SMM status, retry 1 time");
    LoseConnection(FailureCause::Silence, "no answer");
    WriteLine(3, kLibrary, "Try to get SMM status, retry 6 times");
    EndAnswered(0, 14);
  };
  Read();
  EXPECT_THAT(observer_.events, ElementsAre("reading the SMM's status", "attempt 1 of 6",
                                            "failed: no answer", "attempt 6 of 6", "end"));
}

TEST_F(ObserverTest, SelectionIsAWaitOfSixAttempts) {
  TheScript().selectPsu = [](int) {
    WriteLine(3, kLibrary, "Try to get PSU status, start retry 2 times");
    return StatusCode::Success;
  };
  SelectPsu(1);
  EXPECT_THAT(observer_.events, ElementsAre("reading the SMM's status", "end", "selecting the PSU",
                                            "attempt 2 of 6", "end"));
}

TEST_F(ObserverTest, WaitEndsWithAnException) {
  TheScript().construct = [] { throw std::runtime_error("out of order"); };
  EXPECT_THROW(Read(), std::runtime_error);
  EXPECT_THAT(observer_.events, ElementsAre("reading the SMM's status", "end"));
}

TEST_F(ObserverTest, FailureOutsideAWaitIsToldToo) {
  TheScript().name = [](std::string&) {
    return LoseConnection(FailureCause::Silence, "no answer");
  };
  Read({Part::Identity});
  EXPECT_THAT(observer_.events,
              ElementsAre("reading the SMM's status", "end", "failed: no answer"));
}

TEST_F(ObserverTest, LinesAreToldUpToTheLevelAskedFor) {
  observer_.logLevel = 2;
  TheScript().name = [](std::string&) {
    WriteLine(1, kLibrary, "a\x1b");
    WriteLine(2, kLibrary, "b");
    WriteLine(3, kLibrary, "c");
    return StatusCode::Success;
  };
  Read({Part::Identity});
  EXPECT_THAT(observer_.lines, ElementsAre("a\x1b", "b"));
}

TEST_F(ObserverTest, DebugLinesAreWrittenOnlyForWhoeverAsks) {
  unsigned int threshold = 0;
  TheScript().name = [&threshold](std::string&) {
    threshold = Log::GetMinLogLevel();
    return StatusCode::Success;
  };
  Read({Part::Identity});
  EXPECT_EQ(threshold, 3U);
  observer_.logLevel = 4;
  Read({Part::Identity});
  EXPECT_EQ(threshold, 4U);
}

TEST_F(ObserverTest, LinesOfAPassDoNotReachTheHandlerOfTheProcess) {
  std::vector<std::string> lines;
  Standalone::SetLogLineHandler(
      [&lines](const Standalone::LogLine& line) { lines.push_back(line.text); });
  TheScript().name = [](std::string&) {
    WriteLine(1, kLibrary, "of the pass");
    return StatusCode::Success;
  };
  Read({Part::Identity});
  WriteLine(1, kLibrary, "afterwards");
  Standalone::SetLogLineHandler({});
  EXPECT_THAT(lines, ElementsAre("afterwards"));
}

TEST_F(ObserverTest, ObserverThatOverridesNothingIsToldNothing) {
  TheScript().construct = [] {
    WriteLine(3, kLibrary, "Try to get SMM status, retry 1 time");
    LoseConnection(FailureCause::Silence, "no answer");
    EndAnswered(0, 14);
  };
  Observer nobody;
  EXPECT_TRUE(Enclosure(EnclosureSettings()).Read({}, nobody).detection);
}

}  // namespace
}  // namespace Tavrin
