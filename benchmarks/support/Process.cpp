#include "benchmarks/support/Process.h"

#include <unistd.h>

#include <chrono>
#include <ctime>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "support/ChildProcess.h"
#include "support/Pipe.h"

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

/// Adds the lines that end in `piece`; what is behind the last one stays in `rest`.
void AddLines(std::string_view piece, double atSeconds, std::string& rest,
              std::vector<PrintedLine>& lines) {
  for (std::size_t end = 0; (end = piece.find('\n')) != std::string_view::npos;
       piece.remove_prefix(end + 1)) {
    rest += piece.substr(0, end);
    lines.push_back({atSeconds, std::exchange(rest, {})});
  }
  rest += piece;
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

Listened Listen(const std::vector<std::string>& arguments) {
  Pipe pipe = MakePipe();
  Program program;
  program.arguments = arguments;
  program.output = pipe.write.Get();
  Listened listened;
  const double start = Now();
  ChildProcess process(program);
  pipe.write.Close();
  std::string rest;
  std::vector<char> piece(65536);
  for (ssize_t length = 0; (length = read(pipe.read.Get(), piece.data(), piece.size())) > 0;) {
    AddLines({piece.data(), static_cast<std::size_t>(length)}, Now() - start, rest, listened.lines);
  }
  const ProcessEnd end = process.Wait();
  listened.cost = {Now() - start, end.processorSeconds};
  listened.exitCode = end.exitCode;
  return listened;
}

}  // namespace Tavrin
