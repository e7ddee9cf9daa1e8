#include "simulator/ChildProcess.h"

#include <gmock/gmock.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <thread>

#include "simulator/PrivateDirectory.h"
#include "tests/support/ChildProcess.h"

namespace Tavrin::Simulator {
namespace {

using testing::HasSubstr;

/// A shell that runs a script, and what it prints.
class ShellProcess : public testing::Test {
 protected:
  void Start(const std::string& script) {
    process_ = std::make_unique<ChildProcess>(std::vector<std::string>{"/bin/sh", "-c", script},
                                              directory_.Path(), "output");
  }
  void Stop() { process_.reset(); }

  std::string Output() const {
    std::ifstream file(directory_.Path() + "/output");
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void WaitForOutput(const std::string& text) const {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (Output().find(text) == std::string::npos) {
      ASSERT_LT(std::chrono::steady_clock::now(), giveUp) << Output();
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }

 private:
  PrivateDirectory directory_;
  std::unique_ptr<ChildProcess> process_;
};

TEST_F(ShellProcess, PrintsIntoItsFile) {
  Start("echo said; echo complained >&2");
  WaitForOutput("said\ncomplained\n");
}

TEST_F(ShellProcess, IsGivenTheTimeToEndInOrder) {
  Start("trap 'sleep 0.3; echo ended; exit' TERM; echo ready; while :; do sleep 0.01; done");
  WaitForOutput("ready");
  Stop();
  EXPECT_THAT(Output(), HasSubstr("ended"));
}

TEST_F(ShellProcess, IsKilledWhenItDoesNotEndInOrder) {
  Start("trap '' TERM; echo $$; while :; do sleep 0.01; done");
  WaitForOutput("\n");
  Stop();
  EXPECT_TRUE(EndsSoon(std::stoi(Output())));
}

}  // namespace
}  // namespace Tavrin::Simulator
