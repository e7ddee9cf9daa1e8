#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "tests/doubles/PlatformDouble.h"

namespace Tavrin::Double {

/// A test with a platform of its own, whose script has to be played to its end.
class PlatformTest : public ::testing::Test {
 protected:
  PlatformTest();
  void TearDown() override { ExpectScriptPlayed(); }

  /// Makes the platform what it is at the beginning of a test.
  void StartAnew();

  /// Expects that nothing of the script is left, and no connection open.
  void ExpectScriptPlayed() const;

  /// Runs the operation at each threshold from 0 to 4 and compares the lines it writes with those
  /// of `linesAtThreshold4` that the threshold lets through. Each of them is to ask for the
  /// threshold once, whether or not it is written.
  void ExpectLines(const std::vector<Line>& linesAtThreshold4,
                   const std::function<void()>& operation);

  Platform& platform = ThePlatform();
};

}  // namespace Tavrin::Double
