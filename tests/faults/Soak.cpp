// Queries without end, one in ten over a broken wire, to see that nothing grows.
// usage: soak QUERIES

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "tests/faults/LeftBehind.h"
#include "tests/support/Faults.h"
#include "tests/support/Relay.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {
namespace {

/// The controller keeps a session that was cut off for 30 seconds and has room for 63, so it is
/// started anew before it is full.
constexpr int kQueriesOfAController = 200;
constexpr int kQueriesOfAFault = 10;
/// Nothing may grow after so many queries, or after the first third of fewer.
constexpr int kWarmUp = 1000;

using std::chrono::milliseconds;

/// What grows when something is left behind.
struct Held {
  std::size_t kilobytes = ResidentKilobytes();
  std::size_t descriptors = OpenDescriptors();
  std::size_t threads = Threads();
};

std::ostream& operator<<(std::ostream& stream, const Held& held) {
  return stream << held.kilobytes << " kB resident, " << held.descriptors << " descriptors, "
                << held.threads << " threads";
}

struct Count {
  int sound = 0;
  int soundSuccesses = 0;
  int broken = 0;
  int brokenSuccesses = 0;
};

/// Each kind of fault in turn.
Fault FaultOf(unsigned int number) {
  const std::vector<Fault> faults = {Silence(),
                                     Loss(number, 20),
                                     Duplicated(),
                                     Reordered(),
                                     Delayed(milliseconds(20)),
                                     Truncated(number, 100),
                                     Garbage(number),
                                     AnswerToTheRequestBefore(0),
                                     After(10, Garbage(number)),
                                     SilenceAfter(2 + number % 5)};
  return faults[number % faults.size()];
}

class Soak {
 public:
  /// Runs one query with the fault, or over a sound wire without one.
  void Query(const Fault& fault) {
    relay_.Break(fault);
    std::string machineType;
    const int success = inventory_.GetSmmMT(machineType) == StatusCode::Success ? 1 : 0;
    (fault ? count.broken : count.sound) += 1;
    (fault ? count.brokenSuccesses : count.soundSuccesses) += success;
  }

  void RestartController() {
    simulator_.reset();
    simulator_ = std::make_unique<SimulatedSmm>(std::vector<std::string>{"--generation", "1"});
    relay_.Lead(simulator_->Port());
  }

  /// The relay's own descriptors come and go with the clients that it remembers.
  Held Measure() const {
    Held held;
    held.descriptors -= relay_.Descriptors();
    return held;
  }

  Count count;

 private:
  std::unique_ptr<SimulatedSmm> simulator_ =
      std::make_unique<SimulatedSmm>(std::vector<std::string>{"--generation", "1"});
  Relay relay_{simulator_->Port()};
  SMMInventory inventory_{SettingsOf(*simulator_, relay_.Port())};
};

void Configure() {
  Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 16);
  Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS", 360);
  Standalone::SetGlobalConfigValue("IPMI_RETRANSMISSION_TIMEOUT_MS", 60);
  // Lines are composed and handed over, as in a program that logs everything.
  Standalone::SetMinLogLevel(4);
  Standalone::SetLogLineHandler([](const Standalone::LogLine& /*line*/) {});
}

#ifdef SOAK_IS_SANITIZED
constexpr bool kMemoryCounts = false;
#else
constexpr bool kMemoryCounts = true;
#endif

/// Says what is wrong, if anything.
int Judge(const Count& count, const Held& before, const Held& after) {
  // What the allocator keeps; twenty bytes a query would be above it.
  constexpr std::size_t kToleratedKilobytes = 256;
  int failures = 0;
  const auto require = [&failures](bool holds, const char* sentence) {
    if (!holds) {
      std::cerr << "soak: " << sentence << "\n";
      ++failures;
    }
  };
  require(count.soundSuccesses == count.sound, "a query over a sound wire failed");
  require(count.brokenSuccesses < count.broken, "no fault had any effect");
  require(after.descriptors <= before.descriptors, "descriptors were left open");
  require(after.threads <= before.threads, "threads were left running");
  require(after.kilobytes <= before.kilobytes + kToleratedKilobytes || !kMemoryCounts,
          "resident memory grew by more than 256 kB");
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

int Run(int queries) {
  Configure();
  Soak soak;
  const int warmUp = std::min(kWarmUp, queries / 3);
  Held before;
  for (int i = 1; i <= queries; ++i) {
    const bool isBroken = i % kQueriesOfAFault == 0;
    soak.Query(isBroken ? FaultOf(static_cast<unsigned int>(i / kQueriesOfAFault)) : Fault());
    if (i % kQueriesOfAController == 0) {
      soak.RestartController();
    }
    if (i == warmUp) {
      before = soak.Measure();
      std::cout << "after " << i << " queries: " << before << std::endl;
    }
  }
  const Held after = soak.Measure();
  std::cout << "after " << queries << " queries: " << after << "\n"
            << soak.count.soundSuccesses << " of " << soak.count.sound
            << " queries over a sound wire succeeded, " << soak.count.brokenSuccesses << " of "
            << soak.count.broken << " with a fault\n";
  return Judge(soak.count, before, after);
}

}  // namespace
}  // namespace Tavrin

int main(int argc, char** argv) {
  if (argc != 2 || std::atoi(argv[1]) < 30) {
    std::cerr << "usage: soak QUERIES; expected at least 30 queries\n";
    return 2;
  }
  return Tavrin::Run(std::atoi(argv[1]));
}
