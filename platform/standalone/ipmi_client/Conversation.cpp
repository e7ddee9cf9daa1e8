#include "platform/standalone/ipmi_client/Conversation.h"

#include <algorithm>
#include <cerrno>

#include "platform/standalone/ipmi_client/Interruption.h"

namespace Tavrin {
namespace Standalone {
namespace {

using std::chrono::milliseconds;

milliseconds Between(Clock::time_point from, Clock::time_point to) {
  return std::chrono::ceil<milliseconds>(to - from);
}

}  // namespace

std::uint8_t Conversation::NextTag() {
  lastTag_ = static_cast<std::uint8_t>((lastTag_ + 1U) % kTags);
  asked_.at(lastTag_) = Clock::now();
  return lastTag_;
}

void Conversation::BeginAttempt(const Patience& patience) { attempt_ = {patience, {}, {}}; }

Failure Conversation::Ask(const Question& question) {
  return AskFor(attempt_.patience.timeout, question);
}

void Conversation::AskInPassing(const Question& question) {
  AskFor(std::min(2 * IntervalFor(question), attempt_.patience.timeout), question);
}

/// A controller that took long for one question is given twice as long before the next is repeated.
milliseconds Conversation::IntervalFor(const Question& question) const {
  const Patience& patience = attempt_.patience;
  return std::max(question.isOpening ? patience.openingInterval : patience.interval,
                  2 * attempt_.roundTrip);
}

Failure Conversation::AskFor(milliseconds timeout, const Question& question) {
  if (socket_.OpenError() != 0) {
    return SystemFailure(socket_.OpenError());
  }
  socket_.ForgetPeerError();
  const milliseconds interval = IntervalFor(question);
  const auto first = Clock::now();
  const auto deadline = first + timeout;
  Asked asked{question, first};
  for (auto last = first; last < deadline; last = Clock::now()) {
    if (last >= EndOfWaiting(asked)) {
      return InterruptionFailure();
    }
    const Datagram datagram = question.make();
    int error = datagram.empty() ? ENOMEM : socket_.Send(datagram);
    if (error == 0 && Await(std::min(last + interval, deadline), asked, error)) {
      // It had as long as its slowness asks for: what had to be repeated was lost, not late.
      const bool hadItsTime = interval == 2 * attempt_.roundTrip;
      MeasureRoundTrip(first, last, hadItsTime);
      return {};
    }
    if (error != 0) {
      return SystemFailure(error);
    }
  }
  return SilenceFailure(asked);
}

/// Returns whether the answer came before `end`.
bool Conversation::Await(Clock::time_point end, Asked& asked, int& error) {
  for (;;) {
    const UdpSocket::Received received = Receive(end, asked);
    error = received.error;
    if (received.datagram == nullptr) {
      return false;
    }
    if (IsAnswer(*received.datagram, asked)) {
      return true;
    }
  }
}

/// Waits until `end`, or until the thread's exchanges end; those of all threads may be stopped in
/// the middle.
UdpSocket::Received Conversation::Receive(Clock::time_point end, const Asked& asked) {
  UdpSocket::Received received;
  auto now = Clock::now();
  while (received.datagram == nullptr && received.error == 0 &&
         now < std::min(end, EndOfWaiting(asked))) {
    received = socket_.Receive(std::min({end, EndOfWaiting(asked), now + kLongestUnwatchedWait}));
    now = Clock::now();
  }
  return received;
}

/// A question that is asked after the end has its grace all the same.
Clock::time_point Conversation::EndOfWaiting(const Asked& asked) {
  const auto end = EndOfExchanges();
  return end == Clock::time_point::max() ? end : std::max(end, asked.first) + asked.question.grace;
}

bool Conversation::IsAnswer(const Datagram& datagram, Asked& asked) {
  switch (asked.question.judge(datagram)) {
    case Verdict::Answer:
      return true;
    case Verdict::Damaged:
      asked.damaged = true;
      return false;
    default:
      NoticeForeign(datagram, asked);
      return false;
  }
}

/// A message outside of a session is known by its tag: that of an earlier question makes it a
/// second copy, or the answer that an earlier attempt did not wait for.
void Conversation::NoticeForeign(const Datagram& datagram, Asked& asked) {
  const std::optional<DatagramHeader> header = ReadHeader(datagram);
  const bool isOfEarlierQuestion =
      header && header->sessionId == 0 && header->number < kTags && header->number != lastTag_;
  const auto sent = isOfEarlierQuestion ? asked_.at(header->number) : std::nullopt;
  if (!sent) {
    asked.foreign = true;
    return;
  }
  // Of several answers to repetitions of one question the first tells best.
  const milliseconds lateness = Between(*sent, Clock::now());
  if (lateness > attempt_.patience.timeout) {
    lateness_ = std::min(lateness, lateness_.value_or(lateness));
  }
}

/// Which sending of several was answered is not known: the first at the earliest, the last at the
/// latest. As long as nothing better is known, the longer time is taken for true, so that the next
/// question is not repeated too soon; but only once, since what then has to be repeated all the
/// same was not late but lost.
void Conversation::MeasureRoundTrip(Clock::time_point first, Clock::time_point last,
                                    bool hadItsTime) {
  const bool isCertain = first == last;
  if (!isCertain && attempt_.longestRoundTrip.count() != 0) {
    return;
  }
  attempt_.roundTrip = Between(hadItsTime ? last : first, Clock::now());
  if (isCertain) {
    attempt_.longestRoundTrip = std::max(attempt_.longestRoundTrip, attempt_.roundTrip);
  }
}

Failure Conversation::SilenceFailure(const Asked& asked) const {
  if (lateness_) {
    return LateFailure(*lateness_);
  }
  if (asked.damaged) {
    return FailureOf(Trouble::DamagedAnswer);
  }
  if (asked.foreign) {
    return FailureOf(Trouble::OtherAnswer);
  }
  const Trouble silence = asked.question.silence;
  const bool isFirst = silence == Trouble::NoAnswer;
  return isFirst && socket_.PeerError() != 0 ? SystemFailure(socket_.PeerError())
                                             : FailureOf(silence);
}

}  // namespace Standalone
}  // namespace Tavrin
