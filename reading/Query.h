#pragma once

#include <chrono>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "reading/Cause.h"

namespace Tavrin {

/// The status of a query that an exception of the library ended; it stands beside StatusCode. The
/// cause has the exception's words; of std::bad_alloc, which the library also throws of an answer
/// that is too short, what the answer was like.
constexpr int kExceptionStatus = -1;

/// What became of one query, apart from what it gave. One that was not made, since the SMM had
/// refused the user or was lost before, has the status and the cause of what stopped it.
struct QueryOutcome {
  /// One of StatusCode, or kExceptionStatus. SMMInventory.h says when each operation returns which;
  /// NotConnected or NoUsableResult also where the query was not made.
  int status = StatusCode::Success;

  /// Why it failed; as new when it did not.
  Cause cause;

  /// By this machine's clock; as new when nothing was asked.
  std::chrono::system_clock::time_point askedAt;

  /// From the request to the last answer, attempts to connect and pauses included, by a clock that
  /// nobody sets; 0 when nothing was asked.
  std::chrono::milliseconds duration{0};

  [[nodiscard]] bool Succeeded() const { return status == StatusCode::Success; }
};

/// One query and what it gave: a value, or a record of several.
template <typename Type>
struct Query : QueryOutcome {
  /// After a failure its values are absent, with Absence::QueryFailed.
  Type value{};
};

/// One query that gives a record for each PSU slot, slot 1 first. After a failure the records of
/// the slots that had answered before it stay; those of the others are absent.
template <typename Record>
using SlotQuery = Query<std::vector<Record>>;

}  // namespace Tavrin
