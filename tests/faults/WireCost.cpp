// What a wire that loses datagrams costs with the default settings.
// usage: wire_cost QUERIES PERCENT SEED

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "tests/faults/LeftBehind.h"
#include "tests/support/Faults.h"
#include "tests/support/Relay.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {
namespace {

using std::chrono::milliseconds;

/// Prints how many queries succeeded and how long each took, those that failed included.
void Measure(int queries, const Fault& fault) {
  Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 16);
  const SimulatedSmm simulator({"--generation", "1"});
  Relay relay(simulator.Port());
  SMMInventory inventory(SettingsOf(simulator, relay.Port()));
  relay.Break(fault);
  std::vector<milliseconds::rep> took;
  int succeeded = 0;
  for (int query = 0; query < queries; ++query) {
    std::string machineType;
    const auto start = std::chrono::steady_clock::now();
    succeeded += inventory.GetSmmMT(machineType) == StatusCode::Success ? 1 : 0;
    const auto end = std::chrono::steady_clock::now();
    took.push_back(std::chrono::duration_cast<milliseconds>(end - start).count());
  }
  relay.Heal();
  std::cout << succeeded << " of " << queries << " queries succeeded; first " << took.front()
            << " ms, ";
  std::sort(took.begin(), took.end());
  std::cout << "median " << took[took.size() / 2] << " ms, longest " << took.back() << " ms; "
            << OpenSessions(simulator) << " sessions left open\n";
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
