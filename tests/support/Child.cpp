#include "tests/support/Child.h"

#include <unistd.h>

#include <array>
#include <chrono>
#include <fstream>
#include <future>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace Tavrin {
namespace {

std::string ReadToEnd(int descriptor) {
  std::string text;
  std::array<char, 4096> buffer{};
  for (ssize_t count = 0; (count = read(descriptor, buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace

std::vector<std::string> Joined(std::vector<std::string> first,
                                const std::vector<std::string>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

std::vector<std::string> AsScript(const std::string& script, const std::vector<std::string>& call,
                                  const std::string& shellOption) {
  return Joined({"/bin/sh", shellOption, script}, call);
}

std::string ReadProcessFile(pid_t process, const std::string& name) {
  const std::ifstream file("/proc/" + std::to_string(process) + "/" + name, std::ios::binary);
  // A process may vanish between opening and reading, which an iterator over the file would throw.
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

std::vector<pid_t> ChildrenOf(pid_t process) {
  const std::string thread = std::to_string(process);
  std::istringstream children(ReadProcessFile(process, "task/" + thread + "/children"));
  return {std::istream_iterator<pid_t>(children), {}};
}

bool HasEnded(pid_t process) {
  const std::string text = ReadProcessFile(process, "stat");
  const std::size_t name = text.rfind(") ");
  return name == std::string::npos || text.at(name + 2) == 'Z' || text.at(name + 2) == 'X';
}

bool EndsSoon(pid_t process) {
  constexpr std::chrono::seconds patience{10};
  const auto giveUp = std::chrono::steady_clock::now() + patience;
  while (!HasEnded(process) && std::chrono::steady_clock::now() < giveUp) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return HasEnded(process);
}

/// What the process does not read of its input is still taken: this end of the pipe stays open.
Child::Child(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
             const std::string& input, const std::string& terminal)
    : process_({arguments, environment, ".", input_.read.Get(), output_.write.Get(),
                error_.write.Get(), terminal, true}) {
  if (write(input_.write.Get(), input.data(), input.size()) != static_cast<ssize_t>(input.size())) {
    throw std::runtime_error("the input cannot be written");
  }
  input_.read.Close();
  input_.write.Close();
  output_.write.Close();
  error_.write.Close();
}

std::string Child::ReadLine() const {
  std::string line;
  char byte = 0;
  while (read(output_.read.Get(), &byte, 1) == 1 && byte != '\n') {
    line += byte;
  }
  return line;
}

Finished Child::Wait() {
  std::future<std::string> error = std::async(std::launch::async, ReadToEnd, error_.read.Get());
  Finished finished;
  finished.output = ReadToEnd(output_.read.Get());
  finished.error = error.get();
  static_cast<ProcessEnd&>(finished) = process_.Wait();
  return finished;
}

std::vector<std::string> ComplaintsAboutUnwritableOutput(
    const std::vector<std::string>& call, const std::vector<std::string>& environment) {
  std::vector<std::string> complaints;
  for (const std::string script : {
           R"("$0" "$@" >/dev/full; echo "code $?" >&2)",
           R"("$0" "$@" >&-; echo "code $?" >&2)",
           R"((trap '' PIPE; while echo 2>&-; do :; done; "$0" "$@"; echo "code $?" >&2) | :)",
       }) {
    complaints.push_back(Child(AsScript(script, call), environment).Wait().error);
  }
  return complaints;
}

}  // namespace Tavrin
