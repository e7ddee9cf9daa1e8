#pragma once

#include <gtest/gtest.h>

#include <system_error>

#include "tests/support/UdpPort.h"

namespace Tavrin {

/// A fixture for tests that need ::1. Containers often have IPv6 switched off; there the tests are
/// reported as skipped.
template <typename Fixture = testing::Test>
class Ipv6Test : public Fixture {
 protected:
  void SetUp() override {
    Fixture::SetUp();
    try {
      const UdpPort trial("::1");
    } catch (const std::system_error& obstacle) {
      GTEST_SKIP() << obstacle.what();
    }
  }
};

}  // namespace Tavrin
