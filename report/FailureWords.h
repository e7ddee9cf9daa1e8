#pragma once

#include <string>

#include "reading/Cause.h"

namespace Tavrin {

// Failures in words, the same in every format. What a user can do about one depends on the program
// that reports it, which says so itself.

/// The name of a query's status, as StatusCode has it, or "Exception" for kExceptionStatus. A
/// status that is neither counts as NoUsableResult.
std::string StatusName(int status);

/// Why a query of that status failed: what happened and, in brackets, the cause where one is known,
/// such as "the SMM refused the request (completion code 0xC0: busy)". A completion code says more
/// than the cause's words, and is told in their place. Printable, without advice, never empty.
std::string FailureReason(int status, const Cause& cause);

}  // namespace Tavrin
