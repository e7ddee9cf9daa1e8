#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "tests/doubles/PlatformDouble.h"

namespace Tavrin::Double {

/// A test with a platform of its own, whose script has to be played to its end.
class PlatformTest : public ::testing::Test {
 protected:
  PlatformTest() {
    OnComplaint([](const std::string& text) { ADD_FAILURE() << text; });
    platform = Platform{};
  }
  void TearDown() override { ExpectScriptPlayed(); }

  /// Expects that nothing of the script is left, and no connection open.
  void ExpectScriptPlayed() const {
    EXPECT_EQ(platform.exchangesScripted, platform.script.size())
        << "exchanges begun, and exchanges expected";
    EXPECT_EQ(platform.openConnections, 0) << "connections left open";
  }

  /// Runs the operation at each threshold from 0 to 4 and compares the lines it writes with those
  /// of `linesAtThreshold4` that the threshold lets through. Each of them is to ask for the
  /// threshold once, whether or not it is written.
  void ExpectLines(const std::vector<Line>& linesAtThreshold4,
                   const std::function<void()>& operation) {
    for (unsigned int threshold = 0; threshold <= 4; ++threshold) {
      SCOPED_TRACE(threshold);
      platform.ForgetWhatHappened();
      platform.logThreshold = threshold;
      operation();
      std::vector<Line> expected = linesAtThreshold4;
      expected.erase(std::remove_if(expected.begin(), expected.end(),
                                    [=](const Line& line) { return line.level > threshold; }),
                     expected.end());
      EXPECT_EQ(platform.lines, expected);
      EXPECT_EQ(platform.thresholdReads, linesAtThreshold4.size());
    }
  }

  Platform& platform = ThePlatform();
};

}  // namespace Tavrin::Double
