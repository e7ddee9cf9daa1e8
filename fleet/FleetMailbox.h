#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <variant>
#include <vector>

#include "fleet/FleetObserver.h"
#include "reading/Observer.h"
#include "reading/Query.h"
#include "reading/Reading.h"

namespace Tavrin {

/// How a pass goes on: makes the call that its observer is told so by.
using PassEvent = std::function<void(Observer&)>;

/// What the thread of an enclosure tells the one that reads the fleet: how its pass goes on, how it
/// ended, or what ended it before it had a reading to give.
struct FleetMail {
  std::size_t index = 0;
  std::variant<PassEvent, Reading, QueryOutcome> content;
};

/// Where the threads of a fleet leave what they have to tell, and what each has read so far. Owned
/// by all of them together, so that a thread that is late finds it still there. May be called from
/// any thread.
class FleetMailbox {
 public:
  explicit FleetMailbox(std::size_t enclosures) : slots_(enclosures) {}

  /// Leaves mail of an enclosure, behind what was left before. Nothing happens once its slot is
  /// closed, so that a thread that was given up says nothing more.
  void Post(FleetMail mail);

  /// Leaves that a part was read, and keeps a copy of the reading so far; the same.
  void Post(std::size_t index, Part part, const Reading& soFar);

  /// Closes an enclosure's slot: nothing is left there any more, and what was left before and not
  /// yet taken is dropped. Gives what was read so far; as new when nothing was.
  Reading Close(std::size_t index);

  /// Takes all that was left, in its order; waits until `deadline` where there is nothing.
  std::vector<FleetMail> Take(std::chrono::steady_clock::time_point deadline);

 private:
  struct Slot {
    std::shared_ptr<const Reading> soFar;  ///< Null as long as nothing was read.
    bool isClosed = false;
  };

  std::mutex mutex_;
  std::condition_variable arrival_;
  std::vector<FleetMail> mail_;  // Guarded by mutex_, as are the slots.
  std::vector<Slot> slots_;
};

}  // namespace Tavrin
