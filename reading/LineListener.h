#pragma once

#include <string>

#include "platform/standalone/logger/LogControl.h"
#include "reading/LoginGuard.h"
#include "reading/Observer.h"

namespace Tavrin {

/// Listens to the log lines of a pass. While an operation makes many exchanges nothing else is
/// called, so that a line's moment is also when the login is guarded, and when the observer learns
/// of attempts and of their failures.
class LineListener {
 public:
  /// Both stay the caller's, and outlive the listener.
  LineListener(Observer& observer, LoginGuard& guard) : observer_(observer), guard_(guard) {}

  /// Up to which level the listener needs lines.
  [[nodiscard]] unsigned int Threshold() const;

  /// Looks at the guard, and tells the observer of the line and of what it stands for. May throw
  /// what the observer throws, which the log drops.
  void Take(const Standalone::LogLine& line);

 private:
  Observer& observer_;
  LoginGuard& guard_;
};

/// Tells the observer of a wait while it lives, on whichever way it ends.
class ToldWait {
 public:
  /// The observer outlives this. What WaitBegins() throws passes, and the wait is not ended then.
  ToldWait(Observer& observer, const std::string& name) : observer_(observer) {
    observer_.WaitBegins(name);
  }
  ~ToldWait() { observer_.WaitEnds(); }
  ToldWait(const ToldWait&) = delete;
  ToldWait& operator=(const ToldWait&) = delete;

 private:
  Observer& observer_;
};

}  // namespace Tavrin
