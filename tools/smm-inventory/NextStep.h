#pragma once

#include <string>

namespace Tavrin {

struct QueryOutcome;

/// What the user of the tool can try after a query failed so, in terms of the tool's options.
std::string NextStep(const QueryOutcome& outcome);

}  // namespace Tavrin
