#pragma once

#include <string>

#include "reading/Cause.h"

namespace Tavrin {

/// The name of a query's status, as StatusCode has it.
std::string StatusName(int status);

/// Why a query of that status failed: what happened and, where one is known, the cause.
std::string FailureReason(int status, const Cause& cause);

/// What the user of the tool can try next, in terms of its options.
std::string NextStep(int status, const Cause& cause);

}  // namespace Tavrin
