#pragma once

#include <string>

#include "platform/standalone/logger/LogControl.h"
#include "reading/Cause.h"
#include "reading/Reading.h"

namespace Tavrin {

/// Is told how a pass goes on, on the thread that makes it. Each call does nothing unless it is
/// overridden. No pass may be made within a call: it would take the place of the outer one's last
/// exchange.
class Observer {
 public:
  Observer() = default;
  virtual ~Observer() = default;
  Observer(const Observer&) = delete;
  Observer& operator=(const Observer&) = delete;

  /// Up to which level LineWritten() is called: 0 for no line, 4 for every one. Is looked at when a
  /// pass begins and with each line. With 0 a complaint about a malformed environment variable,
  /// which is made once a process, can be lost. What the calls below throw while a line is written
  /// is dropped.
  [[nodiscard]] virtual unsigned int LogLevel() const { return 0; }
  virtual void LineWritten(const Standalone::LogLine& /*line*/) {}

  /// Between these two the library repeats one request up to `attempts` times, 3 seconds apart.
  /// WaitEnds() comes on whichever way the wait ends, and must not throw.
  virtual void WaitBegins(const std::string& /*name*/) {}
  virtual void AttemptBegins(int /*number*/, int /*attempts*/) {}
  virtual void WaitEnds() {}

  /// A connection attempt or a request came to nothing; within a wait there may be more of them. Is
  /// told after the line that the IPMI client wrote about it.
  virtual void AttemptFailed(const Cause& /*cause*/) {}

  /// That part of the reading is done; parts that come later are still empty. `soFar` holds until
  /// the call returns. What this throws ends the pass.
  virtual void PartRead(const Reading& /*soFar*/, Part /*part*/) {}
};

}  // namespace Tavrin
