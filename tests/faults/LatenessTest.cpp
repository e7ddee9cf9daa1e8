#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "platform/standalone/globalconfig/ConfigControl.h"
#include "tests/faults/FaultTest.h"

namespace Tavrin {
namespace {

using std::chrono::milliseconds;

/// An exchange has so many round trips.
constexpr int kRoundTrips = 7;
constexpr milliseconds kDefaultTimeout{4500};

/// Answers that come late, by so many thousandths of the default session time-out.
class Lateness : public FaultTest, public testing::WithParamInterface<int> {
 protected:
  Lateness() { Standalone::SetGlobalConfigValue("IPMI_RETRANSMISSION_TIMEOUT_MS", 0); }

  /// Reads with answers that come as late as the parameter says, and expects that a later query
  /// asks each question once. On a busy machine the first of them may be held up.
  void ExpectQueriesThatLearn(milliseconds sessionTimeout) {
    Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS",
                                     static_cast<int>(sessionTimeout.count()));
    const milliseconds late = GetParam() * sessionTimeout / kDefaultTimeout.count();
    relay.Break([this, delayed = Delayed(late)](const Datagram& datagram) {
      asked += datagram.direction == Direction::ToController ? 1 : 0;
      return delayed(datagram);
    });
    ExpectQuery({StatusCode::Success, 0, 2 * kRoundTrips * late});
    asked = 0;
    for (int query = 0; query < 3 && asked != kRoundTrips; ++query) {
      asked = 0;
      ExpectQuery({StatusCode::Success, 0, 2 * kRoundTrips * late});
    }
    EXPECT_EQ(asked, kRoundTrips);
    ExpectNoSession();
  }

  std::atomic<int> asked{0};
};

TEST_P(Lateness, IsOnlyTime) { ExpectQueriesThatLearn(kDefaultTimeout / 3); }

using LatenessWithTheDefaults = Lateness;

TEST_P(LatenessWithTheDefaults, IsOnlyTime) { ExpectQueriesThatLearn(kDefaultTimeout); }

const auto kLatenesses = testing::Values(0, 100, 400, 600, 900, 1200, 2000);

INSTANTIATE_TEST_SUITE_P(Milliseconds, Lateness, kLatenesses, testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(Milliseconds, LatenessWithTheDefaults, kLatenesses,
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace Tavrin
