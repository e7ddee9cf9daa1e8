#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/standalone/logger/LogControl.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {

/// A test over the wire. Sessions open with the workaround that the simulator needs, and silence is
/// noticed after a second; log lines of levels 1 and 2 are collected.
class WireTest : public ::testing::Test {
 protected:
  WireTest();
  ~WireTest() override;

  /// All collected log texts, one a line.
  std::string LogText() const;

  std::vector<Standalone::LogLine> lines;
  std::vector<unsigned int> pauses;  ///< Those that the library asked for, in seconds.
};

}  // namespace Tavrin
