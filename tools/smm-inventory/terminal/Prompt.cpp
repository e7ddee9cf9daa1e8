#include "tools/smm-inventory/terminal/Prompt.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "support/FileDescriptor.h"
#include "support/UsageError.h"
#include "tools/smm-inventory/Password.h"

namespace Tavrin {
namespace {

/// Whoever starts a process can have it ignore or block signals, as nohup does: those are to change
/// nothing here.
bool TakesEffect(int signal) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  sigset_t blocked;
  pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  return action.sa_handler != SIG_IGN && sigismember(&blocked, signal) == 0;
}

/// The signals that end or stop the process, and the one by which it continues: meanwhile the shell
/// has set the terminal as it likes.
sigset_t InterruptingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGCONT}) {
    if (TakesEffect(signal)) {
      sigaddset(&signals, signal);
    }
  }
  return signals;
}

/// A signal has arrived, and takes effect once it is no longer held back.
struct Interrupted {};

/// Holds back the signals while the terminal is changed. They take effect when this is destroyed,
/// after the terminal is as before; until then their arrival can be waited for.
class HeldSignals {
 public:
  HeldSignals()
      : interrupting_(InterruptingSignals()), arrivals_(signalfd(-1, &interrupting_, SFD_CLOEXEC)) {
    pthread_sigmask(SIG_BLOCK, &interrupting_, &before_);
  }
  ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

  /// Waits until the terminal has input. Throws Interrupted when a signal has arrived.
  void WaitForInput(int terminal) const {
    std::array<pollfd, 2> events = {{{terminal, POLLIN, 0}, {arrivals_.Get(), POLLIN, 0}}};
    while (poll(events.data(), events.size(), -1) < 0 && errno == EINTR) {
    }
    if (events[1].revents != 0) {
      throw Interrupted();
    }
  }

 private:
  sigset_t interrupting_;
  sigset_t before_{};
  FileDescriptor arrivals_;
};

void Write(int terminal, const std::string& text) {
  // A prompt that cannot be shown is no reason not to read the answer.
  [[maybe_unused]] const ssize_t written = write(terminal, text.data(), text.size());
}

/// Shows the prompt, and keeps the terminal from showing what is typed for as long as it lives.
class Question {
 public:
  Question(int terminal, const std::string& prompt) : terminal_(terminal) {
    tcgetattr(terminal_, &before_);
    termios quiet = before_;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(terminal_, TCSAFLUSH, &quiet);
    Write(terminal_, prompt);
  }
  /// What was typed and not read is dropped: the shell must not take it for a command.
  ~Question() {
    Write(terminal_, "\n");
    tcsetattr(terminal_, TCSAFLUSH, &before_);
  }
  Question(const Question&) = delete;
  Question& operator=(const Question&) = delete;

 private:
  int terminal_;
  termios before_{};
};

ssize_t ReadTyped(int terminal, const HeldSignals& signals, char& byte) {
  ssize_t count = 0;
  do {
    signals.WaitForInput(terminal);
    count = read(terminal, &byte, 1);
    // What a terminal announced can be gone by then: Ctrl-C drops it.
  } while (count < 0 && errno == EAGAIN);
  return count;
}

/// Returns false when a signal came in between and the process is still there, or there again.
bool Ask(int terminal, const std::string& prompt, std::string& password) {
  try {
    const HeldSignals signals;
    const Question question(terminal, prompt);
    ReadPasswordLine([&](char& byte) { return ReadTyped(terminal, signals, byte); }, "the terminal",
                     password);
    return true;
  } catch (const Interrupted&) {
    return false;
  }
}

}  // namespace

void PromptForPassword(const std::string& prompt, std::string& password) {
  const FileDescriptor terminal(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NONBLOCK));
  if (terminal.Get() < 0) {
    throw UsageError(
        "no password given and no terminal to ask on; expected --password-file FILE, "
        "--password-file - for standard input, or the environment variable IPMI_PASSWORD");
  }
  do {
    // In the background this stops the process before signals are held back, so that they end it.
    tcdrain(terminal.Get());
  } while (!Ask(terminal.Get(), prompt, password));
}

}  // namespace Tavrin
