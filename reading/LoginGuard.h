#pragma once

#include <optional>

#include "platform/standalone/globalconfig/ThreadConfig.h"
#include "reading/Cause.h"

namespace Tavrin {

/// Sees to it that a pass which the SMM refused to let in does not try again: many controllers lock
/// an account after three to five failed logins. It does so for its thread alone.
class LoginGuard {
 public:
  /// Further attempts are forbidden in `config`, which holds for the pass and outlives the guard.
  explicit LoginGuard(Standalone::ThreadConfig& config) : config_(config) {}

  /// From now on there is something to look at: until the pass has made an exchange of its own, the
  /// thread's last one is of another pass.
  void Begin() { hasBegun_ = true; }

  /// Looks at how the calling thread's last exchange ended, and after a refusal forbids further
  /// connection attempts. The log's handler may call this: that is where operations of several
  /// exchanges can be stopped in the middle.
  void Look();

  /// The first refusal; empty as long as there was none.
  [[nodiscard]] const std::optional<Cause>& Refusal() const { return refusal_; }

 private:
  Standalone::ThreadConfig& config_;
  bool hasBegun_ = false;
  std::optional<Cause> refusal_;
};

}  // namespace Tavrin
