// What controllers cost that answer late: the same exchanges by the library, with the settings that
// it has by default, and by FreeIPMI's ipmi-raw with the best settings for that lateness. Prints
// JSON.
//
// usage: slow_controller

#include <array>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <future>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/support/Process.h"
#include "benchmarks/wire/Alternatives.h"
#include "benchmarks/wire/LargestEnclosure.h"
#include "module/smm/smm_inventory/SMMInventory.h"
#include "tests/support/Faults.h"
#include "tests/support/Relay.h"

namespace Tavrin {
namespace {

using Json = nlohmann::ordered_json;
using std::chrono::milliseconds;

constexpr std::array kLateness = {milliseconds(0),   milliseconds(100), milliseconds(400),
                                  milliseconds(600), milliseconds(900), milliseconds(1200),
                                  milliseconds(2000)};
constexpr int kExchanges = 2;

/// A tool that waits for each answer as long as it takes sends nothing twice.
Patience BestFor(milliseconds lateness) {
  constexpr milliseconds kBeforeRepetition(1000);
  return {20 * (kBeforeRepetition + lateness), kBeforeRepetition + lateness};
}

template <typename Exchange>
double SecondsOf(Exchange exchange) {
  const Meter meter;
  for (int i = 0; i < kExchanges; ++i) {
    exchange();
  }
  return meter.Read().wallSeconds;
}

void ReadName(SMMInventory& inventory) {
  std::string name;
  if (inventory.GetSmmName(name) != StatusCode::Success) {
    throw std::runtime_error("a query failed");
  }
}

/// The object is made before the answers are late, since a status read has six exchanges.
Json Compare(milliseconds lateness) {
  const LargestEnclosure smm;
  Relay relay(smm.Port());
  const TavrinConnection::ConnectionInfo settings = SettingsFor(relay.Port());
  SMMInventory inventory(settings);
  relay.Break(Delayed(lateness));
  const CommandLines commandLines(settings, BestFor(lateness));
  const IPMICOMMAND nameRequest{0xB0, {0x05, 0x0B}, 0x32};
  return {{"lateness_ms", lateness.count()},
          {"exchanges", kExchanges},
          {"library_s", SecondsOf([&] { ReadName(inventory); })},
          {"ipmi_raw_s", SecondsOf([&] { RunToEnd(commandLines.IpmiRaw(nameRequest)); })}};
}

/// All at once: they mostly wait.
Json CompareAll() {
  std::vector<std::future<Json>> comparisons;
  for (const milliseconds lateness : kLateness) {
    comparisons.push_back(std::async(std::launch::async, Compare, lateness));
  }
  Json result = Json::array();
  for (std::future<Json>& comparison : comparisons) {
    result.push_back(comparison.get());
  }
  return {{"runs", result}};
}

}  // namespace
}  // namespace Tavrin

int main() {
  try {
    Tavrin::ConfigureForSimulator();
    std::cout << Tavrin::CompareAll().dump(2) << "\n";
  } catch (const std::exception& exception) {
    std::cerr << "slow_controller: " << exception.what() << "\n";
    return EXIT_FAILURE;
  }
}
