#include "fleet/FleetLimits.h"

#include <dirent.h>
#include <sys/resource.h>

#include <algorithm>
#include <memory>

namespace Tavrin {
namespace {

/// For what the program opens meanwhile, such as a file to write to.
constexpr std::size_t kSpare = 16;

/// A few more than there are, since the folder itself is among its entries; where the system does
/// not tell, as many as a small program has.
std::size_t AtMostOpenDescriptors() {
  constexpr std::size_t kGuess = 16;
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir("/proc/self/fd"), closedir);
  if (!directory) {
    return kGuess;
  }
  std::size_t count = 0;
  while (readdir(directory.get()) != nullptr) {
    ++count;
  }
  return count;
}

/// Returns the limit that then holds.
std::size_t RaiseLimit(std::size_t needed) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  if (limit.rlim_cur < needed) {
    rlimit raised = limit;
    raised.rlim_cur = std::min<rlim_t>(needed, limit.rlim_max);
    limit = setrlimit(RLIMIT_NOFILE, &raised) == 0 ? raised : limit;
  }
  return limit.rlim_cur;
}

}  // namespace

DescriptorLimit MakeRoomForDescriptors(std::size_t enclosures) {
  const std::size_t others = AtMostOpenDescriptors() + kSpare;
  DescriptorLimit room;
  room.needed = others + enclosures * kDescriptorsOfEnclosure;
  room.limit = RaiseLimit(room.needed);
  const std::size_t left = room.limit - std::min(room.limit, others);
  room.enclosures = std::min(enclosures, left / kDescriptorsOfEnclosure);
  return room;
}

}  // namespace Tavrin
