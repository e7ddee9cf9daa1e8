#include "support/ChildProcess.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <thread>

#include "support/FileDescriptor.h"
#include "support/TemporaryDirectory.h"
#include "tests/support/Child.h"

namespace Tavrin {
namespace {

using std::chrono::milliseconds;
using testing::HasSubstr;

/// A shell that runs a script, and what it prints.
class ShellProcess : public testing::Test {
 protected:
  ShellProcess()
      : output_(open(OutputPath().c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR)) {
    program_.output = output_.Get();
    program_.error = output_.Get();
  }

  ChildProcess Start(const std::string& script) {
    program_.arguments = {"/bin/sh", "-c", script};
    return ChildProcess(program_);
  }
  ProcessEnd EndOf(const std::string& script) { return Start(script).Wait(); }

  std::string OutputPath() const { return directory_.Path() + "/output"; }
  std::string Output() const {
    std::ifstream file(OutputPath());
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void WaitForOutput(const std::string& text) const {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (Output().find(text) == std::string::npos) {
      ASSERT_LT(std::chrono::steady_clock::now(), giveUp) << Output();
      std::this_thread::sleep_for(milliseconds(5));
    }
  }

  Program program_;
  TemporaryDirectory directory_{"child-process-test-"};

 private:
  FileDescriptor output_;
};

TEST_F(ShellProcess, WritesWhereItIsTold) {
  EndOf("echo said; echo complained >&2");
  EXPECT_EQ(Output(), "said\ncomplained\n");
}

TEST_F(ShellProcess, ReadsNothingUnlessItIsGivenAnInput) {
  EndOf("cat; readlink /proc/$$/fd/0");
  EXPECT_EQ(Output(), "/dev/null\n");
}

TEST_F(ShellProcess, ReadsTheInputThatItIsGiven) {
  directory_.Write("input", "text");
  const FileDescriptor input(open((directory_.Path() + "/input").c_str(), O_RDONLY | O_CLOEXEC));
  program_.input = input.Get();
  EndOf("cat");
  EXPECT_EQ(Output(), "text");
}

TEST_F(ShellProcess, StartsInItsDirectory) {
  program_.directory = directory_.Path();
  EndOf("pwd");
  EXPECT_EQ(Output(), std::filesystem::canonical(directory_.Path()).string() + "\n");
}

TEST_F(ShellProcess, InheritsTheEnvironmentUnlessItIsGivenOne) {
  setenv("CHILD_PROCESS_TEST", "inherited", 1);
  EndOf("echo $CHILD_PROCESS_TEST");
  program_.environment = {"OTHER=given"};
  EndOf("echo $CHILD_PROCESS_TEST $OTHER");
  unsetenv("CHILD_PROCESS_TEST");
  EXPECT_EQ(Output(), "inherited\ngiven\n");
}

TEST_F(ShellProcess, HasASessionOfItsOwnWithoutATerminal) {
  EndOf("true </dev/tty || cut -d ' ' -f 6 /proc/$$/stat; echo $$");
  const std::string told = Output();
  const std::string numbers = told.substr(told.find('\n') + 1);
  const std::string session = numbers.substr(0, numbers.find('\n'));
  EXPECT_EQ(numbers, session + "\n" + session + "\n") << told;
}

TEST_F(ShellProcess, BlocksNoSignalThatItsParentBlocks) {
  sigset_t blocked;
  sigset_t before;
  sigfillset(&blocked);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  EndOf("grep SigBlk /proc/self/status");
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  EXPECT_EQ(Output(), "SigBlk:\t0000000000000000\n");
}

/// How many descriptors the programs inherit that this process starts.
std::ptrdiff_t InheritableDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::count_if(begin(all), end(all), [](const auto& entry) {
    return fcntl(std::stoi(entry.path().filename().string()), F_GETFD) == 0;
  });
}

TEST_F(ShellProcess, InheritsNoDescriptorOfItsLauncher) {
  EndOf("ls /proc/self/fd | wc -l");
  EXPECT_EQ(std::stoi(Output()), InheritableDescriptors() + 1);  // The folder that is being listed.
}

TEST_F(ShellProcess, HowItEndsIsTold) {
  const ProcessEnd inOrder = EndOf("exit 5");
  EXPECT_EQ(inOrder.exitCode, 5);
  EXPECT_EQ(inOrder.signal, 0);
  const ProcessEnd killed = EndOf("kill -9 $$");
  EXPECT_EQ(killed.exitCode, -1);
  EXPECT_EQ(killed.signal, SIGKILL);
}

TEST_F(ShellProcess, ItsProcessorTimeIsTold) {
  const ProcessEnd end = EndOf("i=0; while [ $i -lt 20000 ]; do i=$((i + 1)); done");
  EXPECT_GT(end.processorSeconds, 0.001);
  EXPECT_LT(end.processorSeconds, 10);
}

TEST_F(ShellProcess, HasNotEndedWhileItRuns) {
  program_.arguments = {"/bin/sleep", "60"};
  ChildProcess sleeper(program_);
  EXPECT_FALSE(sleeper.Ended());
  sleeper.Signal(SIGINT);
  EXPECT_EQ(sleeper.Wait().signal, SIGINT);
  EXPECT_EQ(sleeper.Ended().value().signal, SIGINT);
}

TEST_F(ShellProcess, NoSignalIsSentOnceItHasEnded) {
  ChildProcess process = Start("exit");
  process.Wait();
  process.Signal(SIGKILL);
  EXPECT_EQ(process.Ended().value().exitCode, 0);
}

TEST_F(ShellProcess, IsFoundAlongThePath) {
  program_.arguments = {"true"};
  EXPECT_EQ(ChildProcess(program_).Wait().exitCode, 0);
}

TEST_F(ShellProcess, ProgramThatCannotBeRunEndsAsUnderAShell) {
  program_.arguments = {"/none"};
  EXPECT_EQ(ChildProcess(program_).Wait().exitCode, 127);
  program_.directory = "/none";
  EXPECT_EQ(EndOf("true").exitCode, 127);
}

TEST_F(ShellProcess, IsGivenTheTimeToEndInOrder) {
  {
    const ChildProcess process =
        Start("trap 'sleep 0.3; echo ended; exit' TERM; echo ready; while :; do sleep 0.01; done");
    WaitForOutput("ready");
  }
  EXPECT_THAT(Output(), HasSubstr("ended"));
}

TEST_F(ShellProcess, IsKilledWhenItsTimeIsOver) {
  program_.patience = milliseconds(50);
  {
    const ChildProcess process = Start("trap '' TERM; echo $$; while :; do sleep 0.01; done");
    WaitForOutput("\n");
  }
  EXPECT_TRUE(HasEnded(std::stoi(Output())));
}

TEST_F(ShellProcess, IsKilledWithTheThreadThatStartedItWhenThatIsAskedFor) {
  program_.isKilledWithThread = true;
  program_.arguments = {"/bin/sleep", "60"};
  std::optional<ChildProcess> process;
  std::thread([&] { process.emplace(program_); }).join();
  EXPECT_EQ(process->Wait().signal, SIGKILL);
}

TEST_F(ShellProcess, OutlivesTheThreadThatStartedItOtherwise) {
  std::optional<ChildProcess> process;
  program_.arguments = {"/bin/sleep", "0.1"};
  std::thread([&] { process.emplace(program_); }).join();
  EXPECT_EQ(process->Wait().exitCode, 0);
}

}  // namespace
}  // namespace Tavrin
