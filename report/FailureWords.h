#pragma once

#include <string>

#include "reading/Cause.h"

namespace Tavrin {

/// The name of a query's status, as StatusCode has it, or "Exception" for kExceptionStatus. A
/// status that is neither counts as NoUsableResult.
std::string StatusName(int status);

/// Why a query of that status failed: what happened and, in brackets, the cause where one is known.
/// Printable, without advice, never empty.
std::string FailureReason(int status, const Cause& cause);

}  // namespace Tavrin
