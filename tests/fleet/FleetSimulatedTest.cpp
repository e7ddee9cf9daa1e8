#include <gmock/gmock.h>

#include <map>
#include <string>
#include <thread>
#include <vector>

#include "fleet/FleetReader.h"
#include "platform/standalone/ipmi_client/ConnectControl.h"
#include "tests/faults/LeftBehind.h"
#include "tests/support/Faults.h"
#include "tests/support/Relay.h"
#include "tests/support/SimulatedSettings.h"
#include "tests/support/SimulatedSmm.h"
#include "tests/support/UdpPort.h"
#include "tests/support/UdpResponder.h"

// Fleets of simulated enclosures and of others, over real IPMI 2.0.

namespace Tavrin {
namespace {

using Standalone::FailureCause;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using Clock = std::chrono::steady_clock;

const std::vector<std::string> kFirst = {"--generation", "1"};

/// What a busy machine may add.
constexpr milliseconds kGrace{1000};

class Collector : public FleetObserver, public Observer {
 public:
  void EnclosureEnded(std::size_t index, Reading&& reading) override {
    order.push_back(index);
    at[index] = Clock::now();
    readings.emplace(index, std::move(reading));
  }
  Observer* ObserverOf(std::size_t index) override { return index == 0 ? this : nullptr; }
  void PartRead(const Reading& /*soFar*/, Part part) override { onPart(part); }

  FailureCause FailureOf(std::size_t index) const {
    const auto& failure = readings.at(index).failure;
    return failure ? failure->cause.kind : FailureCause::None;
  }

  std::map<std::size_t, Reading> readings;
  std::map<std::size_t, Clock::time_point> at;
  std::vector<std::size_t> order;
  std::function<void(Part)> onPart = [](Part) {};  ///< Told of the first enclosure alone.
};

class SimulatedFleet : public testing::Test {
 protected:
  SimulatedFleet() {
    settings_.parts = {Part::Identity, Part::ChassisPower};
    settings_.spread = milliseconds(0);
  }
  ~SimulatedFleet() override { Standalone::AllowExchanges(); }

  void Add(std::uint16_t port) { enclosures_.push_back(SimulatedAt(port)); }

  milliseconds Read() {
    begin_ = Clock::now();
    FleetReader(settings_).Read(enclosures_, collector_);
    return std::chrono::duration_cast<milliseconds>(Clock::now() - begin_);
  }

  const SimulatedSmm simulator_{kFirst};
  std::vector<EnclosureSettings> enclosures_;
  FleetSettings settings_;
  Collector collector_;
  Clock::time_point begin_;
};

TEST_F(SimulatedFleet, DeadBesideAliveIsToldAfterThreeSecondsAndDelaysNobody) {
  const UdpPort dead;
  Add(dead.Number());
  Add(simulator_.Port());
  EXPECT_LT(Read(), milliseconds(3000) + kGrace);
  EXPECT_THAT(collector_.order, ElementsAre(1, 0));
  EXPECT_LT(collector_.at[1] - begin_, milliseconds(2500));
  EXPECT_EQ(collector_.FailureOf(0), FailureCause::Silence);
  EXPECT_EQ(collector_.readings.at(0).failure->cause.words,
            "no answer within 3 seconds, neither to a ping nor to a request");
  EXPECT_EQ(collector_.readings.at(0).address, "127.0.0.1:" + std::to_string(dead.Number()));
  EXPECT_FALSE(collector_.readings.at(1).failure);
  EXPECT_EQ(collector_.readings.at(1).identity->name.value.value, "simulated-first");
}

TEST_F(SimulatedFleet, ManyDeadAloneEndWithinFourSeconds) {
  std::vector<UdpPort> dead(64);
  for (const UdpPort& port : dead) {
    Add(port.Number());
  }
  settings_.spread = milliseconds(500);
  EXPECT_LT(Read(), milliseconds(4000));
  EXPECT_EQ(collector_.readings.size(), dead.size());
}

TEST_F(SimulatedFleet, SlowBesideFastDelaysNobody) {
  Relay relay(simulator_.Port());
  relay.Break(Delayed(milliseconds(60)));
  Add(relay.Port());
  const SimulatedSmm fast(kFirst);
  Add(fast.Port());
  Read();
  EXPECT_THAT(collector_.order, ElementsAre(1, 0));
  for (const std::size_t index : {0U, 1U}) {
    EXPECT_TRUE(collector_.readings.at(index).chassisPower.value().Succeeded());
  }
}

TEST_F(SimulatedFleet, PresenceIsKnownByEitherAnswer) {
  const UdpResponder pings(AnswerPing);
  const UdpResponder capabilities(RefuseCapabilities);
  Add(pings.Port());
  Add(capabilities.Port());
  for (EnclosureSettings& enclosure : enclosures_) {
    enclosure.sessionTimeoutMs = 300;
    enclosure.attempts = 1;
  }
  Read();
  // Neither opens a session, but each is asked for one.
  EXPECT_THAT(collector_.readings.at(0).failure.value().cause.words, HasSubstr("session time-out"));
  EXPECT_EQ(collector_.FailureOf(1), FailureCause::Ipmi20Missing);
}

TEST_F(SimulatedFleet, WithoutPresenceTheClientFindsOutByItself) {
  const UdpPort dead;
  Add(dead.Number());
  enclosures_.front().sessionTimeoutMs = 200;
  enclosures_.front().attempts = 2;
  settings_.asksPresence = false;
  const milliseconds took = Read();
  EXPECT_GE(took, milliseconds(400));
  EXPECT_LT(took, milliseconds(400) + kGrace);
  EXPECT_THAT(collector_.readings.at(0).failure.value().cause.words, HasSubstr("session time-out"));
}

TEST_F(SimulatedFleet, TimeoutBoundsTheReadingOfOneThatFellSilent) {
  Relay relay(simulator_.Port());
  Add(relay.Port());
  Add(simulator_.Port());
  settings_.timeout = milliseconds(1500);
  collector_.onPart = [&](Part part) {
    if (part == Part::Detection) {
      relay.Break(Silence());
    }
  };
  EXPECT_LT(Read(), milliseconds(2000) + kGrace);
  EXPECT_TRUE(collector_.readings.at(1).chassisPower.value().Succeeded());
  const Reading& reading = collector_.readings.at(0);
  EXPECT_TRUE(reading.detection.value().psuSlotCount.Succeeded());
  EXPECT_EQ(reading.chassisPower.value().cause.kind, FailureCause::TimeOver);
  EXPECT_EQ(Standalone::CountOpenSessions(), 0);
}

/// A controller that falls silent within a session, but hears what it is told.
Fault SilentWithinSession() { return At(Answer::WithinSession, Silence()); }

TEST_F(SimulatedFleet, StopClosesTheOpenSessionWithinTwoSeconds) {
  Relay relay(simulator_.Port());
  Add(relay.Port());
  collector_.onPart = [&](Part part) {
    if (part == Part::Detection) {
      relay.Break(SilentWithinSession());
    }
  };
  Clock::time_point stopped;
  std::thread stopper([&] {
    // Until a session waits for the answer to its privilege level.
    const auto patience = Clock::now() + std::chrono::seconds(10);
    for (int open = 0; open < 40 && Clock::now() < patience;) {
      std::this_thread::sleep_for(milliseconds(10));
      open = Standalone::CountOpenSessions() > 0 ? open + 1 : 0;
    }
    stopped = Clock::now();
    Standalone::StopExchanges();
  });
  Read();
  const auto ended = Clock::now();
  stopper.join();
  EXPECT_LT(ended - stopped, milliseconds(2000));
  EXPECT_EQ(Standalone::CountOpenSessions(), 0);
  EXPECT_EQ(OpenSessions(simulator_), 0);
  EXPECT_TRUE(collector_.readings.at(0).detection);
  EXPECT_EQ(collector_.readings.at(0).chassisPower.value().cause.kind, FailureCause::Stopped);
}

TEST_F(SimulatedFleet, StopWithoutASessionIsOverAtOnce) {
  std::vector<UdpPort> dead(8);
  for (const UdpPort& port : dead) {
    Add(port.Number());
  }
  Clock::time_point stopped;
  std::thread stopper([&] {
    std::this_thread::sleep_for(milliseconds(700));
    stopped = Clock::now();
    Standalone::StopExchanges();
  });
  Read();
  const auto ended = Clock::now();
  stopper.join();
  EXPECT_LT(ended - stopped, milliseconds(300));
  EXPECT_EQ(collector_.FailureOf(7), FailureCause::Stopped);
}

TEST_F(SimulatedFleet, NothingIsLeftBehind) {
  Add(simulator_.Port());
  Read();
  const std::size_t descriptors = OpenDescriptors();
  collector_.readings.clear();
  Read();
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_EQ(OpenSessions(simulator_), 0);
}

}  // namespace
}  // namespace Tavrin
