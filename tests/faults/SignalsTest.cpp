#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "tests/faults/FaultTest.h"
#include "tests/support/Signals.h"

namespace Tavrin {
namespace {

using std::chrono::milliseconds;

struct Interruptions {
  milliseconds period;
  int queries;
  int flags;
};

using CaughtSignal = FaultTest;

TEST_F(CaughtSignal, DoesNotMoveTheEndOfTheWaiting) {
  relay.Break(Silence());
  const Signals signals(milliseconds(1), 0);
  const auto start = std::chrono::steady_clock::now();
  ExpectQuery({StatusCode::NotConnected, kAttempts, kSilentConnect});
  EXPECT_GE(std::chrono::steady_clock::now() - start, kSilentConnect);
}

class CaughtSignals : public FaultTest, public testing::WithParamInterface<Interruptions> {};

TEST_P(CaughtSignals, ChangeNothing) {
  constexpr milliseconds kLate{30};
  relay.Break(Delayed(kLate));
  {
    const Signals signals(GetParam().period, GetParam().flags);
    for (int query = 0; query < GetParam().queries; ++query) {
      ExpectQuery({StatusCode::Success, 0, 7 * kLate});
    }
    EXPECT_GT(signals.Caught(), GetParam().queries * 7 * kLate / GetParam().period / 2);
  }
  ExpectRecovery();
  ExpectNoSession();
}

INSTANTIATE_TEST_SUITE_P(Frequencies, CaughtSignals,
                         testing::Values(Interruptions{milliseconds(1000), 15, SA_RESTART},
                                         Interruptions{milliseconds(10), 10, 0},
                                         Interruptions{milliseconds(1), 10, 0},
                                         Interruptions{milliseconds(1), 10, SA_RESTART}));

}  // namespace
}  // namespace Tavrin
