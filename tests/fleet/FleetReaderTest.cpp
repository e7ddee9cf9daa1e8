#include "fleet/FleetReader.h"

#include <gmock/gmock.h>
#include <pthread.h>

#include <atomic>
#include <csignal>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/standalone/ipmi_client/ConnectControl.h"
#include "tests/reading/ScriptedEnclosure.h"
#include "tests/support/Gate.h"

namespace Tavrin {
namespace {

using std::chrono::milliseconds;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using Clock = std::chrono::steady_clock;

/// What a busy machine may add.
constexpr milliseconds kGrace{700};

/// Keeps what is told of each enclosure and of its pass, and that it comes on one thread.
class Witness : public FleetObserver {
 public:
  void Noted(const std::string& text) override { notes.push_back(text); }
  void EnclosureBegins(std::size_t index) override {
    Tell(index, "begins");
    begun.push_back(Clock::now());
  }
  Observer* ObserverOf(std::size_t index) override {
    auto& witness = passes_[index];
    witness = witness ? std::move(witness) : std::make_unique<PassWitness>(*this, index);
    return witness.get();
  }
  void EnclosureEnded(std::size_t index, Reading&& reading) override {
    Tell(index, "ended");
    order.push_back(index);
    onEnd(index);
    readings.emplace(index, std::move(reading));
  }
  void TimePasses() override { ++ticks; }

  /// Why the last part of each was not read.
  std::vector<FailureCause> Causes() const {
    std::vector<FailureCause> causes;
    for (const auto& [index, reading] : readings) {
      causes.push_back(reading.failure ? reading.failure->cause.kind
                                       : reading.chassisPower.value().cause.kind);
    }
    return causes;
  }

  std::map<std::size_t, std::vector<std::string>> told;
  std::map<std::size_t, std::vector<std::string>> lines;
  std::map<std::size_t, Reading> readings;
  std::vector<std::size_t> order;
  std::vector<Clock::time_point> begun;
  std::vector<std::string> notes;
  int ticks = 0;
  std::function<void(std::size_t)> onEnd = [](std::size_t) {};

 private:
  class PassWitness : public Observer {
   public:
    PassWitness(Witness& witness, std::size_t index) : witness_(witness), index_(index) {}

    void PartRead(const Reading& soFar, Part part) override {
      Tell("part " + std::to_string(static_cast<int>(part)));
      EXPECT_TRUE(soFar.detection);
      EXPECT_EQ(soFar.chassisPower.has_value(), part == Part::ChassisPower);
    }
    void WaitBegins(const std::string& name) override { Tell(name); }
    void AttemptBegins(int number, int attempts) override {
      Tell("attempt " + std::to_string(number) + " of " + std::to_string(attempts));
    }
    void AttemptFailed(const Cause& cause) override { Tell(cause.words); }
    void WaitEnds() override { Tell("wait ends"); }
    void LineWritten(const Standalone::LogLine& line) override {
      witness_.lines[index_].push_back(line.text);
    }

   private:
    void Tell(const std::string& event) { witness_.Tell(index_, event); }

    Witness& witness_;
    std::size_t index_;
  };

  void Tell(std::size_t index, const std::string& event) {
    EXPECT_EQ(std::this_thread::get_id(), thread_);
    told[index].push_back(event);
  }

  const std::thread::id thread_ = std::this_thread::get_id();
  std::map<std::size_t, std::unique_ptr<PassWitness>> passes_;
};

/// Healthy enclosures of the first generation, one behind each host; each test changes what it is
/// about. At its end no thread is left.
class Fleet : public testing::Test {
 protected:
  Fleet() {
    Double::OnComplaint([](const std::string& text) { ADD_FAILURE() << text; });
    Double::platformOfHost = [this](const std::string& host) { return &smms_.at(host)->platform; };
    settings_.parts = {Part::Identity, Part::ChassisPower};
    settings_.asksPresence = false;
    settings_.spread = milliseconds(0);
  }
  ~Fleet() override {
    gate_->Open();
    EXPECT_TRUE(HasNoThreadLeft());
    Standalone::AllowExchanges();
    Double::platformOfHost = nullptr;
    Double::UseOnThisThread(nullptr);
  }

  ScriptedSmm& Add(const std::string& host) {
    EnclosureSettings enclosure;
    enclosure.host = host;
    enclosures_.push_back(enclosure);
    auto& smm = smms_[host];
    smm = std::make_unique<ScriptedSmm>();
    smm->platform.expectedSettings.address = host;
    return *smm;
  }
  void AddSound(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      Add("sound" + std::to_string(enclosures_.size()));
    }
  }

  milliseconds Read() {
    const auto begin = Clock::now();
    FleetReader(settings_).Read(enclosures_, witness_);
    return std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
  }

  /// Stays in the middle of an answer until the test opens the gate.
  Answering Sticks() const {
    return [gate = gate_](Double::Exchange&) { gate->Pass(); };
  }

  static bool HasNoThreadLeft() {
    const auto patience = Clock::now() + std::chrono::seconds(10);
    while (CountFleetThreads() > 0 && Clock::now() < patience) {
      std::this_thread::sleep_for(milliseconds(5));
    }
    return CountFleetThreads() == 0;
  }

  const std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
  std::map<std::string, std::unique_ptr<ScriptedSmm>> smms_;
  std::vector<EnclosureSettings> enclosures_;
  FleetSettings settings_;
  Witness witness_;
};

Answering Waits(milliseconds time) {
  return [time](Double::Exchange&) { std::this_thread::sleep_for(time); };
}

TEST_F(Fleet, EachIsReadAsIfItWereAlone) {
  Add("one");
  Add("other").Change("GetSmmName", Gives({'o', 't', 'h', 'e', 'r'}));
  Read();
  ASSERT_THAT(witness_.readings, SizeIs(2));
  EXPECT_THAT(witness_.Causes(), Each(FailureCause::None));
  const Reading& one = witness_.readings.at(0);
  const Reading& other = witness_.readings.at(1);
  EXPECT_EQ(one.address, "one:623");
  EXPECT_EQ(other.address, "other:623");
  EXPECT_FALSE(one.failure);
  EXPECT_TRUE(one.identity.value().name.Succeeded());
  EXPECT_TRUE(one.chassisPower.value().Succeeded());
  EXPECT_FALSE(one.powerCaps);
  EXPECT_EQ(other.identity.value().name.value.value, "other");
  EXPECT_NE(one.identity->name.value.value, "other");
  EXPECT_GE(one.readAt, std::chrono::system_clock::now() - std::chrono::minutes(1));
  EXPECT_THAT(witness_.notes, IsEmpty());
}

TEST_F(Fleet, NoneAtAllIsReadAtOnce) {
  EXPECT_LT(Read(), kGrace);
  EXPECT_THAT(witness_.readings, IsEmpty());
}

TEST_F(Fleet, ProgressIsToldInItsOrder) {
  AddSound(2);
  Read();
  const auto detection = "part " + std::to_string(static_cast<int>(Part::Detection));
  const auto identity = "part " + std::to_string(static_cast<int>(Part::Identity));
  const auto power = "part " + std::to_string(static_cast<int>(Part::ChassisPower));
  for (const std::size_t index : {0U, 1U}) {
    EXPECT_THAT(witness_.told[index],
                ElementsAre("begins", "reading the SMM's status", "attempt 1 of 6",
                            "attempt 2 of 6", "attempt 3 of 6", "attempt 4 of 6", "attempt 5 of 6",
                            "attempt 6 of 6", "wait ends", detection, identity, power, "ended"));
  }
  EXPECT_GT(witness_.ticks, 0);
}

TEST_F(Fleet, SlowOneDelaysNobodyElse) {
  Add("slow").Change("GetSmmName", Waits(milliseconds(1500)));
  AddSound(20);
  Clock::time_point lastOfOthers;
  witness_.onEnd = [&](std::size_t index) {
    lastOfOthers = index == 0 ? lastOfOthers : Clock::now();
  };
  const auto begin = Clock::now();
  Read();
  EXPECT_LT(lastOfOthers - begin, milliseconds(1400));
  EXPECT_EQ(witness_.order.back(), 0U);
  EXPECT_THAT(witness_.readings, SizeIs(21));
}

TEST_F(Fleet, NoMoreAreReadAtOnceThanTheFanout) {
  std::atomic<int> now{0};
  std::atomic<int> most{0};
  for (int i = 0; i < 12; ++i) {
    Add("host" + std::to_string(i)).Change("GetSmmName", [&](Double::Exchange&) {
      const int count = ++now;
      int before = most;
      while (before < count && !most.compare_exchange_weak(before, count)) {
      }
      std::this_thread::sleep_for(milliseconds(20));
      --now;
    });
  }
  settings_.fanout = 3;
  Read();
  EXPECT_LE(most, 3);
  EXPECT_GT(most, 1);
  EXPECT_THAT(witness_.readings, SizeIs(12));
}

TEST_F(Fleet, BeginningsAreSpreadEvenly) {
  AddSound(6);
  settings_.spread = milliseconds(600);
  const auto begin = Clock::now();
  Read();
  ASSERT_THAT(witness_.begun, SizeIs(6));
  for (std::size_t i = 0; i < witness_.begun.size(); ++i) {
    const auto at = witness_.begun[i] - begin;
    EXPECT_GE(at, milliseconds(100) * i);
    EXPECT_LT(at, milliseconds(100) * i + kGrace);
  }
}

TEST_F(Fleet, AfterTheTimeoutWhatWasReadSoFarIsHandedOverAtOnce) {
  Add("stuck").Change("GetChassisPowerConsumption", Sticks());
  AddSound(1);
  settings_.timeout = milliseconds(600);
  const milliseconds took = Read();
  EXPECT_GE(took, milliseconds(590));
  EXPECT_LT(took, milliseconds(600) + kGrace);
  EXPECT_THAT(witness_.order, ElementsAre(1, 0));
  EXPECT_THAT(witness_.Causes(), ElementsAre(FailureCause::TimeOver, FailureCause::None));
  const Reading& reading = witness_.readings.at(0);
  EXPECT_EQ(reading.address, "stuck:623");
  EXPECT_FALSE(reading.failure);
  EXPECT_TRUE(reading.identity.value().name.Succeeded());
  EXPECT_EQ(reading.chassisPower.value().cause.kind, FailureCause::TimeOver);
  EXPECT_EQ(reading.chassisPower->cause.words, "the time given for this enclosure is over");
  EXPECT_GE(reading.duration, milliseconds(590));
}

TEST_F(Fleet, LateThreadTouchesNothingThatIsGone) {
  auto& smm = Add("stuck");
  std::atomic<bool> isOver{false};
  smm.Change("GetSmmName", Sticks());
  smm.Change("GetChassisPowerConsumption", [&isOver](Double::Exchange&) { isOver = true; });
  settings_.timeout = milliseconds(200);
  {
    Witness witness;
    FleetReader(settings_).Read(enclosures_, witness);
    enclosures_.clear();
    EXPECT_THAT(witness.order, ElementsAre(0));
  }
  EXPECT_EQ(CountFleetThreads(), 1U);
  gate_->Open();
  EXPECT_TRUE(HasNoThreadLeft());
  EXPECT_TRUE(isOver);
}

TEST_F(Fleet, LateThreadSaysNothingMoreWhileOthersAreRead) {
  Add("late").Change("GetSmmName", Waits(milliseconds(800)));
  Add("next").Change("GetSmmName", Waits(milliseconds(500)));
  settings_.fanout = 1;
  settings_.timeout = milliseconds(600);
  Read();
  EXPECT_THAT(witness_.Causes(), ElementsAre(FailureCause::TimeOver, FailureCause::None));
  EXPECT_EQ(witness_.told[0].back(), "ended");
  EXPECT_THAT(witness_.told[0],
              Not(Contains("part " + std::to_string(static_cast<int>(Part::Identity)))));
}

TEST_F(Fleet, ThreadsHaveSmallStacksAndLeaveSignalsToTheProgram) {
  Add("one").Change("GetSmmName", [](Double::Exchange&) {
    pthread_attr_t attributes;
    std::size_t size = 0;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &size);
    pthread_attr_destroy(&attributes);
    EXPECT_LE(size, std::size_t{FLEET_STACK_KIB} * 1024);
    sigset_t blocked;
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGINT), 1);
  });
  Read();
  sigset_t blocked;
  pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  EXPECT_EQ(sigismember(&blocked, SIGINT), 0);
}

TEST_F(Fleet, TimeoutBeforeAnythingIsReadIsAFailure) {
  Add("stuck").Change(kStatus, Sticks());
  settings_.timeout = milliseconds(100);
  Read();
  const Reading& reading = witness_.readings.at(0);
  EXPECT_EQ(reading.failure.value().status, StatusCode::NotConnected);
  EXPECT_EQ(reading.failure->cause.kind, FailureCause::TimeOver);
  EXPECT_EQ(reading.address, "stuck:623");
  EXPECT_FALSE(reading.identity);
}

TEST_F(Fleet, TimeIsCountedForEachFromItsOwnBeginning) {
  for (const char* const host : {"a", "b", "c"}) {
    Add(host).Change("GetSmmName", Waits(milliseconds(200)));
  }
  settings_.fanout = 1;
  settings_.timeout = milliseconds(500);
  EXPECT_GE(Read(), milliseconds(600));
  EXPECT_THAT(witness_.Causes(), Each(FailureCause::None));
}

TEST_F(Fleet, DeadOneTellsItsOwnCause) {
  Add("dead").Lose(0, FailureCause::Silence, "no answer at all");
  AddSound(1);
  Read();
  const Reading& dead = witness_.readings.at(0);
  EXPECT_EQ(dead.failure.value().cause.kind, FailureCause::Silence);
  EXPECT_EQ(dead.failure->cause.words, "no answer at all");
  EXPECT_FALSE(witness_.readings.at(1).failure);
}

TEST_F(Fleet, WrongPasswordIsTriedOnceAHost) {
  for (const char* const host : {"a", "b"}) {
    Add(host).Lose(0, FailureCause::PasswordRefused, "the password does not match");
  }
  Read();
  for (const auto& [host, smm] : smms_) {
    EXPECT_THAT(smm->platform.exchanges, SizeIs(1)) << host;
  }
  EXPECT_EQ(witness_.readings.at(1).failure.value().cause.kind, FailureCause::PasswordRefused);
}

TEST_F(Fleet, ExceptionEndsOneEnclosureAlone) {
  Add("throws").ChangeConstruction(Throws(std::runtime_error("went \x1B wrong")));
  AddSound(1);
  Read();
  const Reading& reading = witness_.readings.at(0);
  EXPECT_EQ(reading.failure.value().status, kExceptionStatus);
  EXPECT_EQ(reading.failure->cause.words, "went \\x1b wrong");
  EXPECT_EQ(reading.address, "throws:623");
  EXPECT_FALSE(witness_.readings.at(1).failure);
}

TEST_F(Fleet, LinesOfTheLogAreToldUpToTheLevelAskedFor) {
  Add("dead").Lose(0, FailureCause::Silence, "no answer at all");
  AddSound(1);
  settings_.logLevel = 2;
  Read();
  EXPECT_THAT(witness_.lines[0], Contains(HasSubstr("no answer at all")));
  EXPECT_THAT(witness_.lines[1], IsEmpty());
}

TEST_F(Fleet, StopHandsOverWhatIsReadAndWhatNeverBegan) {
  Add("stuck").Change("GetChassisPowerConsumption", Sticks());
  AddSound(2);
  settings_.fanout = 1;
  Clock::time_point stopped;
  std::thread stopper([&] {
    std::this_thread::sleep_for(milliseconds(500));
    stopped = Clock::now();
    Standalone::StopExchanges();
  });
  Read();
  const auto ended = Clock::now();
  stopper.join();
  EXPECT_GE(ended, stopped);
  EXPECT_LT(ended - stopped, milliseconds(300));
  EXPECT_THAT(witness_.Causes(), Each(FailureCause::Stopped));
  EXPECT_THAT(witness_.order, ElementsAre(0, 1, 2));
  const Reading& stuck = witness_.readings.at(0);
  EXPECT_TRUE(stuck.identity.value().name.Succeeded());
  EXPECT_EQ(stuck.chassisPower.value().cause.kind, FailureCause::Stopped);
  const Reading& unbegun = witness_.readings.at(1);
  EXPECT_EQ(unbegun.failure.value().cause.kind, FailureCause::Stopped);
  EXPECT_EQ(unbegun.failure->cause.words, "stopped before it began");
  EXPECT_EQ(unbegun.address, "sound1:623");
  EXPECT_THAT(witness_.told[1], ElementsAre("ended"));
}

TEST_F(Fleet, StoppedBeforeItBeginsAsksNobody) {
  AddSound(2);
  Standalone::StopExchanges();
  EXPECT_LT(Read(), milliseconds(300));
  EXPECT_THAT(witness_.Causes(), Each(FailureCause::Stopped));
  EXPECT_THAT(smms_.at("sound0")->platform.exchanges, IsEmpty());
}

TEST_F(Fleet, ObserverMayStopFromWithinACall) {
  AddSound(3);
  settings_.fanout = 1;
  witness_.onEnd = [](std::size_t) { Standalone::StopExchanges(); };
  Read();
  EXPECT_THAT(witness_.Causes(),
              ElementsAre(FailureCause::None, FailureCause::Stopped, FailureCause::Stopped));
}

TEST_F(Fleet, ExceptionOfTheObserverPasses) {
  AddSound(1);
  witness_.onEnd = [](std::size_t) { throw std::runtime_error("no more room"); };
  EXPECT_THROW(Read(), std::runtime_error);
}

TEST_F(Fleet, HundredsAtOnceAreEachToldOnce) {
  AddSound(300);
  Read();
  EXPECT_THAT(witness_.readings, SizeIs(300));
  EXPECT_THAT(witness_.order, SizeIs(300));
  for (const auto& [index, reading] : witness_.readings) {
    EXPECT_EQ(reading.address, "sound" + std::to_string(index) + ":623");
    EXPECT_TRUE(reading.chassisPower.value().Succeeded());
  }
}

std::string Complaint(const FleetSettings& settings) {
  try {
    const FleetReader reader(settings);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "";
}

TEST(FleetSettings, AreRefusedOutOfTheirRange) {
  FleetSettings settings;
  for (const std::size_t fanout : {1U, 1000U}) {
    settings.fanout = fanout;
    EXPECT_EQ(Complaint(settings), "");
  }
  settings.fanout = 0;
  EXPECT_EQ(Complaint(settings), "the fan-out is \"0\"; expected a whole number from 1 to 1000");
  settings.fanout = 1001;
  EXPECT_EQ(Complaint(settings), "the fan-out is \"1001\"; expected a whole number from 1 to 1000");
  settings.fanout = 1;
  settings.timeout = milliseconds(0);
  EXPECT_EQ(Complaint(settings),
            "the time-out of an enclosure, in milliseconds, is \"0\"; expected more than 0");
  settings.timeout = milliseconds(1);
  EXPECT_EQ(Complaint(settings), "");
  for (const int psu : {-1, 10}) {
    FleetSettings selection;
    selection.psu = psu;
    EXPECT_EQ(Complaint(selection), "the PSU to select is \"" + std::to_string(psu) +
                                        "\"; expected 1 to 9, or 0 for none");
  }
}

}  // namespace
}  // namespace Tavrin
