#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "simulator/LauncherOptions.h"
#include "simulator/Scenario.h"
#include "simulator/SimulatedEnclosure.h"

namespace Tavrin::Simulator {
namespace {

constexpr int kFailed = 1;
constexpr int kBadUsage = 2;

int Complain(const char* what, int exitCode) {
  std::fprintf(stderr, "smm-simulator: %s\n", what);
  return exitCode;
}

/// Holds back the signals that end the launcher, and the child's, until they are waited for: so
/// none is lost and everything is cleaned up in order.
sigset_t BlockSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGCHLD}) {
    sigaddset(&signals, number);
  }
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

int RunUntilStopped(const LauncherOptions& options) {
  const sigset_t signals = BlockSignals();
  const std::unique_ptr<SimulatedEnclosure> enclosure = StartEnclosure(options);
  std::printf("smm-simulator ready at %s\n", enclosure->Endpoint().c_str());
  std::fflush(stdout);
  for (;;) {
    int received = 0;
    sigwait(&signals, &received);
    if (received != SIGCHLD) {
      return 0;
    }
    if (const auto reason = enclosure->Ended()) {
      return Complain(reason->c_str(), kFailed);
    }
  }
}

int Run(int argc, const char* const* argv) {
  try {
    return RunUntilStopped(ParseLauncherOptions(argc, argv));
  } catch (const HelpWanted& help) {
    std::fputs(help.what(), stdout);
    return 0;
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
