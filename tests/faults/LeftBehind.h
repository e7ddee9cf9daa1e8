#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

#include "tests/simulator/RawSession.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {

// What a program and a controller hold at the moment, to be compared before and after.

inline std::size_t EntriesOf(const char* directory) {
  const std::filesystem::directory_iterator entries(directory);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}
inline std::size_t OpenDescriptors() { return EntriesOf("/proc/self/fd"); }
inline std::size_t Threads() { return EntriesOf("/proc/self/task"); }

/// How many sessions the controller counts as open, the one that asks not among them.
inline int OpenSessions(const SimulatedSmm& simulator) {
  constexpr std::uint8_t kApplication = 0x06;
  constexpr std::uint8_t kGetSessionInfo = 0x3D;
  constexpr std::size_t kOpenNowAt = 3;  // Behind completion code, handle and room for sessions.
  Simulator::RawSession session(simulator.Address());
  return session.Send(kApplication, kGetSessionInfo, {0x00}).at(kOpenNowAt) - 1;
}

}  // namespace Tavrin
