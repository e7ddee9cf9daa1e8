#pragma once

#include <optional>

#include "reading/Cause.h"

namespace Tavrin {

/// Sees to it that a run which the SMM refused to let in does not try again: many controllers lock
/// an account after three to five failed logins. It does so for the whole process.
class LoginGuard {
 public:
  /// Looks at how the calling thread's last exchange ended, and after a refusal forbids further
  /// connection attempts. The log's handler may call this: that is where operations of several
  /// exchanges can be stopped in the middle.
  void Look();

  /// The first refusal; empty as long as there was none.
  [[nodiscard]] const std::optional<Cause>& Refusal() const { return refusal_; }

 private:
  std::optional<Cause> refusal_;
};

}  // namespace Tavrin
