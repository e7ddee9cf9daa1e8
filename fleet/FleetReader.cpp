#include "fleet/FleetReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <list>
#include <memory>
#include <stdexcept>
#include <utility>

#include "fleet/FleetLimits.h"
#include "fleet/FleetMailbox.h"
#include "fleet/FleetThread.h"
#include "platform/standalone/ipmi_client/ConnectControl.h"
#include "reading/Stopwatch.h"
#include "reading/Unread.h"
#include "support/HostAndPort.h"
#include "support/UsageError.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// How often it is looked whether exchanges were stopped, and time is told to pass.
constexpr milliseconds kTick{50};

/// Behind a stop: how long a session may still come about, and until when each is to be closed.
constexpr milliseconds kUntilSessionsAreKnown{100};
constexpr milliseconds kUntilSessionsAreClosed{1900};

/// How long the session of an abandoned thread may take to be closed.
constexpr milliseconds kUntilAbandonedAreClosed{500};

QueryOutcome NotAsked(FailureCause kind, const char* words) {
  QueryOutcome outcome;
  outcome.status = StatusCode::NotConnected;
  outcome.cause.kind = kind;
  outcome.cause.words = words;
  return outcome;
}

/// The enclosures of one call, as far as they have come.
class FleetRun {
 public:
  /// `fanout` is how many are read at once, at least 1.
  FleetRun(const std::vector<EnclosureSettings>& enclosures, const FleetSettings& settings,
           std::size_t fanout, FleetObserver& observer)
      : enclosures_(enclosures),
        settings_(std::make_shared<const FleetSettings>(settings)),
        observer_(observer),
        mailbox_(std::make_shared<FleetMailbox>(enclosures.size())),
        fanout_(fanout),
        gap_(settings.spread / fanout) {}

  void Go();

 private:
  /// One that is being read.
  struct Begun {
    std::size_t index;
    Stopwatch stopwatch;
    std::optional<Clock::time_point> deadline;
  };
  using Running = std::list<Begun>::iterator;

  void BeginDue();
  bool Begin();
  void TakeMail(Clock::time_point deadline);
  void Take(FleetMail& mail);
  void GiveUpOverdue();
  void GiveUp(Running running, const QueryOutcome& why);
  void End(Running running, Reading reading);
  void Stop();
  void HandOverUnbegun();
  void AwaitSessionsOfAbandoned();
  [[nodiscard]] Clock::time_point NextTick() const;
  Running Find(std::size_t index);

  const std::vector<EnclosureSettings>& enclosures_;
  const std::shared_ptr<const FleetSettings> settings_;
  FleetObserver& observer_;
  const std::shared_ptr<FleetMailbox> mailbox_;
  std::size_t fanout_;
  const Clock::duration gap_;  ///< Between two beginnings.

  std::size_t next_ = 0;  ///< The enclosure that begins next.
  Clock::time_point nextBeginning_ = Clock::now();
  std::list<Begun> begun_;
  bool isAnyAbandoned_ = false;
};

void FleetRun::Go() {
  while (next_ < enclosures_.size() || !begun_.empty()) {
    if (Standalone::AreExchangesStopped()) {
      Stop();
      return;
    }
    BeginDue();
    TakeMail(NextTick());
    GiveUpOverdue();
  }
  if (isAnyAbandoned_) {
    AwaitSessionsOfAbandoned();
  }
}

/// Until the next beginning or time-out, or for a tick.
Clock::time_point FleetRun::NextTick() const {
  auto tick = Clock::now() + kTick;
  if (next_ < enclosures_.size() && begun_.size() < fanout_) {
    tick = std::min(tick, nextBeginning_);
  }
  for (const Begun& one : begun_) {
    tick = std::min(tick, one.deadline.value_or(tick));
  }
  return tick;
}

void FleetRun::BeginDue() {
  const auto now = Clock::now();
  if (begun_.size() >= fanout_) {
    nextBeginning_ = std::max(nextBeginning_, now);
  }
  while (next_ < enclosures_.size() && begun_.size() < fanout_ && nextBeginning_ <= now) {
    nextBeginning_ += gap_;
    if (!Begin()) {
      return;
    }
  }
}

/// Returns whether there was a thread for it. Without one it begins when another has ended.
bool FleetRun::Begin() {
  const Stopwatch stopwatch;
  std::optional<Clock::time_point> deadline;
  if (settings_->timeout) {
    deadline = Clock::now() + *settings_->timeout;
  }
  const int error = BeginFleetThread(std::make_unique<FleetErrand>(
      FleetErrand{next_, enclosures_[next_], settings_, mailbox_, deadline}));
  if (error != 0 && !begun_.empty()) {
    fanout_ = begun_.size();
    observer_.Noted(fmt::format(
        "this machine has no thread left for another enclosure; {} are read at once", fanout_));
    return false;
  }
  const auto running = begun_.insert(begun_.end(), {next_++, stopwatch, deadline});
  observer_.EnclosureBegins(running->index);
  if (error != 0) {
    GiveUp(running, NotAsked(FailureCause::Memory, "this machine has no thread left"));
  }
  return true;
}

void FleetRun::TakeMail(Clock::time_point deadline) {
  for (FleetMail& mail : mailbox_->Take(deadline)) {
    Take(mail);
  }
  observer_.TimePasses();
}

FleetRun::Running FleetRun::Find(std::size_t index) {
  return std::find_if(begun_.begin(), begun_.end(),
                      [index](const Begun& one) { return one.index == index; });
}

void FleetRun::Take(FleetMail& mail) {
  const std::size_t index = mail.index;
  if (const auto* const tell = std::get_if<PassEvent>(&mail.content)) {
    if (Observer* const observer = observer_.ObserverOf(index)) {
      (*tell)(*observer);
    }
  } else if (auto* const reading = std::get_if<Reading>(&mail.content)) {
    mailbox_->Close(index);
    End(Find(index), std::move(*reading));
  } else {
    GiveUp(Find(index), std::get<QueryOutcome>(mail.content));
  }
}

void FleetRun::GiveUpOverdue() {
  const auto now = Clock::now();
  for (auto place = begun_.begin(); place != begun_.end();) {
    const auto one = place++;
    if (one->deadline && *one->deadline <= now) {
      isAnyAbandoned_ = true;
      GiveUp(one, NotAsked(FailureCause::TimeOver, "the time given for this enclosure is over"));
    }
  }
}

/// Hands over what was read so far; `why` there is not more.
void FleetRun::GiveUp(Running running, const QueryOutcome& why) {
  const EnclosureSettings& enclosure = enclosures_[running->index];
  Reading reading = mailbox_->Close(running->index);
  Stamp(reading, enclosure, running->stopwatch);
  if (settings_->psu == 0) {
    FillUnread(settings_->parts, why, reading);
  } else {
    FillUnselected(settings_->psu, why, reading);
  }
  End(running, std::move(reading));
}

void FleetRun::End(Running running, Reading reading) {
  const std::size_t index = running->index;
  begun_.erase(running);
  observer_.EnclosureEnded(index, std::move(reading));
}

/// Takes what comes while sessions are closed, and gives up the rest.
void FleetRun::Stop() {
  const auto begin = Clock::now();
  auto now = begin;
  const auto isWorthWaiting = [&] {
    const auto time = now - begin;
    return time < kUntilSessionsAreKnown ||
           (time < kUntilSessionsAreClosed && Standalone::CountOpenSessions() > 0);
  };
  for (; !begun_.empty() && isWorthWaiting(); now = Clock::now()) {
    TakeMail(now + kTick);
  }
  while (!begun_.empty()) {
    GiveUp(begun_.begin(), NotAsked(FailureCause::Stopped, "stopped"));
  }
  HandOverUnbegun();
}

void FleetRun::HandOverUnbegun() {
  for (; next_ < enclosures_.size(); ++next_) {
    GiveUp(begun_.insert(begun_.end(), {next_, {}, {}}),
           NotAsked(FailureCause::Stopped, "stopped before it began"));
  }
}

void FleetRun::AwaitSessionsOfAbandoned() {
  const auto end = Clock::now() + kUntilAbandonedAreClosed;
  while (Standalone::CountOpenSessions() > 0 && Clock::now() < end) {
    TakeMail(std::min(end, Clock::now() + kTick));
  }
}

void Require(bool holds, const char* name, long long value, const std::string& expected) {
  if (!holds) {
    throw std::invalid_argument(fmt::format("{} is \"{}\"; expected {}", name, value, expected));
  }
}

}  // namespace

FleetReader::FleetReader(FleetSettings settings) : settings_(std::move(settings)) {
  Require(settings_.fanout >= 1 && settings_.fanout <= kMaxFanout, "the fan-out",
          static_cast<long long>(settings_.fanout),
          fmt::format("a whole number from 1 to {}", kMaxFanout));
  Require(settings_.psu >= 0 && settings_.psu <= 9, "the PSU to select", settings_.psu,
          "1 to 9, or 0 for none");
  Require(!settings_.timeout || settings_.timeout->count() > 0,
          "the time-out of an enclosure, in milliseconds,",
          settings_.timeout.value_or(milliseconds(0)).count(), "more than 0");
}

void FleetReader::Read(const std::vector<EnclosureSettings>& enclosures,
                       FleetObserver& observer) const {
  const std::size_t atOnce = std::min(settings_.fanout, enclosures.size());
  const DescriptorLimit room = MakeRoomForDescriptors(atOnce);
  if (room.enclosures < atOnce) {
    const std::string lack =
        fmt::format("the limit of open files is \"{}\"; expected at least {} to read {} at once",
                    room.limit, room.needed, atOnce);
    if (room.enclosures == 0) {
      throw UsageError(lack);
    }
    observer.Noted(fmt::format("{}; {} are", lack, room.enclosures));
  }
  FleetRun(enclosures, settings_, std::max<std::size_t>(room.enclosures, 1), observer).Go();
}

}  // namespace Tavrin
