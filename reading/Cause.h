#pragma once

#include <cstdint>
#include <string>

#include "platform/standalone/ipmi_client/LastExchange.h"

namespace Tavrin {

/// Why a query failed, beside its status; as new when it did not fail.
struct Cause {
  std::string words;  ///< For people, printable and without advice; may be empty.

  /// None where an answer came, whatever it holds, and where the reason lies elsewhere.
  Standalone::FailureCause kind = Standalone::FailureCause::None;

  std::uint8_t completionCode = 0;  ///< Of the answer; 0 where none came.

  /// What is not known of the SMM because of this, and is needed to ask for more or to read what it
  /// answers: "generation" or "platform". Mostly empty.
  std::string missing;
};

/// Why an exchange that ended like this gave nothing of use.
Cause CauseOf(const Standalone::LastExchange& exchange);

/// Whether the SMM refused to let the user in. Many controllers lock an account after a few such
/// refusals, so that there must not be a second one in a run.
bool IsLoginRefused(Standalone::FailureCause kind);

}  // namespace Tavrin
