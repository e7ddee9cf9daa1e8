#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

#include "fleet/FleetMailbox.h"
#include "fleet/FleetReader.h"
#include "reading/EnclosureSettings.h"
#include "reading/Reading.h"
#include "reading/Stopwatch.h"

namespace Tavrin {

/// What the thread of one enclosure needs, all of it its own or shared, so that nothing it touches
/// is gone before it.
struct FleetErrand {
  std::size_t index = 0;
  EnclosureSettings enclosure;
  std::shared_ptr<const FleetSettings> settings;
  std::shared_ptr<FleetMailbox> mailbox;

  /// When its time is over.
  std::optional<std::chrono::steady_clock::time_point> deadline;
};

/// Says in the reading whose it is, when it began and how long it took until now.
void Stamp(Reading& reading, const EnclosureSettings& enclosure, const Stopwatch& stopwatch);

/// Begins a thread that reads one enclosure, leaves everything in the mailbox and ends by itself.
/// Returns 0, or the error, as of errno, that keeps a thread from being made; nothing happens then.
int BeginFleetThread(std::unique_ptr<FleetErrand> errand);

}  // namespace Tavrin
