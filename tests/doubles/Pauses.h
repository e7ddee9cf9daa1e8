#pragma once

#include <cstdint>
#include <ctime>
#include <functional>

namespace Tavrin::Double {

// What stands for sleep() and clock_nanosleep() in every program that links this: pauses and waits
// are counted and take no time, in any number of threads. The functions given here are to be set
// while nothing pauses.

/// How many seconds all pauses have added up to.
std::uint64_t PausedSeconds();

/// Runs in place of every sleep() from now on, and gives what it returns; without a function it
/// returns 0.
void OnPause(std::function<unsigned int(unsigned int seconds)> pause);

/// The same for clock_nanosleep().
void OnWait(std::function<int(clockid_t clock, int flags, const timespec& until)> wait);

}  // namespace Tavrin::Double
