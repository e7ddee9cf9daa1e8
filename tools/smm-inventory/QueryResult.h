#pragma once

#include "module/smm/smm_inventory/StatusCode.h"
#include "reading/Cause.h"

namespace Tavrin {

/// The status of a query that an exception of the library ended; it stands beside StatusCode.
constexpr int kExceptionStatus = -1;

/// What one query gave.
template <typename Value>
struct QueryResult {
  Value value{};  ///< Holds something exactly when the status is Success, unless said otherwise.
  int status = StatusCode::Success;
  Cause cause;
};

}  // namespace Tavrin
