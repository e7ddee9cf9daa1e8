#pragma once

#include <string>

#include "platform/standalone/logger/LogControl.h"
#include "reading/Cause.h"
#include "reading/Reading.h"

namespace Tavrin {

/// Is told how a pass goes on, on the thread that makes it, and holds it up for as long as a call
/// takes. Each call does nothing unless it is overridden. One observer can be told of passes on
/// several threads at once only if its own calls are fit for that.
///
/// No pass may be begun within a call: it would take the place of the outer one's last exchange,
/// and the outer one would tell causes that are not its own. For the same reason no client and no
/// object of the library may be used there.
class Observer {
 public:
  Observer() = default;
  virtual ~Observer() = default;
  Observer(const Observer&) = delete;
  Observer& operator=(const Observer&) = delete;

  /// Up to which level LineWritten() is called: 0 for no line, 4 for every one. Is looked at when a
  /// pass begins and with each line. With 0 a complaint about a malformed environment variable,
  /// which is made once a process, can be lost. Must not throw.
  [[nodiscard]] virtual unsigned int LogLevel() const { return 0; }

  /// A line of the library's or the platform's log, with its bytes as they came: see
  /// support/EscapeControlBytes.h. Must not log. What this throws is dropped, as is what
  /// AttemptBegins() and AttemptFailed() throw, which are told while a line is written.
  virtual void LineWritten(const Standalone::LogLine& /*line*/) {}

  /// From here to WaitEnds() the library repeats one request up to `attempts` times, 3 seconds
  /// apart. `name` is for people, such as "reading the SMM's status". What this throws ends the
  /// pass, but that of a selection the selection alone, with kExceptionStatus.
  virtual void WaitBegins(const std::string& /*name*/) {}

  /// Attempt `number` of the wait, counted from 1, begins now.
  virtual void AttemptBegins(int /*number*/, int /*attempts*/) {}

  /// The wait is over, on whichever way: is also told while an exception of the library passes, and
  /// therefore must not throw; doing so ends the process.
  virtual void WaitEnds() {}

  /// A connection attempt or a request came to nothing; within a wait there may be more of them. Is
  /// told after the line that the IPMI client wrote about it. `cause` holds until the call returns.
  virtual void AttemptFailed(const Cause& /*cause*/) {}

  /// That part of the reading is done; parts that come later are still empty. `soFar` holds until
  /// the call returns. What this throws ends the pass.
  virtual void PartRead(const Reading& /*soFar*/, Part /*part*/) {}
};

}  // namespace Tavrin
