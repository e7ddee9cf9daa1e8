#include "tests/secrets/ProcessWatch.h"

#include <chrono>
#include <fstream>
#include <iterator>

namespace Tavrin {
namespace {

constexpr std::chrono::milliseconds kBetweenReads{10};

void AppendIfNew(const std::string& path, std::string& seen) {
  std::ifstream file(path, std::ios::binary);
  const std::string content(std::istreambuf_iterator<char>(file), {});
  if (seen.find(content) == std::string::npos) {
    seen += content;
  }
}

}  // namespace

ProcessWatch::ProcessWatch(pid_t process)
    : folder_("/proc/" + std::to_string(process)), thread_([this] { Run(); }) {}

ProcessWatch::~ProcessWatch() { Stop(); }

void ProcessWatch::Stop() {
  isOver_ = true;
  if (thread_.joinable()) {
    thread_.join();
  }
}

void ProcessWatch::Run() {
  while (!isOver_) {
    AppendIfNew(folder_ + "/cmdline", commandLines_);
    AppendIfNew(folder_ + "/environ", environments_);
    std::this_thread::sleep_for(kBetweenReads);
  }
}

}  // namespace Tavrin
