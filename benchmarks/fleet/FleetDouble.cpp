// How long one process takes to read many enclosures at once, and how much memory that takes: N
// second-generation enclosures with 12 nodes and 9 PSU slots, behind a client that is a double and
// answers after 5 ms. Every part is read, and all readings are kept until the last has come, as by
// a program that shows them in their order. The library's pauses last PAUSE_MS each instead of 3
// seconds, so that a run takes 6 of them; with the 3000 of real ones, as by default, wall time
// includes them all. Prints JSON:
// - wall_s: of all readings, the half second included over which beginnings are spread.
// - cpu_s: processor time of all threads.
// - ratio: wall_s by that of one enclosure.
// - memory_kib_per_enclosure: by how much memory grew at its highest, divided by N.
// Each is the median of the rounds.
//
// usage: fleet_double [PAUSE_MS [ROUNDS]]

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks/support/Growth.h"
#include "benchmarks/support/Median.h"
#include "benchmarks/support/Process.h"
#include "fleet/FleetReader.h"
#include "tests/doubles/Operations.h"
#include "tests/doubles/Pauses.h"
#include "tests/doubles/PlatformDouble.h"

namespace Tavrin {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::chrono::milliseconds kAnswerTime{5};

/// What one run found out. It travels through a pipe as it is.
struct Run {
  Cost cost;
  long memoryKib = 0;
};

/// Keeps all readings, and sees that each is whole.
class Keeper : public FleetObserver {
 public:
  void EnclosureEnded(FleetResult&& result) override {
    const Reading& reading = result.reading;
    const bool isWhole = !reading.failure && reading.nodeStatus.value().size() == 12 &&
                         reading.psuStatus.value().value.size() == 9 &&
                         reading.psuFans->Succeeded() && reading.powerCaps->Succeeded();
    if (!isWhole) {
      throw std::runtime_error("an enclosure could not be read");
    }
    results.push_back(std::move(result));
  }

  std::vector<FleetResult> results;
};

/// The most memory that this process had resident.
long PeakKib() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmHWM:") {
      long kib = 0;
      status >> kib;
      return kib;
    }
  }
  throw std::runtime_error("/proc/self/status does not tell VmHWM");
}

Run ReadEnclosures(std::size_t count) {
  EnclosureSettings enclosure;
  enclosure.host = "192.0.2.17";
  enclosure.userName = "operator";
  enclosure.password = "correct horse";
  const std::vector<EnclosureSettings> enclosures(count, enclosure);
  FleetSettings settings;
  settings.parts.assign(kPartsToAskFor.begin(), kPartsToAskFor.end());
  settings.asksPresence = false;
  Keeper keeper;
  const long before = ResidentKib();
  const Meter meter;
  FleetReader(settings).Read(enclosures, keeper);
  return {meter.Read(), PeakKib() - before};
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
    throw std::runtime_error("no figures came of " + std::to_string(count) + " enclosures");
  }
  return run;
}

/// All runs with one number of enclosures.
struct Runs {
  Growth growth;
  std::vector<double> memoryKib = {};  ///< An enclosure's, a value a round.
};

void Measure(std::chrono::milliseconds pause, int rounds) {
  Double::ThePlatform().answerTo = [answerTo = Double::SampleAnswersOf(SMM_SECOND_GENERATION)](
                                       const IPMICOMMAND& request) -> const Double::Bytes& {
    std::this_thread::sleep_for(kAnswerTime);
    return answerTo(request);
  };
  Double::onPause = [pause](unsigned int /*seconds*/) {
    std::this_thread::sleep_for(pause);
    return 0U;
  };

  std::array all = {Runs{Growth(1)}, Runs{Growth(100)}, Runs{Growth(500)}, Runs{Growth(1000)}};
  for (int round = 0; round < rounds; ++round) {
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
  std::cout << Json{{"pause_ms", pause.count()}, {"runs", entries}}.dump(2) << "\n";
}

}  // namespace
}  // namespace Tavrin

int main(int argc, char** argv) {
  try {
    const int pause = argc > 1 ? std::stoi(argv[1]) : 3000;
    const int rounds = argc > 2 ? std::stoi(argv[2]) : 1;
    Tavrin::Measure(std::chrono::milliseconds(pause), rounds);
  } catch (const std::exception& exception) {
    std::cerr << "fleet_double: " << exception.what() << "\n";
    return EXIT_FAILURE;
  }
}
