#include "reading/Cause.h"

#include <fmt/format.h>

#include "platform/GlobalConfig.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

std::string AnswerWords(std::size_t length) {
  return length == 0 ? "its answer is empty"
                     : fmt::format("its answer has {} byte{}", length, length == 1 ? "" : "s");
}

/// The client does not know which setting forbids attempts.
std::string NoAttemptWords() {
  return fmt::format("IPMI_CONNECT_RETRY_TIMES is {}, which allows no attempt",
                     GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 0));
}

}  // namespace

Cause CauseOf(const Standalone::LastExchange& exchange) {
  if (exchange.isAnswered) {
    return {AnswerWords(exchange.answerLength), FailureCause::None, exchange.completionCode, ""};
  }
  const bool isUntried = exchange.cause == FailureCause::NoAttempt;
  return {isUntried ? NoAttemptWords() : exchange.words, exchange.cause, 0, ""};
}

bool IsLoginRefused(FailureCause kind) {
  return kind == FailureCause::UserNameRefused || kind == FailureCause::PasswordRefused;
}

}  // namespace Tavrin
