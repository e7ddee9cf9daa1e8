#include "platform/standalone/ipmi_client/LearnedIntervals.h"

#include <map>
#include <mutex>
#include <utility>

namespace Tavrin {
namespace Standalone {
namespace {

using std::chrono::milliseconds;

/// Far more slow controllers than anybody has; who has more of them starts again with some.
constexpr std::size_t kCapacity = 4096;

struct Intervals {
  std::mutex mutex;
  std::map<std::pair<std::string, int>, milliseconds> needed;
};

Intervals& IntervalsOfTheProcess() {
  // Never destroyed: a thread may still be in an exchange while the process ends.
  static auto* const intervals = new Intervals;
  return *intervals;
}

}  // namespace

milliseconds LearnedInterval(const std::string& numericAddress, int port) {
  Intervals& intervals = IntervalsOfTheProcess();
  const std::unique_lock<std::mutex> lock(intervals.mutex, std::try_to_lock);
  if (!lock) {
    return milliseconds(0);
  }
  const auto found = intervals.needed.find({numericAddress, port});
  return found == intervals.needed.end() ? milliseconds(0) : found->second;
}

void LearnInterval(const std::string& numericAddress, int port, milliseconds interval) {
  Intervals& intervals = IntervalsOfTheProcess();
  const std::unique_lock<std::mutex> lock(intervals.mutex, std::try_to_lock);
  if (!lock) {
    return;
  }
  if (interval.count() == 0) {
    intervals.needed.erase({numericAddress, port});
    return;
  }
  if (intervals.needed.size() >= kCapacity) {
    intervals.needed.erase(intervals.needed.begin());
  }
  intervals.needed[{numericAddress, port}] = interval;
}

}  // namespace Standalone
}  // namespace Tavrin
