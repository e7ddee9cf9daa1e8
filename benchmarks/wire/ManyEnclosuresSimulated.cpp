// Reads many simulated enclosures at once: as many objects as simulators, a thread each. None of
// them waits in the pauses, but for one last time with a single enclosure and one with all. The
// simulators share the processors with the reader. Prints JSON.
//
// usage: many_enclosures_simulated

#include <cstdlib>
#include <deque>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "benchmarks/support/Growth.h"
#include "benchmarks/support/Median.h"
#include "benchmarks/support/Process.h"
#include "benchmarks/support/WholeInventory.h"
#include "benchmarks/wire/LargestEnclosure.h"

namespace Tavrin {
namespace {

using Json = nlohmann::ordered_json;
using Simulators = std::deque<LargestEnclosure>;

constexpr std::size_t kMostEnclosures = 32;
constexpr int kRounds = 7;

/// What reading the first `count` enclosures at once takes: them, and the simulators.
struct Sample {
  ReadingCost reading;
  double simulatorsSeconds = 0;
};

Sample ReadFirst(const Simulators& simulators, std::size_t count) {
  std::vector<TavrinConnection::ConnectionInfo> enclosures;
  for (std::size_t i = 0; i < count; ++i) {
    enclosures.push_back(SettingsFor(simulators[i].Port()));
  }
  const double simulatorsBefore = ProcessorSecondsOfSimulators(kMostEnclosures);
  const ReadingCost reading = ReadAtOnce(enclosures);
  return {reading, ProcessorSecondsOfSimulators(kMostEnclosures) - simulatorsBefore};
}

/// All that was read with one number of enclosures.
struct Run {
  Growth growth;
  std::vector<double> ofSimulators = {};  ///< Their processor time, a value a round.
  double memoryKib = 0;                   ///< An enclosure's, with what its thread needs.
};

std::vector<Run> MakeRuns() {
  std::vector<Run> runs;
  for (std::size_t count = 1; count <= kMostEnclosures; count *= 2) {
    runs.push_back({Growth(count)});
  }
  return runs;
}

/// All numbers of enclosures in turn, from the fewest on, so that a busy machine slows all alike.
void ReadRound(const Simulators& simulators, long residentBefore, std::vector<Run>& runs) {
  for (Run& run : runs) {
    const std::size_t count = run.growth.Enclosures();
    const auto [reading, simulatorsSeconds] = ReadFirst(simulators, count);
    // The allocator keeps what it has once had, so that only the first round tells them apart.
    if (run.growth.IsEmpty()) {
      run.memoryKib =
          static_cast<double>(reading.residentKib - residentBefore) / static_cast<double>(count);
    }
    run.growth.Add(reading.cost, runs.front().growth);
    run.ofSimulators.push_back(simulatorsSeconds);
  }
}

Json ToJson(const std::vector<Run>& runs) {
  Json entries = Json::array();
  for (const Run& run : runs) {
    entries.push_back(run.growth.ToJson());
    entries.back()["simulators_cpu_s"] = Median(run.ofSimulators);
    entries.back()["memory_kib_per_enclosure"] = run.memoryKib;
  }
  return entries;
}

/// How long one enclosure takes, and all at once, when every pause is waited for.
Json ReadWithPauses(const Simulators& simulators) {
  WaitForPauses();
  Json entries;
  for (const std::size_t count : {std::size_t{1}, kMostEnclosures}) {
    entries.push_back(ReadFirst(simulators, count).reading.cost.wallSeconds);
  }
  return entries;
}

void Measure() {
  ConfigureForSimulator();
  const Simulators simulators(kMostEnclosures);
  // What the first session sets up for the whole process counts for no object.
  ReadWholeInventory(SettingsFor(simulators.front().Port()));
  const long residentBefore = ResidentKib();
  std::vector<Run> runs = MakeRuns();
  for (int round = 0; round < kRounds; ++round) {
    ReadRound(simulators, residentBefore, runs);
  }
  std::cout << Json{{"runs", ToJson(runs)}, {"with_pauses_s", ReadWithPauses(simulators)}}.dump(2)
            << "\n";
}

}  // namespace
}  // namespace Tavrin

int main() {
  try {
    Tavrin::Measure();
  } catch (const std::exception& exception) {
    std::cerr << "many_enclosures_simulated: " << exception.what() << "\n";
    return EXIT_FAILURE;
  }
}
