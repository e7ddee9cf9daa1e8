#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>
#include <functional>

namespace Tavrin::Double {

// What stands for sleep() and clock_nanosleep() in every program that links this: pauses and waits
// are counted and take no time, in any number of threads. The functions are set while nothing
// pauses; without one, each returns 0.

/// How many seconds all pauses have added up to.
inline std::atomic<std::uint64_t> pausedSeconds{0};

/// Runs in place of every sleep(), and gives what it returns.
inline std::function<unsigned int(unsigned int seconds)> onPause;

/// The same for clock_nanosleep().
inline std::function<int(clockid_t clock, int flags, const timespec& until)> onWait;

}  // namespace Tavrin::Double
