#include <gtest/gtest.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "platform/standalone/smmcommoninfo/LastDetection.h"
#include "tests/faults/LeftBehind.h"
#include "tests/support/Faults.h"
#include "tests/support/Relay.h"
#include "tests/support/SimulatedSmm.h"

// Signals while the library waits. This program has the C library's sleep(), so its pauses last.

namespace Tavrin {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr seconds kPause{3};
constexpr int kPauses = 6;

std::atomic<int> caught{0};
static_assert(std::atomic<int>::is_always_lock_free);

/// A handler for SIGALRM and SIGCHLD that counts, while this lives. Threads that begin before
/// LetIn() get neither signal.
class CountingHandler {
 public:
  explicit CountingHandler(int flags) {
    caught = 0;
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGALRM);
    sigaddset(&signals_, SIGCHLD);
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
    struct sigaction action {};
    action.sa_handler = [](int /*number*/) { ++caught; };
    action.sa_flags = flags;
    sigaction(SIGALRM, &action, &alarmBefore_);
    sigaction(SIGCHLD, &action, &childBefore_);
  }
  ~CountingHandler() {
    sigaction(SIGALRM, &alarmBefore_, nullptr);
    sigaction(SIGCHLD, &childBefore_, nullptr);
  }
  CountingHandler(const CountingHandler&) = delete;
  CountingHandler& operator=(const CountingHandler&) = delete;

  void LetIn() { pthread_sigmask(SIG_UNBLOCK, &signals_, nullptr); }
  void KeepOut() { pthread_sigmask(SIG_BLOCK, &signals_, nullptr); }

 private:
  sigset_t signals_{};
  struct sigaction alarmBefore_ {};
  struct sigaction childBefore_ {};
};

/// A SIGALRM at each interval, while this lives.
class Alarms {
 public:
  explicit Alarms(std::chrono::microseconds interval) { Set(interval); }
  ~Alarms() { Set(std::chrono::microseconds(0)); }
  Alarms(const Alarms&) = delete;
  Alarms& operator=(const Alarms&) = delete;

 private:
  static void Set(std::chrono::microseconds interval) {
    const timeval time = {interval.count() / 1000000, interval.count() % 1000000};
    const itimerval timer = {time, time};
    setitimer(ITIMER_REAL, &timer, nullptr);
  }
};

/// A process that ends after that time.
std::unique_ptr<Child> ChildThatEndsAfter(milliseconds time) {
  return std::make_unique<Child>(
      std::vector<std::string>{"/bin/sleep", std::to_string(time.count() * 1e-3)},
      std::vector<std::string>{});
}

/// Notes when the status read began each of its attempts, while it lives.
class AttemptTimes {
 public:
  AttemptTimes() {
    Standalone::SetMinLogLevel(3);
    Standalone::SetLogLineHandler([this](const Standalone::LogLine& line) {
      if (line.text.rfind("Try to get SMM status", 0) == 0) {
        times_.push_back(Clock::now());
      }
    });
  }
  ~AttemptTimes() {
    Standalone::SetLogLineHandler({});
    Standalone::SetMinLogLevel(1);
  }
  AttemptTimes(const AttemptTimes&) = delete;
  AttemptTimes& operator=(const AttemptTimes&) = delete;

  /// `end` is when the last pause was over.
  void ExpectWholePauses(Clock::time_point end) {
    times_.push_back(end);
    ASSERT_EQ(times_.size(), std::size_t{kPauses + 1});
    for (std::size_t i = 0; i < kPauses; ++i) {
      EXPECT_GE(times_[i + 1] - times_[i], kPause) << "pause " << i + 1;
    }
  }

 private:
  std::vector<Clock::time_point> times_;
};

/// An enclosure whose answers all come 30 ms late.
class Signals : public ::testing::TestWithParam<int> {
 protected:
  Signals() {
    Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 16);
    relay.Break(Delayed(milliseconds(30)));
    handler.LetIn();
  }

  /// Reads the name so often, with `before` called before each, and expects it each time.
  static void ExpectEveryQuery(SMMInventory& inventory, const std::function<void()>& before) {
    constexpr int kQueries = 20;
    for (int i = 0; i < kQueries; ++i) {
      before();
      std::string name;
      EXPECT_EQ(inventory.GetSmmName(name), StatusCode::Success) << "query " << i;
      EXPECT_EQ(name, "simulated-second-253") << "query " << i;
    }
  }

  void ExpectNothingLeft() {
    handler.KeepOut();
    relay.Heal();
    EXPECT_EQ(OpenSessions(simulator), 0);
  }

  /// Constructs an object and runs queries while alarms ring.
  void ExpectNoHarmBy(std::chrono::microseconds interval) {
    const auto begin = Clock::now();
    {
      const Alarms alarms(interval);
      SMMInventory inventory = Construct();
      ExpectEveryQuery(inventory, [] {});
    }
    // Alarms that ring while another waits for the processor are one.
    EXPECT_GE(caught, (Clock::now() - begin) / interval / 4);
    ExpectNothingLeft();
  }

  SMMInventory Construct() const {
    AttemptTimes attempts;
    SMMInventory inventory(settings);
    attempts.ExpectWholePauses(Clock::now());
    EXPECT_EQ(Standalone::GetLastDetectionOutcome(), Standalone::DetectionOutcome::Detected);
    EXPECT_EQ(inventory.GetNodeNub(), 12U);
    return inventory;
  }

  CountingHandler handler{GetParam()};
  SimulatedSmm simulator{{"--generation", "2", "--platform", "253"}};
  Relay relay{simulator.Port()};
  TavrinConnection::ConnectionInfo settings = SettingsOf(simulator, relay.Port());
};

TEST_P(Signals, EachSecondDoNoHarm) { ExpectNoHarmBy(seconds(1)); }

TEST_P(Signals, HundredASecondDoNoHarm) { ExpectNoHarmBy(milliseconds(10)); }

TEST_P(Signals, ThousandASecondDoNoHarm) { ExpectNoHarmBy(milliseconds(1)); }

TEST_P(Signals, ChildrenThatEndDoNoHarm) {
  std::vector<std::unique_ptr<Child>> children;
  for (int i = 1; i <= 20; ++i) {
    children.push_back(ChildThatEndsAfter(milliseconds(970 * i)));
  }
  SMMInventory inventory = Construct();
  milliseconds life{0};
  ExpectEveryQuery(inventory, [&] {
    life += milliseconds(10);
    children.push_back(ChildThatEndsAfter(life));
  });
  EXPECT_GE(caught, 20);
  children.clear();
  ExpectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(Handlers, Signals, ::testing::Values(SA_RESTART, 0),
                         [](const auto& instance) {
                           return instance.param == SA_RESTART ? "RestartingCalls"
                                                               : "InterruptingCalls";
                         });

/// How long a process that constructs an object outlives a SIGTERM half a second after it began.
milliseconds LifeAfterTermination(const TavrinConnection::ConnectionInfo& settings) {
  const pid_t process = fork();
  if (process == 0) {
    const SMMInventory inventory(settings);
    _exit(0);
  }
  std::this_thread::sleep_for(milliseconds(500));
  const auto begin = Clock::now();
  kill(process, SIGTERM);
  int status = 0;
  waitpid(process, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  return std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
}

TEST(DefaultAction, EndsAtOnceWhateverIsWaitedFor) {
  constexpr milliseconds kGrace{1000};
  const Relay silent(0);
  TavrinConnection::ConnectionInfo settings;
  settings.address = "127.0.0.1";
  settings.port = silent.Port();
  settings.connectionKind = 7;
  EXPECT_LT(LifeAfterTermination(settings), milliseconds(500) + kGrace) << "in an exchange";
  settings.connectionKind = 3;  // Admits no exchange, so that only pauses are left.
  EXPECT_LT(LifeAfterTermination(settings), milliseconds(500) + kGrace) << "in a pause";
}

}  // namespace
}  // namespace Tavrin
