#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "tests/faults/LeftBehind.h"
#include "tests/support/Faults.h"
#include "tests/support/Relay.h"
#include "tests/wire/WireTest.h"

namespace Tavrin {

/// What one query is to come to.
struct Outcome {
  int status = StatusCode::Success;
  std::size_t failedAttempts = 0;      ///< Connection attempts that failed.
  std::chrono::milliseconds bound{0};  ///< The longest time that it may take.
};

/// An enclosure behind a relay, and an object that has read it over a sound wire.
///
/// A connection attempt takes the session time-out when the controller is silent from the start.
/// Opening has five steps, each of which gets the session time-out for its answer, and so do the
/// closing and a request.
class FaultTest : public WireTest {
 protected:
  static constexpr int kAttempts = 3;
  static constexpr std::chrono::milliseconds kSessionTimeout{1800};
  static constexpr std::chrono::milliseconds kSilentConnect = kAttempts * kSessionTimeout;
  static constexpr std::chrono::milliseconds kSilentSend = 2 * kSessionTimeout;
  static constexpr std::chrono::milliseconds kSlowAttempt = 6 * kSessionTimeout;
  static constexpr std::chrono::milliseconds kSlowQuery = kSlowAttempt + kSessionTimeout;
  static constexpr std::chrono::milliseconds kSlowestQuery =
      kAttempts * kSlowAttempt + kSessionTimeout;

  using Query = int (SMMInventory::*)(std::string&);

  FaultTest();

  /// Runs a query and compares what becomes of it; it leaves no descriptor behind. Returns the
  /// status.
  int ExpectQuery(const Outcome& expected, Query query = &SMMInventory::GetSmmMT) {
    return ExpectQuery(inventory, expected, query);
  }
  int ExpectQuery(SMMInventory& object, const Outcome& expected,
                  Query query = &SMMInventory::GetSmmMT);

  /// As many queries as asked for, of which `successes` at least succeed, and each of which takes
  /// at most kSlowestQuery.
  void ExpectMostQueries(int count, int successes);

  /// Ends the controller if it still runs, and puts another one behind the relay.
  void RestartController();

  /// With the fault gone, the same object reads the machine type at the first attempt.
  void ExpectRecovery();

  /// The controller counts no open session.
  void ExpectNoSession() const { EXPECT_EQ(OpenSessions(*simulator), 0); }

  /// An object with those settings, without an attempt to reach them during construction.
  static SMMInventory Unread(const TavrinConnection::ConnectionInfo& settings);

  std::unique_ptr<SimulatedSmm> simulator;
  Relay relay;
  SMMInventory inventory;

 private:
  struct Measured {
    int status;
    std::string text;
    std::chrono::milliseconds took;
  };
  Measured Run(SMMInventory& object, Query query);
  std::size_t DescriptorsOfTheLibrary() const;
  std::size_t FailedAttempts() const;
};

}  // namespace Tavrin
