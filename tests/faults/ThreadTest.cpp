#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "simulator/EnclosureKind.h"
#include "tests/doubles/Operations.h"
#include "tests/faults/LeftBehind.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {
namespace {

using Simulator::EnclosureKind;

constexpr std::size_t kSimulators = 8;
constexpr std::size_t kObjects = 64;

struct Kind {
  std::vector<std::string> options;
  EnclosureKind kind;
};

const std::vector<Kind>& Kinds() {
  static const std::vector<Kind> kinds = {
      {{"--generation", "1"}, EnclosureKind::FirstGeneration},
      {{"--generation", "2", "--platform", "253"}, EnclosureKind::SecondGeneration253},
      {{"--generation", "2", "--platform", "254"}, EnclosureKind::SecondGeneration254}};
  return kinds;
}

/// Runs every query once. Returns how many did not succeed, or gave another machine than `model`.
int FailuresOfEveryQuery(SMMInventory& object, const Simulator::EnclosureState& model) {
  int failures = 0;
  for (const auto& operation : Double::Operations<SMMInventory>()) {
    Double::Output output = operation.fresh;
    const std::string* const expected =
        operation.name == std::string("GetSmmMT")   ? &model.machineType
        : operation.name == std::string("GetSmmSN") ? &model.serialNumber
                                                    : nullptr;
    failures += operation.call(object, 1, output) != StatusCode::Success ? 1 : 0;
    failures += expected != nullptr && std::get<std::string>(output) != *expected ? 1 : 0;
  }
  return failures;
}

/// Changes the configuration over and over while it lives, each time to a value that works.
class ChangingConfiguration {
 public:
  ChangingConfiguration() : thread_([this] { Run(); }) {}
  ~ChangingConfiguration() {
    ends_ = true;
    thread_.join();
  }
  ChangingConfiguration(const ChangingConfiguration&) = delete;
  ChangingConfiguration& operator=(const ChangingConfiguration&) = delete;

 private:
  void Run() {
    for (int round = 0; !ends_; ++round) {
      Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS", 20000 + round % 1000);
      Standalone::SetGlobalConfigValue("IPMI_RETRANSMISSION_TIMEOUT_MS", 4000 + round % 1000);
      Standalone::SetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 2 + round % 3);
      Standalone::SetMinLogLevel(3 + static_cast<unsigned int>(round % 2));
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }

  std::atomic<bool> ends_{false};
  std::thread thread_;
};

TEST(Threads, SixtyFourObjectsReadEightControllersAtOnceWhileTheConfigurationChanges) {
  Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 16);
  Standalone::SetMinLogLevel(4);
  std::vector<std::string> lines;
  Standalone::SetLogLineHandler(
      [&lines](const Standalone::LogLine& line) { lines.push_back(line.text); });
  std::vector<std::unique_ptr<SimulatedSmm>> simulators;
  for (std::size_t i = 0; i < kSimulators; ++i) {
    simulators.push_back(std::make_unique<SimulatedSmm>(Kinds()[i % Kinds().size()].options));
  }

  std::atomic<int> failures{0};
  {
    const ChangingConfiguration changing;
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kObjects; ++i) {
      threads.emplace_back([&, i] {
        const std::size_t mine = i % kSimulators;
        SMMInventory object(SettingsOf(*simulators[mine]));
        failures += FailuresOfEveryQuery(
            object, Simulator::MakeEnclosure(Kinds()[mine % Kinds().size()].kind));
      });
    }
    std::for_each(threads.begin(), threads.end(), [](std::thread& thread) { thread.join(); });
  }

  Standalone::SetLogLineHandler({});
  EXPECT_EQ(failures, 0);
  EXPECT_GT(lines.size(), kObjects * 13);
  for (const auto& simulator : simulators) {
    EXPECT_EQ(OpenSessions(*simulator), 0);
  }
}

}  // namespace
}  // namespace Tavrin
