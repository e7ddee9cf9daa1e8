#pragma once

#include <cstdint>
#include <string>

#include "platform/standalone/ipmi_client/LastExchange.h"

namespace Tavrin {

/// Why a query failed, beside its status; as new when it did not fail.
struct Cause {
  /// For people, printable and without advice, since what helps depends on the program; never holds
  /// the password. May be empty.
  std::string words;

  /// None where an answer came, whatever it holds, and where the reason lies elsewhere.
  Standalone::FailureCause kind = Standalone::FailureCause::None;

  /// Of the answer, as IPMI 2.0 numbers them: 0xC0 busy, 0xD4 insufficient privilege, and so on; 0
  /// where none came, and where the SMM did not refuse.
  std::uint8_t completionCode = 0;

  /// What is not known of the SMM because of this, and is needed to ask for more or to read what it
  /// answers: "generation" or "platform". Mostly empty.
  std::string missing;
};

/// Why an exchange that ended like this gave nothing of use. Looks at the calling thread's
/// configuration where that allowed no attempt.
Cause CauseOf(const Standalone::LastExchange& exchange);

/// Whether the SMM refused to let the user in. Many controllers lock an account after a few such
/// refusals, so that there must not be a second one in a run.
bool IsLoginRefused(Standalone::FailureCause kind);

}  // namespace Tavrin
