// How many enclosures one process can watch at once: N inventory objects, each with a thread of its
// own, and behind them doubles whose answers take 5 ms each. Every thread constructs its object and
// reads the whole inventory of a second-generation enclosure with 12 nodes and 9 PSU slots; pauses
// take no time. Prints JSON:
// - wall_s: from the common start to the end of the slowest thread.
// - cpu_s: processor time of all threads.
// - memory_kib_per_enclosure: by how much resident memory grew until all inventories were read,
//   with every thread and object alive, divided by N.
// - ratio: wall_s by that of one enclosure.
// Each is the median of several rounds.
//
// usage: many_enclosures_double

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks/support/Growth.h"
#include "benchmarks/support/Median.h"
#include "benchmarks/support/WholeInventory.h"
#include "tests/doubles/Operations.h"
#include "tests/doubles/PlatformDouble.h"

namespace Tavrin {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::chrono::milliseconds kAnswerTime{5};
constexpr int kRounds = 5;

/// What one run found out. It travels through a pipe as it is.
struct Run {
  Cost cost;
  long memoryKib = 0;
};

Run ReadEnclosures(std::size_t count) {
  const long residentBefore = ResidentKib();
  const Reading reading = ReadAtOnce({count, Double::TestSettings()});
  return {reading.cost, reading.residentKib - residentBefore};
}

/// In a process of its own, so that no run finds memory that an earlier one left behind.
Run ReadEnclosuresApart(std::size_t count) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) {
    throw std::runtime_error("cannot make a pipe");
  }
  const pid_t child = fork();
  if (child < 0) {
    throw std::runtime_error("cannot start a process");
  }
  if (child == 0) {
    const Run run = ReadEnclosures(count);
    _exit(write(ends[1], &run, sizeof(run)) == sizeof(run) ? 0 : 1);
  }
  close(ends[1]);
  Run run;
  const ssize_t length = read(ends[0], &run, sizeof(run));
  close(ends[0]);
  waitpid(child, nullptr, 0);
  if (length != sizeof(run)) {
    throw std::runtime_error("an enclosure could not be read with " + std::to_string(count) +
                             " at once");
  }
  return run;
}

/// All runs with one number of enclosures.
struct Runs {
  Growth growth;
  std::vector<double> memoryKib = {};  ///< An enclosure's, a value a round.
};

void Measure() {
  Double::ThePlatform().smmType = SMM_SECOND_GENERATION;
  Double::ThePlatform().logThreshold = 0;
  Double::ThePlatform().answerTo = [answerTo = Double::SampleAnswersOf(SMM_SECOND_GENERATION)](
                                       const IPMICOMMAND& request) -> const Double::Bytes& {
    std::this_thread::sleep_for(kAnswerTime);
    return answerTo(request);
  };

  std::array all = {Runs{Growth(1)}, Runs{Growth(10)}, Runs{Growth(100)}, Runs{Growth(500)}};
  for (int round = 0; round < kRounds; ++round) {
    for (Runs& runs : all) {
      const std::size_t count = runs.growth.Enclosures();
      const Run run = ReadEnclosuresApart(count);
      runs.growth.Add(run.cost, all.front().growth);
      runs.memoryKib.push_back(static_cast<double>(run.memoryKib) / static_cast<double>(count));
    }
  }
  Json entries = Json::array();
  for (const Runs& runs : all) {
    entries.push_back(runs.growth.ToJson());
    entries.back()["memory_kib_per_enclosure"] = Median(runs.memoryKib);
  }
  std::cout << Json{{"runs", entries}}.dump(2) << "\n";
}

}  // namespace
}  // namespace Tavrin

int main() {
  try {
    Tavrin::Measure();
  } catch (const std::exception& exception) {
    std::cerr << "many_enclosures_double: " << exception.what() << "\n";
    return EXIT_FAILURE;
  }
}
