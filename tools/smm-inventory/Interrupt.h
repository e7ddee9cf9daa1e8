#pragma once

#include <csignal>

namespace Tavrin {

/// While it lives, the first SIGINT or SIGTERM stops the exchanges of all threads, so that what was
/// read can be printed and every session is closed; the second one ends the process at once, with
/// ExitCode::Interrupted. One at a time.
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
};

}  // namespace Tavrin
