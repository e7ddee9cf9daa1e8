#include "reading/LibraryObject.h"

#include <cstddef>
#include <utility>

#include "platform/standalone/globalconfig/ThreadConfig.h"
#include "reading/LineListener.h"
#include "reading/Stopwatch.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

constexpr std::size_t kShortestStatusWithPlatform = 14;

/// What became of the status read that a construction ends with. The library does not say so
/// itself.
QueryOutcome StatusRead() {
  const Standalone::LastExchange& exchange = Standalone::GetLastExchange();
  const bool isUsable = exchange.isAnswered && exchange.completionCode == 0 &&
                        exchange.answerLength >= kShortestStatusWithPlatform;
  QueryOutcome outcome;
  if (!isUsable) {
    outcome.status = StatusCode::NoUsableResult;
    outcome.cause = CauseOf(exchange);
  }
  return outcome;
}

std::unique_ptr<LibraryObject> ConstructOnce(const TavrinConnection::ConnectionInfo& info,
                                             SMMIype generation, Observer& observer) {
  const ToldWait wait(observer, "reading the SMM's status");
  const Standalone::ThreadConfig type({{"SMM_TYPE", generation}});
  const Stopwatch stopwatch;
  auto object =
      std::make_unique<LibraryObject>(LibraryObject{SMMInventory(info), generation, {}, {}});
  object->statusRead = StatusRead();
  stopwatch.Stamp(object->statusRead);
  return object;
}

/// Whether nobody is there any more, whom six attempts did not find.
bool IsGone(const Cause& cause) {
  return cause.kind == FailureCause::Silence || cause.kind == FailureCause::Unreachable;
}

}  // namespace

std::unique_ptr<LibraryObject> ConstructObject(const TavrinConnection::ConnectionInfo& info,
                                               SMMIype generation, const LoginGuard& guard,
                                               Observer& observer) {
  auto object = ConstructOnce(info, generation, observer);
  if (object->IsPlatformNeededAndUnknown() && !guard.Refusal() &&
      !IsGone(object->statusRead.cause)) {
    object = ConstructOnce(info, generation, observer);
  }
  return object;
}

}  // namespace Tavrin
