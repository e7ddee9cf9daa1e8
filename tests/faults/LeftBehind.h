#pragma once

#include <cstddef>

#include "tests/support/SimulatedSmm.h"

namespace Tavrin {

// What a program and a controller hold at the moment, to be compared before and after.

std::size_t OpenDescriptors();
std::size_t Threads();

/// How many sessions the controller counts as open, the one that asks not among them.
int OpenSessions(const SimulatedSmm& simulator);

}  // namespace Tavrin
