#include "benchmarks/support/Process.h"

#include <unistd.h>

#include <chrono>
#include <ctime>
#include <fstream>
#include <stdexcept>

#include "support/ChildProcess.h"

namespace Tavrin {
namespace {

double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double OwnProcessorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
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
  Program program;
  program.arguments = arguments;
  program.error = STDERR_FILENO;
  const ProcessEnd end = ChildProcess(program).Wait();
  if (end.exitCode != 0) {
    throw std::runtime_error(arguments.front() + " failed");
  }
  return {Now() - start, end.processorSeconds};
}

}  // namespace Tavrin
