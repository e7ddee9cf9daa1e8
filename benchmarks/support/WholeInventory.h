#pragma once

#include <vector>

#include "benchmarks/support/Process.h"
#include "platform/ConnectionInfo.h"

namespace Tavrin {

/// Constructs an object and runs every query; SelectPSU is none, since it changes the enclosure.
/// Throws std::runtime_error unless each succeeds and gives what the largest enclosure has: 12
/// nodes and 9 PSUs.
void ReadWholeInventory(const TavrinConnection::ConnectionInfo& settings);

struct ReadingCost {
  Cost cost;
  long residentKib = 0;  ///< With all objects and threads still there.
};

/// Reads the whole inventory of every enclosure at once, with an object and a thread for each.
/// Throws as ReadWholeInventory() does.
ReadingCost ReadAtOnce(const std::vector<TavrinConnection::ConnectionInfo>& enclosures);

}  // namespace Tavrin
