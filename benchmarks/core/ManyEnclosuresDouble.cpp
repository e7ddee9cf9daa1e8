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

#include <cstdlib>
#include <exception>
#include <iostream>

#include "benchmarks/support/LateAnswers.h"
#include "benchmarks/support/RunsApart.h"
#include "benchmarks/support/WholeInventory.h"
#include "tests/doubles/PlatformDouble.h"

namespace Tavrin {
namespace {

constexpr int kRounds = 5;

Run ReadEnclosures(std::size_t count) {
  const long residentBefore = ResidentKib();
  const ReadingCost reading = ReadAtOnce({count, Double::TestSettings()});
  return {reading.cost, reading.residentKib - residentBefore};
}

void Measure() {
  Double::ThePlatform().smmType = SMM_SECOND_GENERATION;
  Double::ThePlatform().logThreshold = 0;
  AnswerLate();
  const nlohmann::ordered_json runs = RunsApart({1, 10, 100, 500}, kRounds, ReadEnclosures);
  std::cout << nlohmann::ordered_json{{"runs", runs}}.dump(2) << "\n";
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
