#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "simulator/LauncherOptions.h"
#include "simulator/LoopbackPort.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace Tavrin::Simulator {

/// The simulation could not be started; what() is one sentence.
class StartError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// An `ipmi_sim` that simulates the enclosure; it runs as long as the object lives.
class SimulatedEnclosure {
 public:
  /// Starts it and waits until it answers. Throws StartError, also when another program took the
  /// port meanwhile.
  SimulatedEnclosure(LauncherOptions options, PortReservation port);

  /// Where it listens, as a user writes it.
  [[nodiscard]] std::string Endpoint() const;

  /// Why it ended, in words, or nothing while it runs.
  std::optional<std::string> Ended();

 private:
  void WriteFiles() const;
  void WaitUntilItAnswers();
  [[nodiscard]] std::string Output() const;
  [[nodiscard]] std::string LastOutputLine() const;

  LauncherOptions options_;
  PortReservation port_;
  TemporaryDirectory directory_{"smm-simulator-"};
  std::unique_ptr<ChildProcess> process_;
};

/// Starts the simulation on the port that the options ask for. Throws StartError.
std::unique_ptr<SimulatedEnclosure> StartEnclosure(const LauncherOptions& options);

}  // namespace Tavrin::Simulator
