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

#include <chrono>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "benchmarks/support/LateAnswers.h"
#include "benchmarks/support/RunsApart.h"
#include "fleet/FleetReader.h"
#include "tests/doubles/Pauses.h"

namespace Tavrin {
namespace {

/// Keeps all readings, and sees that each is whole.
class Keeper : public FleetObserver {
 public:
  void EnclosureEnded(std::size_t /*index*/, Reading&& reading) override {
    const bool isWhole = !reading.failure && reading.nodeStatus.value().size() == 12 &&
                         reading.psuStatus.value().value.size() == 9 &&
                         reading.psuFans->Succeeded() && reading.powerCaps->Succeeded();
    if (!isWhole) {
      throw std::runtime_error("an enclosure could not be read");
    }
    readings.push_back(std::move(reading));
  }

  std::vector<Reading> readings;
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

void Measure(std::chrono::milliseconds pause, int rounds) {
  AnswerLate();
  Double::onPause = [pause](unsigned int /*seconds*/) {
    std::this_thread::sleep_for(pause);
    return 0U;
  };

  const nlohmann::ordered_json runs = RunsApart({1, 100, 500, 1000}, rounds, ReadEnclosures);
  std::cout << nlohmann::ordered_json{{"pause_ms", pause.count()}, {"runs", runs}}.dump(2) << "\n";
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
