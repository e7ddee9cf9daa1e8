#include "tests/unit/PlatformTest.h"

#include <algorithm>
#include <iterator>

namespace Tavrin::Double {

PlatformTest::PlatformTest() {
  OnComplaint([](const std::string& text) { ADD_FAILURE() << text; });
  StartAnew();
}

void PlatformTest::StartAnew() { platform = Platform{}; }

void PlatformTest::ExpectScriptPlayed() const {
  EXPECT_EQ(platform.exchangesScripted, platform.script.size())
      << "exchanges begun, and exchanges expected";
  EXPECT_EQ(platform.openConnections, 0) << "connections left open";
}

void PlatformTest::ExpectLines(const std::vector<Line>& linesAtThreshold4,
                               const std::function<void()>& operation) {
  for (unsigned int threshold = 0; threshold <= 4; ++threshold) {
    platform.ForgetWhatHappened();
    platform.logThreshold = threshold;
    operation();
    std::vector<Line> expected;
    std::copy_if(linesAtThreshold4.begin(), linesAtThreshold4.end(), std::back_inserter(expected),
                 [=](const Line& line) { return line.level <= threshold; });
    EXPECT_THAT(platform.lines, ::testing::ElementsAreArray(expected)) << "threshold " << threshold;
    EXPECT_EQ(platform.thresholdReads, linesAtThreshold4.size()) << "threshold " << threshold;
  }
}

}  // namespace Tavrin::Double
