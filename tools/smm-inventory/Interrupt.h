#pragma once

#include <csignal>

namespace Tavrin {

/// While it lives, the first SIGINT, SIGTERM or SIGHUP stops the exchanges of all threads, so that
/// what was read can be printed and every session is closed; another one ends the process at once,
/// with ExitCode::Interrupted. Programs that end others often signal twice, the process and its
/// group: what comes within a fifth of a second counts as the first. A signal that is ignored stays
/// so. One at a time.
class Interrupt {
 public:
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  [[nodiscard]] static bool Happened();

 private:
  struct sigaction formerInterrupt_ {};
  struct sigaction formerTermination_ {};
  struct sigaction formerHangup_ {};
};

}  // namespace Tavrin
