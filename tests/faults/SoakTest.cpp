#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "tests/faults/LeftBehind.h"
#include "tests/support/Faults.h"
#include "tests/support/Relay.h"
#include "tests/support/SimulatedSmm.h"

// Queries without end, one in ten over a broken wire, to see that nothing grows. The environment
// variable SOAK_QUERIES says how many they are.

namespace Tavrin {
namespace {

/// The controller keeps a session that was cut off for 30 seconds and has room for 63, so it is
/// started anew before it is full.
constexpr int kQueriesOfAController = 200;
constexpr int kQueriesOfAFault = 10;
/// Nothing may grow after so many queries, or after the first third of fewer.
constexpr int kWarmUp = 1000;
/// What the allocator keeps; twenty bytes a query would be above it. Sanitizers keep freed memory,
/// so with them memory does not count.
#ifdef SOAK_IS_SANITIZED
constexpr std::size_t kToleratedKilobytes = std::numeric_limits<std::size_t>::max() / 2;
#else
constexpr std::size_t kToleratedKilobytes = 256;
#endif

int Queries() {
  const char* const text = std::getenv("SOAK_QUERIES");
  return text == nullptr ? 1000 : std::stoi(text);
}

std::size_t ResidentKilobytes() {
  std::ifstream status("/proc/self/status");
  std::string word;
  std::size_t kilobytes = 0;
  while (status >> word && word != "VmRSS:") {
  }
  status >> kilobytes;
  return kilobytes;
}

/// What grows when something is left behind.
struct Held {
  std::size_t kilobytes;
  std::size_t descriptors;
  std::size_t threads;
};

std::ostream& operator<<(std::ostream& stream, const Held& held) {
  return stream << held.kilobytes << " kB resident, " << held.descriptors << " descriptors, "
                << held.threads << " threads";
}

/// Queries of a kind, and those of them that succeed.
struct Count {
  int queries = 0;
  int successes = 0;
};

/// Each kind of fault in turn.
Fault FaultOf(unsigned int number) {
  const std::vector<Fault> faults = {Silence(),
                                     Loss(number, 20),
                                     Duplicated(),
                                     Reordered(),
                                     Delayed(std::chrono::milliseconds(20)),
                                     Truncated(number, 100),
                                     Garbage(number),
                                     AnswerToTheRequestBefore(0),
                                     After(10, Garbage(number)),
                                     SilenceAfter(2 + number % 5)};
  return faults[number % faults.size()];
}

class Soak : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 16);
    Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS", 360);
    Standalone::SetGlobalConfigValue("IPMI_RETRANSMISSION_TIMEOUT_MS", 60);
    // Lines are composed and handed over, as in a program that logs everything.
    Standalone::SetMinLogLevel(4);
    Standalone::SetLogLineHandler([](const Standalone::LogLine& /*line*/) {});
  }
  static void TearDownTestSuite() { Standalone::SetLogLineHandler({}); }

  /// Goes on until so many queries were made.
  void RunUpTo(int last) {
    while (done_ < last) {
      ++done_;
      const bool isBroken = done_ % kQueriesOfAFault == 0;
      Query(isBroken ? FaultOf(static_cast<unsigned int>(done_ / kQueriesOfAFault)) : nullptr,
            isBroken ? broken : sound);
      if (done_ % kQueriesOfAController == 0) {
        simulator_.reset();
        simulator_ = std::make_unique<SimulatedSmm>(kOptions);
        relay_.Lead(simulator_->Port());
      }
    }
  }

  Held Measure() const {
    const Held held = {ResidentKilobytes(), OpenDescriptors(), Threads()};
    std::cout << "after " << done_ << " queries: " << held << std::endl;
    return held;
  }

  Count sound;
  Count broken;

 private:
  void Query(const Fault& fault, Count& count) {
    relay_.Break(fault);
    std::string machineType;
    ++count.queries;
    count.successes += inventory_.GetSmmMT(machineType) == StatusCode::Success ? 1 : 0;
  }

  const std::vector<std::string> kOptions = {"--generation", "1"};
  std::unique_ptr<SimulatedSmm> simulator_ = std::make_unique<SimulatedSmm>(kOptions);
  Relay relay_{simulator_->Port()};
  SMMInventory inventory_{SettingsOf(*simulator_, relay_.Port())};
  int done_ = 0;
};

TEST_F(Soak, LeavesNothing) {
  const int queries = Queries();
  RunUpTo(std::min(kWarmUp, queries / 3));
  const Held before = Measure();
  RunUpTo(queries);
  const Held after = Measure();
  std::cout << sound.successes << " of " << sound.queries
            << " queries over a sound wire succeeded, " << broken.successes << " of "
            << broken.queries << " with a fault\n";
  EXPECT_EQ(sound.successes, sound.queries);
  EXPECT_LT(broken.successes, broken.queries);
  EXPECT_LE(after.descriptors, before.descriptors);
  EXPECT_LE(after.threads, before.threads);
  EXPECT_LE(after.kilobytes, before.kilobytes + kToleratedKilobytes);
}

}  // namespace
}  // namespace Tavrin
