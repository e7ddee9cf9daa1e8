#pragma once

#include <gtest/gtest.h>

#include <string>

namespace Tavrin {

/// Why no socket can be bound to ::1, or nothing when one can.
std::string Ipv6LoopbackObstacle();

/// A fixture for tests that need ::1. Containers often have IPv6 switched off; there the tests are
/// reported as skipped.
template <typename Fixture = testing::Test>
class Ipv6Test : public Fixture {
 protected:
  void SetUp() override {
    Fixture::SetUp();
    const std::string obstacle = Ipv6LoopbackObstacle();
    if (!obstacle.empty()) {
      GTEST_SKIP() << obstacle;
    }
  }
};

}  // namespace Tavrin
