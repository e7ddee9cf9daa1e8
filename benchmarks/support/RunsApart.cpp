#include "benchmarks/support/RunsApart.h"

#include <sys/wait.h>
#include <unistd.h>

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include "benchmarks/support/Growth.h"
#include "benchmarks/support/Median.h"
#include "support/Pipe.h"

namespace Tavrin {
namespace {

/// All runs with one number of enclosures.
struct Runs {
  Growth growth;
  std::vector<double> memoryKib = {};  ///< An enclosure's, a value a round.
};

/// What the child process does, and its exit code.
int Tell(const Pipe& pipe, std::size_t count, const std::function<Run(std::size_t)>& read) {
  try {
    const Run run = read(count);
    return write(pipe.write.Get(), &run, sizeof(run)) == sizeof(run) ? 0 : 1;
  } catch (const std::exception& exception) {
    std::cerr << exception.what() << std::endl;
    return 1;
  }
}

Run RunApart(std::size_t count, const std::function<Run(std::size_t)>& read) {
  Pipe pipe = MakePipe();
  const pid_t child = fork();
  if (child < 0) {
    throw std::runtime_error("cannot start a process");
  }
  if (child == 0) {
    _exit(Tell(pipe, count, read));
  }
  pipe.write.Close();
  Run run;
  const ssize_t length = ::read(pipe.read.Get(), &run, sizeof(run));
  waitpid(child, nullptr, 0);
  if (length != sizeof(run)) {
    throw std::runtime_error("no figures came of " + std::to_string(count) + " enclosures");
  }
  return run;
}

}  // namespace

nlohmann::ordered_json RunsApart(const std::vector<std::size_t>& counts, int rounds,
                                 const std::function<Run(std::size_t count)>& read) {
  std::vector<Runs> all;
  for (const std::size_t count : counts) {
    all.push_back({Growth(count)});
  }
  for (int round = 0; round < rounds; ++round) {
    for (Runs& runs : all) {
      const std::size_t count = runs.growth.Enclosures();
      const Run run = RunApart(count, read);
      runs.growth.Add(run.cost, all.front().growth);
      runs.memoryKib.push_back(static_cast<double>(run.memoryKib) / static_cast<double>(count));
    }
  }
  auto entries = nlohmann::ordered_json::array();
  for (const Runs& runs : all) {
    entries.push_back(runs.growth.ToJson());
    entries.back()["memory_kib_per_enclosure"] = Median(runs.memoryKib);
  }
  return entries;
}

}  // namespace Tavrin
