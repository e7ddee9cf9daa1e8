// How many enclosures one process can watch at once: N inventory objects, each with a thread of its
// own, and behind them doubles whose answers take 5 ms each. Every thread constructs its object and
// reads the whole inventory of a second-generation enclosure with 12 nodes and 9 PSU slots.
//
// The pauses that construction makes are counted and take no time, unless --real-pauses is given;
// the times printed leave them out in either case. One JSON document goes to standard output:
// - wall_s, median_wall_s: from the common start to the end of the slowest, and of the median,
//   thread, beyond the pauses.
// - cpu_s: processor time of all threads.
// - memory_kib_per_enclosure: by how much resident memory grew until all inventories were read,
//   with every thread and object alive, divided by N.
// - ratio: wall_s by that of one enclosure.
// - processor_load: cpu_s by the processor time that there was in wall_s. Where it comes near 1,
//   the processor is full.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <future>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "benchmarks/core/PlatformDouble.h"
#include "module/smm/smm_inventory/SMMInventory.h"

namespace Tavrin {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr std::chrono::milliseconds kAnswerTime{5};

/// Everything that one enclosure tells. The status read is part of construction, and the selection
/// of a PSU reads nothing, so neither is called.
class Inventory {
 public:
  explicit Inventory(SMMInventory& smm) : nodes_(smm.GetNodeNub()), nodePower_(smm.GetNodeNub()) {
    int status = smm.GetSmmMT(machineType_);
    status |= smm.GetSmmSN(serialNumber_);
    status |= smm.GetSmmVersion(version_);
    status |= smm.GetSmmName(name_);
    status |= smm.GetChassisPowerConsumption(power_);
    status |= smm.GetChassisPowerCap(cap_);
    status |= smm.GetPSUFanSpeed(fans_);
    status |= smm.GetPSUFwInfo(firmware_);
    status |= smm.GetPSUStatus(psus_);
    for (unsigned long node = 1; node <= nodes_.size(); ++node) {
      status |= smm.GetNodeStatus(node, nodes_[node - 1]);
      status |= smm.GetNodePowerConsumption(node, nodePower_[node - 1]);
    }
    complete_ = status == StatusCode::Success && nodes_.size() == 12 && fans_.size() == 9 &&
                firmware_.size() == 9 && psus_.size() == 9;
  }

  [[nodiscard]] bool IsComplete() const { return complete_; }

 private:
  std::string machineType_;
  std::string serialNumber_;
  std::string version_;
  std::string name_;
  ChassisPowerCon power_;
  ChassisPowerCap cap_;
  std::vector<PSUFanSpeed> fans_;
  std::vector<PSUFwInfo> firmware_;
  std::vector<PSUStatus> psus_;
  std::vector<NodeStatus> nodes_;
  std::vector<ChassisPowerCon> nodePower_;
  bool complete_ = false;
};

/// What one run found out. It travels through a pipe as it is.
struct Run {
  double wall = 0;
  double medianWall = 0;
  double processor = 0;
  double memoryKib = 0;
  double pauses = 0;
  bool complete = false;
};

double ResidentKib() {
  std::ifstream statm("/proc/self/statm");
  double total = 0;
  double resident = 0;
  statm >> total >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024;
}

double ProcessorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// What one thread leaves behind.
struct Outcome {
  Clock::time_point end;
  std::uint64_t secondsOfPauses = 0;
  bool complete = false;
};

/// Reads one enclosure after `start`, tells that it is done, and keeps what it has until `release`.
void ReadEnclosure(const std::shared_future<void>& start, const std::shared_future<void>& release,
                   std::promise<Outcome>& done) {
  start.wait();
  SMMInventory smm(Double::ConnectionSettings());
  const Inventory inventory(smm);
  done.set_value(
      {Clock::now(), Double::TallyOfThisThread().secondsOfPauses, inventory.IsComplete()});
  release.wait();
}

Run ReadEnclosures(std::size_t count, bool pausesAreReal) {
  const double residentBefore = ResidentKib();
  const double processorBefore = ProcessorSeconds();
  std::promise<void> start;
  std::promise<void> release;
  const std::shared_future<void> started = start.get_future().share();
  const std::shared_future<void> released = release.get_future().share();
  std::vector<std::promise<Outcome>> outcomes(count);
  std::vector<std::thread> threads;
  threads.reserve(count);
  for (std::promise<Outcome>& outcome : outcomes) {
    threads.emplace_back([&] { ReadEnclosure(started, released, outcome); });
  }

  Run run;
  run.complete = true;
  std::vector<double> walls;
  const Clock::time_point begin = Clock::now();
  start.set_value();
  for (std::promise<Outcome>& promise : outcomes) {
    const Outcome outcome = promise.get_future().get();
    run.pauses = static_cast<double>(outcome.secondsOfPauses);
    run.complete = run.complete && outcome.complete;
    walls.push_back(Seconds(outcome.end - begin).count() - (pausesAreReal ? run.pauses : 0));
  }
  run.processor = ProcessorSeconds() - processorBefore;
  run.memoryKib = (ResidentKib() - residentBefore) / static_cast<double>(count);
  release.set_value();
  for (std::thread& thread : threads) {
    thread.join();
  }

  std::sort(walls.begin(), walls.end());
  run.wall = walls.back();
  run.medianWall = walls[walls.size() / 2];
  return run;
}

/// In a process of its own, so that no run finds memory that an earlier one left behind.
Run ReadEnclosuresApart(std::size_t count, bool pausesAreReal) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) {
    throw std::runtime_error("cannot make a pipe");
  }
  const pid_t child = fork();
  if (child < 0) {
    throw std::runtime_error("cannot start a process");
  }
  if (child == 0) {
    const Run run = ReadEnclosures(count, pausesAreReal);
    _exit(write(ends[1], &run, sizeof(run)) == sizeof(run) ? 0 : 1);
  }
  close(ends[1]);
  Run run;
  const ssize_t length = read(ends[0], &run, sizeof(run));
  close(ends[0]);
  waitpid(child, nullptr, 0);
  if (length != sizeof(run) || !run.complete) {
    throw std::runtime_error("an enclosure could not be read with " + std::to_string(count) +
                             " at once");
  }
  return run;
}

nlohmann::ordered_json MeasureAll(bool pausesAreReal) {
  Double::ThePlatform() = Double::PlatformOf(SMM_SECOND_GENERATION);
  Double::ThePlatform().answerTime = kAnswerTime;
  Double::ThePlatform().pausesAreReal = pausesAreReal;

  const unsigned int processors = std::thread::hardware_concurrency();
  double wallOfOne = 0;
  nlohmann::ordered_json runs = nlohmann::ordered_json::array();
  for (const std::size_t count : std::array<std::size_t, 4>{1, 10, 100, 500}) {
    const Run run = ReadEnclosuresApart(count, pausesAreReal);
    wallOfOne = count == 1 ? run.wall : wallOfOne;
    runs.push_back({{"enclosures", count},
                    {"wall_s", run.wall},
                    {"median_wall_s", run.medianWall},
                    {"pauses_s", run.pauses},
                    {"cpu_s", run.processor},
                    {"processor_load", run.processor / (run.wall * processors)},
                    {"memory_kib_per_enclosure", run.memoryKib},
                    {"ratio", run.wall / wallOfOne}});
  }
  return {{"processors", processors},
          {"answer_ms", kAnswerTime.count()},
          {"real_pauses", pausesAreReal},
          {"runs", runs}};
}

}  // namespace
}  // namespace Tavrin

int main(int argc, char** argv) {
  const bool pausesAreReal = argc == 2 && std::string(argv[1]) == "--real-pauses";
  if (argc > 1 && !pausesAreReal) {
    std::cerr << "usage: many_enclosures_double [--real-pauses]\n";
    return 2;
  }
  try {
    std::cout << Tavrin::MeasureAll(pausesAreReal).dump(2) << std::endl;
  } catch (const std::exception& exception) {
    std::cerr << "many_enclosures_double: " << exception.what() << '\n';
    return 1;
  }
  return 0;
}
