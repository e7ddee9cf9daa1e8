#include "tests/faults/LeftBehind.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tests/simulator/RawSession.h"

namespace Tavrin {
namespace {

namespace fs = std::filesystem;

std::size_t EntriesOf(const char* directory) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
}

}  // namespace

std::size_t OpenDescriptors() { return EntriesOf("/proc/self/fd"); }

std::size_t Threads() { return EntriesOf("/proc/self/task"); }

std::size_t ResidentKilobytes() {
  std::ifstream status("/proc/self/status");
  std::string word;
  std::size_t kilobytes = 0;
  while (status >> word && word != "VmRSS:") {
  }
  status >> kilobytes;
  return kilobytes;
}

int OpenSessions(const SimulatedSmm& simulator) {
  constexpr std::uint8_t kApplication = 0x06;
  constexpr std::uint8_t kGetSessionInfo = 0x3D;
  constexpr std::size_t kOpenNowAt = 3;  // Behind completion code, handle and room for sessions.
  Simulator::RawSession session(simulator.Address(), "admin", "sesame");
  return session.Send(kApplication, kGetSessionInfo, {0x00}).at(kOpenNowAt) - 1;
}

}  // namespace Tavrin
