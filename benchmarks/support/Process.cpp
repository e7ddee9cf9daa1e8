#include "benchmarks/support/Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <fstream>
#include <stdexcept>

namespace Tavrin {
namespace {

double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

double ProcessorSeconds(const rusage& usage) {
  return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
}

double OwnProcessorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

pid_t Start(const std::vector<std::string>& arguments) {
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t process = -1;
  const int failure =
      posix_spawnp(&process, pointers.front(), &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) {
    throw std::runtime_error("cannot start " + arguments.front());
  }
  return process;
}

}  // namespace

Cost operator+(const Cost& left, const Cost& right) {
  return {left.wallSeconds + right.wallSeconds, left.processorSeconds + right.processorSeconds};
}

Meter::Meter() : start_{Now(), OwnProcessorSeconds()} {}

Cost Meter::Read() const {
  return {Now() - start_.wallSeconds, OwnProcessorSeconds() - start_.processorSeconds};
}

long ResidentKib() {
  constexpr long kBytesOfAKib = 1024;
  std::ifstream statm("/proc/self/statm");
  long all = 0;
  long resident = 0;
  statm >> all >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / kBytesOfAKib);
}

Cost RunToEnd(const std::vector<std::string>& arguments) {
  const double start = Now();
  const pid_t process = Start(arguments);
  int status = 0;
  rusage usage{};
  wait4(process, &status, 0, &usage);
  const double end = Now();
  if (status != 0) {
    throw std::runtime_error(arguments.front() + " failed");
  }
  return {end - start, ProcessorSeconds(usage)};
}

}  // namespace Tavrin
