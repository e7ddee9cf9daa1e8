#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/GlobalConfig.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "tests/doubles/Allocations.h"
#include "tests/faults/LeftBehind.h"
#include "tests/platform/ScopedEnvironment.h"
#include "tests/wire/WireTest.h"

// One allocation of an operation fails, each in turn. Where nothing catches that, the process ends,
// and this program with it.

namespace Tavrin {
namespace {

using ::testing::AllOf;
using ::testing::Ge;
using ::testing::Le;

/// Stands for the status of an operation that raises std::bad_alloc instead of returning one.
constexpr int kRaisesBadAlloc = -1;

struct Outcome {
  int status = 0;
  bool hasFailed = false;  ///< The allocation did.
};

Outcome OutcomeAt(std::size_t number, const std::function<int()>& operation) {
  Outcome outcome;
  allocationsUntilFailure = number;
  try {
    outcome.status = operation();
  } catch (const std::bad_alloc&) {
    outcome.status = kRaisesBadAlloc;
  }
  outcome.hasFailed = std::exchange(allocationsUntilFailure, 0) == 0;
  return outcome;
}

/// The parameter is the log level. Lines go to standard error, as in a program that sets nothing.
class Memory : public WireTest, public ::testing::WithParamInterface<unsigned int> {
 protected:
  Memory() {
    Standalone::SetLogLineHandler({});
    Standalone::SetMinLogLevel(GetParam());
    // Nothing is lost here, and a repetition on a busy machine could begin a second session.
    Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS", 20000);
    Standalone::SetGlobalConfigValue("IPMI_RETRANSMISSION_TIMEOUT_MS", 10000);
    testing::internal::CaptureStderr();
  }
  ~Memory() override {
    Standalone::SetGlobalConfigValue("IPMI_RETRANSMISSION_TIMEOUT_MS", 0);
    std::cout << testing::internal::GetCapturedStderr().size() << " bytes of log lines\n";
  }

  /// Fails each allocation of the operation in turn, until it has none to fail and succeeds. Before
  /// that it raises std::bad_alloc or returns a status, and the next query reads the name.
  void ExpectNoHarmTo(const std::function<int()>& operation) {
    const std::size_t descriptors = OpenDescriptors();
    std::size_t failures = 0;
    while (FailsAt(failures + 1, operation)) {
      ++failures;
      std::string name;
      EXPECT_EQ(inventory.GetSmmName(name), StatusCode::Success) << "after failure " << failures;
      EXPECT_EQ(name, "simulated-second-254") << "after failure " << failures;
    }
    std::cout << failures << " allocations\n";
    EXPECT_GT(failures, 0U);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_EQ(OpenSessions(simulator), 0);
  }

  const SimulatedSmm simulator{{"--generation", "2", "--platform", "254"}};
  SMMInventory inventory{SettingsOf(simulator)};

 private:
  /// Runs the operation with the allocation of that number failing; false when there are fewer.
  static bool FailsAt(std::size_t number, const std::function<int()>& operation) {
    const Outcome outcome = OutcomeAt(number, operation);
    EXPECT_THAT(outcome.status, AllOf(Ge(kRaisesBadAlloc), Le(StatusCode::NoUsableResult)));
    EXPECT_TRUE(outcome.hasFailed || outcome.status == StatusCode::Success);
    return outcome.hasFailed;
  }
};

TEST_P(Memory, ConstructionLosesNothingWhenItRunsOut) {
  const TavrinConnection::ConnectionInfo settings = SettingsOf(simulator);
  ExpectNoHarmTo([&settings] {
    const SMMInventory object(settings);
    return StatusCode::Success;
  });
}

TEST_P(Memory, QueryLosesNothingWhenItRunsOut) {
  ExpectNoHarmTo([this] {
    std::string machineType;
    return inventory.GetSmmMT(machineType);
  });
  ExpectNoHarmTo([this] {
    ChassisPowerCap cap;
    return inventory.GetChassisPowerCap(cap);
  });
  ExpectNoHarmTo([this] {
    NodeStatus status;
    return inventory.GetNodeStatus(1, status);
  });
}

TEST_P(Memory, QueryOfEachPsuLosesNothingWhenItRunsOut) {
  ExpectNoHarmTo([this] {
    std::vector<PSUFwInfo> firmware;
    return inventory.GetPSUFwInfo(firmware);
  });
  ExpectNoHarmTo([this] {
    std::vector<PSUFanSpeed> fans;
    return inventory.GetPSUFanSpeed(fans);
  });
  ExpectNoHarmTo([this] {
    std::vector<PSUStatus> flags;
    return inventory.GetPSUStatus(flags);
  });
}

TEST_P(Memory, SelectionLosesNothingWhenItRunsOut) {
  ExpectNoHarmTo([this] { return inventory.SelectPSU(1); });
}

TEST_P(Memory, MalformedSettingIsReportedOrNotAndTheQueryGoesOn) {
  const ScopedEnvironment malformed("IPMI_PRIVILEGE_LEVEL", "no");
  ExpectNoHarmTo([this] {
    std::string name;
    return inventory.GetSmmName(name);
  });
}

TEST(MemoryOfSettings, KeyThatAnotherThreadAddsWhileThereIsRoomMadeForItIsOne) {
  const std::string key = "MEMORY_TEST_ONE";
  // What is made on the first use is there then.
  Standalone::SetGlobalConfigValue("MEMORY_TEST_FIRST", 0);
  onNextAllocation = [] {
    Standalone::SetGlobalConfigValue("MEMORY_TEST_ONE", 1);
    Standalone::SetGlobalConfigValue("MEMORY_TEST_TWO", 2);
  };
  Standalone::SetGlobalConfigValue(key, 3);
  EXPECT_EQ(GetGlobalConfigValue("MEMORY_TEST_ONE", 0), 3);
  EXPECT_EQ(GetGlobalConfigValue("MEMORY_TEST_TWO", 0), 2);
}

INSTANTIATE_TEST_SUITE_P(Log, Memory, ::testing::Values(0U, 4U), [](const auto& level) {
  return std::string(level.param == 0 ? "WithoutALine" : "WithEachLine");
});

}  // namespace
}  // namespace Tavrin
