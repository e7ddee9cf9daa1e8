#pragma once

#include <cstddef>
#include <string>

#include "reading/Observer.h"
#include "reading/Reading.h"

namespace Tavrin {

/// How the reading of one enclosure ended.
enum class FleetEnding {
  Complete,  ///< By itself, whatever it gave: nobody may have been there, or the user refused.
  TimedOut,  ///< The time for one enclosure was over before.
  Stopped    ///< Exchanges were stopped before (ConnectControl.h), or before it could begin.
};

/// What the reading of one enclosure gave.
struct FleetResult {
  /// The enclosure's place among those that were asked for, counted from 0.
  std::size_t index = 0;

  FleetEnding ending = FleetEnding::Complete;

  /// Everything that was asked for is in it, also what failed or could not be asked any more, each
  /// with its cause: of what a time-out or a stop kept from being read, FailureCause::TimeOver or
  /// Stopped. Where not even the detection came about, `failure` says why, and it is all there is.
  Reading reading;
};

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

  /// Who is told how the pass over that enclosure goes on, all of it as Enclosure tells it but a
  /// little later, and for as long as FleetReader::Read() does not return; null where nobody is. Is
  /// asked anew for each call. Its calls are like those of this class: they may throw, and are made
  /// on the thread that reads the fleet. FleetSettings::logLevel counts, not its LogLevel().
  virtual Observer* ObserverOf(std::size_t /*index*/) { return nullptr; }

  /// The reading of one enclosure ended, in whichever order they do. Is told exactly once for each,
  /// also for one that never began, and is the last that is told of it. `result` is the observer's
  /// to take.
  virtual void EnclosureEnded(FleetResult&& /*result*/) {}

  /// Is told about 20 times a second, also while nothing else happens: for whoever shows the time.
  virtual void TimePasses() {}
};

}  // namespace Tavrin
