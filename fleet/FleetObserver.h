#pragma once

#include <cstddef>
#include <string>

#include "reading/Observer.h"
#include "reading/Reading.h"

namespace Tavrin {

/// Is told how the reading of enclosures goes on: one call at a time, all on the thread that reads
/// the fleet, which looks at nothing else meanwhile. The reading of the enclosures goes on during a
/// call, but a slow one delays what comes behind it, time-outs included. Each call does nothing
/// unless it is overridden. What a call throws ends FleetReader::Read().
class FleetObserver {
 public:
  FleetObserver() = default;
  virtual ~FleetObserver() = default;
  FleetObserver(const FleetObserver&) = delete;
  FleetObserver& operator=(const FleetObserver&) = delete;

  /// Something that holds for all and that a user should know, such as that fewer are read at once
  /// than asked for. For people, printable. Mostly comes before all else.
  virtual void Noted(const std::string& /*text*/) {}

  /// The reading of that enclosure begins now.
  virtual void EnclosureBegins(std::size_t /*index*/) {}

  /// The observer that is told how the pass over that enclosure goes on, or null for none. Is asked
  /// before each call, so that it may change, and lives until FleetReader::Read() returns. Its
  /// calls come a little later than Enclosure makes them, on the thread of this class, and may
  /// throw. Its LogLevel() is not asked: FleetSettings::logLevel decides.
  virtual Observer* ObserverOf(std::size_t /*index*/) { return nullptr; }

  /// The reading of one enclosure ended, in whichever order they do. Is told exactly once for each,
  /// also for one that never began, and is the last that is told of it. Everything that was asked
  /// for is in the reading, also what failed or could not be asked any more, each with its cause:
  /// of what a time-out or a stop kept from being read, FailureCause::TimeOver or Stopped. Where
  /// not even the detection came about, `failure` says why, and it is all there is.
  virtual void EnclosureEnded(std::size_t /*index*/, Reading&& /*reading*/) {}

  /// Is told about 20 times a second, also while nothing else happens: for whoever shows the time.
  virtual void TimePasses() {}
};

}  // namespace Tavrin
