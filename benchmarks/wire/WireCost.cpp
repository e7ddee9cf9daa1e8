// What a wire that loses datagrams costs with the default settings: how many queries succeed, and
// how long they take, those that fail included.
//
// usage: wire_cost QUERIES PERCENT SEED

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "benchmarks/support/Median.h"
#include "benchmarks/support/Process.h"
#include "benchmarks/wire/LargestEnclosure.h"
#include "module/smm/smm_inventory/SMMInventory.h"
#include "tests/support/Faults.h"
#include "tests/support/Relay.h"

namespace Tavrin {
namespace {

void Measure(int queries, const Fault& fault) {
  ConfigureForSimulator();
  const LargestEnclosure smm;
  Relay relay(smm.Port());
  SMMInventory inventory(SettingsFor(relay.Port()));
  relay.Break(fault);
  std::vector<double> seconds;
  int succeeded = 0;
  for (int query = 0; query < queries; ++query) {
    std::string machineType;
    const Meter meter;
    succeeded += inventory.GetSmmMT(machineType) == StatusCode::Success ? 1 : 0;
    seconds.push_back(meter.Read().wallSeconds);
  }
  std::cout << succeeded << " of " << queries << " queries succeeded; first " << seconds.front()
            << " s, median " << Median(seconds) << " s, longest "
            << *std::max_element(seconds.begin(), seconds.end()) << " s\n";
}

}  // namespace
}  // namespace Tavrin

int main(int argc, char** argv) {
  const auto number = [&](int at) { return std::strtol(argv[at], nullptr, 10); };
  if (argc != 4 || number(1) <= 0) {
    std::cerr << "usage: wire_cost QUERIES PERCENT SEED\n";
    return 2;
  }
  Tavrin::Measure(static_cast<int>(number(1)), Tavrin::Loss(static_cast<std::uint32_t>(number(3)),
                                                            static_cast<unsigned int>(number(2))));
  return 0;
}
