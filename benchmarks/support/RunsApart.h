#pragma once

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <vector>

#include "benchmarks/support/Process.h"

namespace Tavrin {

/// What reading so many enclosures at once took, and by how much the memory of the process grew
/// meanwhile. It travels through a pipe as it is.
struct Run {
  Cost cost;
  long memoryKib = 0;
};

/// Makes a run with each number of enclosures, as often as there are rounds, each in a process of
/// its own, so that no run finds memory that an earlier one left behind. `counts` begins with 1.
/// Gives an entry a number, of medians: what Growth tells, and `memory_kib_per_enclosure`. Throws
/// std::runtime_error when a run ends without figures; its process has said why. No thread may run
/// here meanwhile.
nlohmann::ordered_json RunsApart(const std::vector<std::size_t>& counts, int rounds,
                                 const std::function<Run(std::size_t count)>& read);

}  // namespace Tavrin
