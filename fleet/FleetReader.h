#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

#include "fleet/FleetObserver.h"
#include "reading/EnclosureSettings.h"
#include "reading/Reading.h"

namespace Tavrin {

/// The most enclosures that are read at once.
constexpr std::size_t kMaxFanout = 1000;

/// How enclosures are read.
struct FleetSettings {
  /// What is asked of each, as of Enclosure::Read().
  std::vector<Part> parts;

  /// The PSU, 1 to 9, that is selected instead, as of Enclosure::SelectPsu(); 0 for none.
  int psu = 0;

  /// So many enclosures are read at once, 1 to kMaxFanout; the next one begins when one ends.
  std::size_t fanout = kMaxFanout;

  /// How long the reading of one enclosure may take in all, from its beginning: more than 0. As
  /// long as it takes, when there is none: that is 18 seconds and its exchanges for an SMM that is
  /// well, and minutes for one that is slow.
  std::optional<std::chrono::milliseconds> timeout;

  /// Whether each is asked for its presence first (ConnectPresence.h), which tells after 3 seconds
  /// that nobody is there instead of after every attempt to connect.
  bool asksPresence = true;

  /// Over so much time the first datagrams to all that begin at once are spread evenly.
  std::chrono::milliseconds spread{500};

  /// Up to which level lines of the log are told: 0 for no line, 4 for every one.
  unsigned int logLevel = 0;
};

/// How many threads read an enclosure in this process, abandoned ones included. A program that ends
/// with 0 leaves none in the middle of something.
std::size_t CountFleetThreads();

/// Reads many enclosures at once, each on a thread of its own, so that one that is dead, slow or
/// lying delays nobody else's result. Each is one pass of Enclosure with what that promises: a
/// wrong password is tried once.
///
/// Its threads have 512 KiB of stack each, of which only what is used takes memory.
class FleetReader {
 public:
  /// Throws std::invalid_argument, which names the setting, its value and what was expected, when
  /// one is out of its range.
  explicit FleetReader(FleetSettings settings);

  /// Reads all, and returns once the result of each was handed over. Enclosures begin in their
  /// order.
  ///
  /// When the time for one is over, its result is handed over at once with what was read so far,
  /// and its thread is abandoned: the pauses of the library cannot be cut short. An abandoned
  /// thread sends nothing more, but what closes its session, and ends by itself within 18 seconds;
  /// it keeps to itself what it still needs. A program may end before. This returns once no session
  /// is open any more, and waits half a second for that at most.
  ///
  /// When exchanges are stopped (StopExchanges() of ConnectControl.h, on any thread or in the
  /// handler of a signal), what was read so far is handed over, for those that did not begin that
  /// they did not, and this returns: within 0.3 s when no session is open in the process, otherwise
  /// when all are closed, and within 2 s at the latest.
  ///
  /// Raises the process's limit of open files as far as needed and possible. Throws
  /// UsageError when not even one enclosure can be read for want of them; when fewer fit than the
  /// fan-out, that many are read at once, which the observer is told.
  ///
  /// The settings are copied for each enclosure that is being read, and each copy of the password
  /// is wiped with it. After an exception of the observer, which passes, the threads go on for
  /// nobody; StopExchanges() ends their exchanges.
  void Read(const std::vector<EnclosureSettings>& enclosures, FleetObserver& observer) const;

 private:
  FleetSettings settings_;
};

}  // namespace Tavrin
