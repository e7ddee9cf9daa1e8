#include "reading/Observer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <stdexcept>

#include "platform/Log.h"
#include "platform/standalone/logger/LogControl.h"
#include "tests/reading/ScriptedEnclosure.h"

namespace Tavrin {
namespace {

using Double::Exchange;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

using ObserverTest = ScriptedEnclosure;

void WriteLine(unsigned int level, const std::string& text,
               const char* source = "module/smm/smm_inventory/impl/SMMInventoryImpl") {
  if (level <= Log::GetMinLogLevel()) {
    Log(level, source, 7).Stream() << text;
  }
}

TEST_F(ObserverTest, ConstructionIsAWaitOfSixAttempts) {
  settings_.attempts = 1;
  smm_.Lose(kAfterDetection, FailureCause::Silence, "no answer", 1);
  Read();
  EXPECT_THAT(observer_.events,
              ElementsAre("reading the SMM's status", "attempt 1 of 6", "failed: no answer",
                          "attempt 2 of 6", "attempt 3 of 6", "attempt 4 of 6", "attempt 5 of 6",
                          "attempt 6 of 6", "end"));
}

TEST_F(ObserverTest, SelectionIsAWaitOfSixAttempts) {
  smm_.Change("SelectPSU", Refuses());
  SelectPsu(1);
  const auto begin = std::find(observer_.events.begin(), observer_.events.end(), "end");
  EXPECT_THAT(
      std::vector(begin, observer_.events.end()),
      ElementsAre("end", "selecting the PSU", "attempt 1 of 6", "attempt 2 of 6", "attempt 3 of 6",
                  "attempt 4 of 6", "attempt 5 of 6", "attempt 6 of 6", "end"));
}

TEST_F(ObserverTest, WaitEndsWithAnException) {
  smm_.ChangeConstruction(Throws(std::runtime_error("out of order")));
  EXPECT_THROW(Read(), std::runtime_error);
  EXPECT_THAT(observer_.events, ElementsAre("reading the SMM's status", "attempt 1 of 6", "end"));
}

TEST_F(ObserverTest, FailureOutsideAWaitIsToldToo) {
  settings_.attempts = 1;
  smm_.Lose(kAfterBeginning, FailureCause::Silence, "no answer", 1);
  Read({Part::Identity});
  ASSERT_GE(observer_.events.size(), 2U);
  EXPECT_EQ(observer_.events[observer_.events.size() - 2], "end");
  EXPECT_EQ(observer_.events.back(), "failed: no answer");
}

TEST_F(ObserverTest, FailuresAreWarningsAndErrorsOfTheClientAlone) {
  const std::string client = "platform/standalone/ipmi_client/UdpSocket";
  smm_.Change("GetSmmName", [&client](Exchange&) {
    WriteLine(2, "a warning of the library");
    WriteLine(3, "what the client does", client.c_str());
  });
  Read({Part::Identity});
  EXPECT_THAT(observer_.events, Not(Contains(StartsWith("failed"))));
  smm_.Change("GetSmmName", [&client](Exchange&) { WriteLine(2, "a failure", client.c_str()); });
  Read({Part::Identity});
  EXPECT_THAT(observer_.events, Contains(StartsWith("failed")).Times(1));
}

/// Keeps lines and failures in one list.
class LineRecorder : public Recorder {
 public:
  void LineWritten(const Standalone::LogLine& line) override {
    events.push_back("line " + line.text);
  }
};

TEST_F(ObserverTest, FailureIsToldAfterTheLineOfTheClient) {
  LineRecorder observer;
  observer.logLevel = 2;
  settings_.attempts = 1;
  smm_.Lose(0, FailureCause::Silence, "no answer");
  Enclosure(settings_).Read({}, observer);
  ASSERT_GE(observer.events.size(), 2U);
  EXPECT_EQ(observer.events[0], "line failed: no answer");
  EXPECT_EQ(observer.events[1], "failed: no answer");
}

TEST_F(ObserverTest, LinesAreToldUpToTheLevelAskedFor) {
  observer_.logLevel = 2;
  smm_.Change("GetSmmName", [](Exchange&) {
    WriteLine(1, "a\x1b");
    WriteLine(2, "b");
    WriteLine(3, "c");
  });
  Read({Part::Identity});
  EXPECT_THAT(observer_.lines, ElementsAre("a\x1b", "b"));
}

TEST_F(ObserverTest, DebugLinesAreWrittenOnlyForWhoeverAsks) {
  unsigned int threshold = 0;
  smm_.Change("GetSmmName", [&threshold](Exchange&) { threshold = Log::GetMinLogLevel(); });
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
  smm_.Change("GetSmmName", [](Exchange&) { WriteLine(1, "of the pass"); });
  Read({Part::Identity});
  WriteLine(1, "afterwards");
  Standalone::SetLogLineHandler({});
  EXPECT_THAT(lines, ElementsAre("afterwards"));
}

TEST_F(ObserverTest, ObserverThatOverridesNothingIsToldNothing) {
  smm_.Lose(kAfterDetection, FailureCause::Silence, "no answer", 1);
  Observer nobody;
  EXPECT_EQ(nobody.LogLevel(), 0U);
  EXPECT_TRUE(Enclosure(settings_).Read({}, nobody).detection);
}

}  // namespace
}  // namespace Tavrin
