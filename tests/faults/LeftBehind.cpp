#include "tests/faults/LeftBehind.h"

#include <cstdint>
#include <filesystem>
#include <iterator>

#include "tests/simulator/RawSession.h"

namespace Tavrin {
namespace {

std::size_t EntriesOf(const char* directory) {
  using Entries = std::filesystem::directory_iterator;
  return static_cast<std::size_t>(std::distance(Entries(directory), Entries()));
}

}  // namespace

std::size_t OpenDescriptors() { return EntriesOf("/proc/self/fd"); }

std::size_t Threads() { return EntriesOf("/proc/self/task"); }

int OpenSessions(const SimulatedSmm& simulator) {
  constexpr std::uint8_t kApplication = 0x06;
  constexpr std::uint8_t kGetSessionInfo = 0x3D;
  constexpr std::size_t kOpenNowAt = 3;  // Behind completion code, handle and room for sessions.
  Simulator::RawSession session(simulator.Address());
  return session.Send(kApplication, kGetSessionInfo, {0x00}).at(kOpenNowAt) - 1;
}

}  // namespace Tavrin
