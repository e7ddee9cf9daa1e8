#include "reading/Asker.h"

#include <exception>
#include <new>

#include "reading/Stopwatch.h"
#include "support/EscapeControlBytes.h"

namespace Tavrin {
namespace {

/// The library runs out of memory, or says so of an answer that lacks its leading bytes.
Cause CauseOfBadAlloc() {
  Cause cause = CauseOf(Standalone::GetLastExchange());
  if (cause.kind == Standalone::FailureCause::None && cause.completionCode == 0) {
    cause.words += ", which is shorter than what leads an answer, or memory ran out";
  }
  return cause;
}

/// Asks the library once. An exception becomes a status.
QueryOutcome AskOnce(const Asker::Call& call, SMMInventory& inventory) {
  QueryOutcome outcome;
  const Stopwatch stopwatch;
  try {
    outcome.status = call(inventory);
    if (!outcome.Succeeded()) {
      outcome.cause = CauseOf(Standalone::GetLastExchange());
    }
  } catch (const std::bad_alloc&) {
    outcome.status = kExceptionStatus;
    outcome.cause = CauseOfBadAlloc();
  } catch (const std::exception& exception) {
    outcome.status = kExceptionStatus;
    outcome.cause.words = EscapeControlBytes(exception.what());
  }
  stopwatch.Stamp(outcome);
  return outcome;
}

/// A query that is not made.
QueryOutcome Unasked(int status, const Cause& cause) {
  QueryOutcome outcome;
  outcome.status = status;
  outcome.cause = cause;
  return outcome;
}

}  // namespace

QueryOutcome Asker::Ask(const Call& call) {
  if (const Cause* const obstacle = Obstacle()) {
    return Unasked(StatusCode::NotConnected, *obstacle);
  }
  QueryOutcome outcome = AskOnce(call, object_.inventory);
  guard_.Look();
  if (guard_.Refusal() && !outcome.Succeeded()) {
    // Of several exchanges, those after the refusal were not tried any more.
    outcome.cause = *guard_.Refusal();
  }
  if (outcome.status == StatusCode::NotConnected) {
    isEachConnected_ = false;
    if (!object_.statusRead.Succeeded()) {
      loss_ = outcome.cause;
    }
  }
  return outcome;
}

QueryOutcome Asker::AskByPlatform(const Call& call) {
  if (Obstacle() == nullptr && object_.IsPlatformNeededAndUnknown()) {
    QueryOutcome unasked = Unasked(StatusCode::NoUsableResult, object_.statusRead.cause);
    unasked.cause.missing = "platform";
    return unasked;
  }
  return Ask(call);
}

const Cause* Asker::Obstacle() const {
  if (guard_.Refusal()) {
    return &*guard_.Refusal();
  }
  return loss_ ? &*loss_ : nullptr;
}

bool Asker::WasAlwaysConnected() const {
  return object_.statusRead.Succeeded() && isEachConnected_ && !guard_.Refusal();
}

}  // namespace Tavrin
