#include "tools/smm-inventory/Prompt.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "tools/smm-inventory/Descriptor.h"
#include "tools/smm-inventory/Password.h"
#include "tools/smm-inventory/UsageError.h"

namespace Tavrin {
namespace {

sigset_t EndingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    sigaddset(&signals, signal);
  }
  return signals;
}

/// Holds back the signals that end a process while the terminal is changed. They take effect when
/// this is destroyed, after the terminal is as before; until then their arrival can be waited for.
class HeldSignals {
 public:
  HeldSignals() : ending_(EndingSignals()), arrivals_(signalfd(-1, &ending_, SFD_CLOEXEC)) {
    pthread_sigmask(SIG_BLOCK, &ending_, &before_);
  }
  ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

  /// Waits until the terminal has a line (true) or a signal has arrived (false).
  [[nodiscard]] bool WaitForLine(int terminal) const {
    std::array<pollfd, 2> events = {{{terminal, POLLIN, 0}, {arrivals_.Get(), POLLIN, 0}}};
    int ready = 0;
    do {
      ready = poll(events.data(), events.size(), -1);
    } while (ready < 0 && errno == EINTR);
    return ready > 0 && events[1].revents == 0;
  }

 private:
  sigset_t ending_;
  sigset_t before_{};
  Descriptor arrivals_;
};

/// Switches the terminal's echo off for as long as it lives.
class QuietTerminal {
 public:
  explicit QuietTerminal(int terminal) : terminal_(terminal) {
    tcgetattr(terminal_, &before_);
    termios quiet = before_;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    // Stopping the process here would hand a terminal without echo to the shell.
    quiet.c_cc[VSUSP] = _POSIX_VDISABLE;
    tcsetattr(terminal_, TCSAFLUSH, &quiet);
  }
  /// What was typed and not read is dropped: the shell must not take it for a command.
  ~QuietTerminal() { tcsetattr(terminal_, TCSAFLUSH, &before_); }
  QuietTerminal(const QuietTerminal&) = delete;
  QuietTerminal& operator=(const QuietTerminal&) = delete;

 private:
  int terminal_;
  termios before_{};
};

void Write(int terminal, const std::string& text) {
  // A prompt that cannot be shown is no reason not to read the answer.
  [[maybe_unused]] const ssize_t written = write(terminal, text.data(), text.size());
}

}  // namespace

void PromptForPassword(const std::string& prompt, std::string& password) {
  const Descriptor terminal(open("/dev/tty", O_RDWR | O_CLOEXEC));
  if (terminal.Get() < 0) {
    throw UsageError(
        "no password given and no terminal to ask on; expected --password-file FILE, "
        "--password-file - for standard input, or the environment variable IPMI_PASSWORD");
  }
  const HeldSignals signals;
  const QuietTerminal quiet(terminal.Get());
  Write(terminal.Get(), prompt);
  const bool typed = signals.WaitForLine(terminal.Get());
  Write(terminal.Get(), "\n");
  if (!typed) {
    throw UsageError("the password prompt was interrupted; expected the password and Enter");
  }
  ReadPasswordLine(terminal.Get(), "the terminal", password);
}

}  // namespace Tavrin
