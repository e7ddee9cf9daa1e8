#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <string>

#include "simulator/LauncherOptions.h"
#include "simulator/ScenarioValue.h"
#include "simulator/SimulatedEnclosure.h"
#include "support/EscapeControlBytes.h"

namespace Tavrin::Simulator {
namespace {

constexpr int kFailed = 1;
constexpr int kBadUsage = 2;

/// Complaints show arguments and ipmi_sim's output, neither of which may drive the terminal.
int Complain(const std::string& what, int exitCode) {
  std::cerr << "smm-simulator: " << EscapeControlBytes(what) << "\n";
  return exitCode;
}

/// Holds back the signals that end the launcher, and the child's, until they are waited for: so
/// none is lost and everything is cleaned up in order.
sigset_t BlockSignals() {
  sigset_t signals{};
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGPIPE, SIGCHLD}) {
    sigaddset(&signals, number);
  }
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

int RunUntilStopped(const LauncherOptions& options) {
  const sigset_t signals = BlockSignals();
  const std::unique_ptr<SimulatedEnclosure> enclosure = StartEnclosure(options);
  std::cout << "smm-simulator ready at " << enclosure->Endpoint() << std::endl;
  if (!std::cout) {
    return Complain("nobody takes the line with the address; expected an open standard output",
                    kFailed);
  }
  for (;;) {
    int received = 0;
    sigwait(&signals, &received);
    if (received != SIGCHLD) {
      return 0;
    }
    if (const auto reason = enclosure->Ended()) {
      return Complain(*reason, kFailed);
    }
  }
}

int ShowHelp(const std::string& text) {
  std::cout << text << std::flush;
  return std::cout ? 0
                   : Complain("the help text cannot be written; expected an open standard output",
                              kFailed);
}

int Run(int argc, const char* const* argv) {
  try {
    return RunUntilStopped(ParseLauncherOptions(argc, argv));
  } catch (const HelpWanted& help) {
    return ShowHelp(help.what());
  } catch (const UsageError& error) {
    return Complain(error.what(), kBadUsage);
  } catch (const ScenarioError& error) {
    return Complain(error.what(), kBadUsage);
  } catch (const std::exception& error) {
    return Complain(error.what(), kFailed);
  }
}

}  // namespace
}  // namespace Tavrin::Simulator

int main(int argc, char** argv) { return Tavrin::Simulator::Run(argc, argv); }
