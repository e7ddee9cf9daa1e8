#include "fleet/FleetThread.h"

#include <pthread.h>

#include <atomic>
#include <csignal>
#include <exception>
#include <new>
#include <string>
#include <thread>
#include <utility>

#include "platform/standalone/ipmi_client/ConnectControl.h"
#include "platform/standalone/ipmi_client/ConnectPresence.h"
#include "platform/standalone/ipmi_client/ThreadDeadline.h"
#include "platform/standalone/logger/ThreadLog.h"
#include "reading/Enclosure.h"
#include "reading/Observer.h"
#include "reading/Stopwatch.h"
#include "reading/Unread.h"
#include "support/EscapeControlBytes.h"
#include "support/HostAndPort.h"

namespace Tavrin {
namespace {

/// The client's library puts messages of 160 KiB in all on the stack.
constexpr std::size_t kStackSize = std::size_t{FLEET_STACK_KIB} * 1024;

/// Leaves what the observer of a pass is told.
class ForwardingObserver : public Observer {
 public:
  explicit ForwardingObserver(const FleetErrand& errand) : errand_(errand) {}

  [[nodiscard]] unsigned int LogLevel() const override { return errand_.settings->logLevel; }
  void LineWritten(const Standalone::LogLine& line) override {
    Post([line](Observer& observer) { observer.LineWritten(line); });
  }
  void WaitBegins(const std::string& name) override {
    Post([name](Observer& observer) { observer.WaitBegins(name); });
  }
  void AttemptBegins(int number, int attempts) override {
    Post([number, attempts](Observer& observer) { observer.AttemptBegins(number, attempts); });
  }
  void WaitEnds() override {
    try {
      Post([](Observer& observer) { observer.WaitEnds(); });
    } catch (const std::bad_alloc&) {
      // Must not pass from here. The wait is over at the latest when the pass is.
    }
  }
  void AttemptFailed(const Cause& cause) override {
    Post([cause](Observer& observer) { observer.AttemptFailed(cause); });
  }
  void PartRead(const Reading& soFar, Part part) override {
    errand_.mailbox->Post(errand_.index, part, soFar);
  }

 private:
  void Post(PassEvent event) { errand_.mailbox->Post({errand_.index, std::move(event)}); }

  const FleetErrand& errand_;
};

/// Why nobody can be read there, where nobody is.
std::optional<QueryOutcome> FindAbsence(const FleetErrand& errand, ForwardingObserver& messenger) {
  const Standalone::ThreadLog log(
      messenger.LogLevel(),
      [&messenger](const Standalone::LogLine& line) { messenger.LineWritten(line); });
  const Stopwatch stopwatch;
  const Standalone::LastExchange exchange =
      Standalone::AskPresence(errand.enclosure.host, errand.enclosure.port);
  if (exchange.cause == Standalone::FailureCause::None) {
    return std::nullopt;
  }
  QueryOutcome absence;
  absence.status = StatusCode::NotConnected;
  absence.cause = CauseOf(exchange);
  stopwatch.Stamp(absence);
  return absence;
}

Reading MakePass(const FleetErrand& errand, ForwardingObserver& messenger) {
  Enclosure enclosure(errand.enclosure);
  const FleetSettings& settings = *errand.settings;
  return settings.psu == 0 ? enclosure.Read(settings.parts, messenger)
                           : enclosure.SelectPsu(settings.psu, messenger);
}

Reading ReadPresent(const FleetErrand& errand, ForwardingObserver& messenger) {
  const Stopwatch stopwatch;
  Reading reading;
  if (errand.settings->asksPresence) {
    reading.failure = FindAbsence(errand, messenger);
  }
  if (!reading.failure) {
    reading = MakePass(errand, messenger);
  }
  Stamp(reading, errand.enclosure, stopwatch);
  return reading;
}

void ReadEnclosure(const FleetErrand& errand) {
  std::optional<Standalone::ThreadDeadline> deadline;
  if (errand.deadline) {
    deadline.emplace(*errand.deadline);
  }
  ForwardingObserver messenger(errand);
  errand.mailbox->Post({errand.index, ReadPresent(errand, messenger)});
}

QueryOutcome OutcomeOf(const std::exception& exception) {
  QueryOutcome outcome;
  outcome.status = kExceptionStatus;
  outcome.cause.words = EscapeControlBytes(exception.what());
  return outcome;
}

/// Somebody waits for the end of each enclosure, so that it has to be told also when memory is
/// short, which passes when others end.
void TellException(const FleetErrand& errand, const std::exception& exception) {
  constexpr std::chrono::milliseconds kUntilNextTry{50};
  for (bool isTold = false; !isTold;) {
    try {
      errand.mailbox->Post({errand.index, OutcomeOf(exception)});
      isTold = true;
    } catch (const std::bad_alloc&) {
      std::this_thread::sleep_for(kUntilNextTry);
    }
  }
}

std::atomic<std::size_t> threads{0};

void* RunThread(void* argument) {
  std::unique_ptr<const FleetErrand> errand(static_cast<FleetErrand*>(argument));
  try {
    ReadEnclosure(*errand);
  } catch (const std::exception& exception) {
    TellException(*errand, exception);
  }
  errand.reset();
  --threads;
  return nullptr;
}

/// How a thread of a fleet is made: one that nobody waits for.
class ThreadAttributes {
 public:
  ThreadAttributes() {
    pthread_attr_init(&attributes_);
    pthread_attr_setdetachstate(&attributes_, PTHREAD_CREATE_DETACHED);
    pthread_attr_setstacksize(&attributes_, kStackSize);
  }
  ~ThreadAttributes() { pthread_attr_destroy(&attributes_); }
  ThreadAttributes(const ThreadAttributes&) = delete;
  ThreadAttributes& operator=(const ThreadAttributes&) = delete;

  [[nodiscard]] const pthread_attr_t* Get() const { return &attributes_; }

 private:
  pthread_attr_t attributes_{};
};

/// Keeps signals from the threads that are begun while it lives: they are the program's own.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace

void Stamp(Reading& reading, const EnclosureSettings& enclosure, const Stopwatch& stopwatch) {
  reading.address = AddressText(enclosure.host, enclosure.port);
  reading.readAt = stopwatch.Begin();
  reading.duration = stopwatch.Duration();
}

int BeginFleetThread(std::unique_ptr<FleetErrand> errand) {
  const ThreadAttributes attributes;
  const SignalsBlocked blocked;
  pthread_t thread{};
  ++threads;
  const int error = pthread_create(&thread, attributes.Get(), RunThread, errand.get());
  if (error == 0) {
    static_cast<void>(errand.release());
  } else {
    --threads;
  }
  return error;
}

std::size_t CountFleetThreads() { return threads; }

}  // namespace Tavrin
