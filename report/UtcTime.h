#pragma once

#include <chrono>
#include <string>

namespace Tavrin {

/// The moment as RFC 3339 has it, in UTC and to the millisecond, such as
/// "2026-11-21T18:04:05.678Z"; whatever the locale and the time zone. What is less than a
/// millisecond is cut off, towards the past. Leap seconds do not count, as in the clock.
std::string UtcTime(std::chrono::system_clock::time_point moment);

}  // namespace Tavrin
