#include "tests/support/Child.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace Tavrin {
namespace {

constexpr int kSilence = 60'000;  // Milliseconds.

/// Appends what the descriptor has; false at its end.
bool Take(int descriptor, std::string& text) {
  std::array<char, 4096> buffer{};
  const ssize_t count = read(descriptor, buffer.data(), buffer.size());
  text.append(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  return count > 0;
}

Program WithPipes(Program program, const Pipe& in, const Pipe& out, const Pipe& err) {
  program.input = in.read.Get();
  program.output = out.write.Get();
  program.error = err.write.Get();
  return program;
}

Program WithoutPipes(const std::vector<std::string>& arguments,
                     const std::vector<std::string>& environment, const std::string& terminal) {
  Program program;
  program.arguments = arguments;
  program.environment = environment;
  program.terminal = terminal;
  return program;
}

}  // namespace

Child::Child(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
             const std::string& input, const std::string& terminal)
    : Child(WithoutPipes(arguments, environment, terminal), input, MakePipe(), MakePipe(),
            MakePipe()) {}

/// What the process does not read of its input is still taken: this end of the pipe stays open.
Child::Child(Program program, const std::string& input, Pipe in, Pipe out, Pipe err)
    : output_(std::move(out.read)),
      error_(std::move(err.read)),
      process_(WithPipes(std::move(program), in, out, err)) {
  if (write(in.write.Get(), input.data(), input.size()) != static_cast<ssize_t>(input.size())) {
    throw std::runtime_error("the input cannot be written");
  }
}

std::string Child::ReadLine() const {
  std::string line;
  char byte = 0;
  while (read(output_.Get(), &byte, 1) == 1 && byte != '\n') {
    line += byte;
  }
  return line;
}

std::vector<pid_t> Child::Children() const { return ChildrenOf(Process()); }

Finished Child::Wait() {
  Finished finished;
  std::array<pollfd, 2> sources = {{{output_.Get(), POLLIN, 0}, {error_.Get(), POLLIN, 0}}};
  std::array<std::string*, 2> texts = {&finished.output, &finished.error};
  while (sources[0].fd >= 0 || sources[1].fd >= 0) {
    if (poll(sources.data(), sources.size(), kSilence) == 0) {
      process_.Signal(SIGKILL);
      break;
    }
    for (std::size_t i = 0; i < sources.size(); ++i) {
      if (sources[i].fd >= 0 && sources[i].revents != 0 && !Take(sources[i].fd, *texts[i])) {
        sources[i].fd = -1;
      }
    }
  }
  const ProcessEnd end = process_.Wait();
  finished.exitCode = end.exitCode;
  finished.signal = end.signal;
  return finished;
}

std::vector<std::string> AsScript(const std::string& script, const std::vector<std::string>& call,
                                  const std::string& shellOption) {
  std::vector<std::string> whole = {"/bin/sh", shellOption, script};
  whole.insert(whole.end(), call.begin(), call.end());
  return whole;
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

}  // namespace Tavrin
