#include "tests/secrets/ProcessWatch.h"

#include <chrono>

#include "tests/support/Child.h"

namespace Tavrin {
namespace {

constexpr std::chrono::milliseconds kBetweenReads{10};

void AppendIfNew(const std::string& content, std::string& seen) {
  if (seen.find(content) == std::string::npos) {
    seen += content;
  }
}

}  // namespace

ProcessWatch::ProcessWatch(pid_t process) : process_(process) {
  // At once, so that a process that soon ends is seen however late the thread begins. One that was
  // just started has no command line to show yet.
  do {
    Read();
  } while (commandLines_.empty() && !HasEnded(process_));
  thread_ = std::thread([this] { Run(); });
}

ProcessWatch::~ProcessWatch() { Stop(); }

void ProcessWatch::Stop() {
  isOver_ = true;
  if (thread_.joinable()) {
    thread_.join();
  }
}

void ProcessWatch::Run() {
  while (!isOver_) {
    std::this_thread::sleep_for(kBetweenReads);
    Read();
  }
}

void ProcessWatch::Read() {
  AppendIfNew(ReadProcessFile(process_, "cmdline"), commandLines_);
  AppendIfNew(ReadProcessFile(process_, "environ"), environments_);
}

}  // namespace Tavrin
