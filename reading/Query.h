#pragma once

#include <chrono>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "reading/Cause.h"

namespace Tavrin {

/// The status of a query that an exception of the library ended; it stands beside StatusCode.
constexpr int kExceptionStatus = -1;

/// What became of one query, apart from what it gave.
struct QueryOutcome {
  int status = StatusCode::Success;               ///< One of StatusCode, or kExceptionStatus.
  Cause cause;                                    ///< Why it failed; as new when it did not.
  std::chrono::system_clock::time_point askedAt;  ///< As new when nothing was sent for it.
  std::chrono::milliseconds duration{0};          ///< From the request to the last answer.

  [[nodiscard]] bool Succeeded() const { return status == StatusCode::Success; }
};

/// One query and what it gave.
template <typename Type>
struct Query : QueryOutcome {
  Type value{};  ///< After a failure its values are absent, with Absence::QueryFailed.
};

/// One query that gives a record for each PSU slot. After a failure the records of the slots that
/// had answered before it stay; those of the others are absent.
template <typename Record>
using SlotQuery = Query<std::vector<Record>>;

}  // namespace Tavrin
