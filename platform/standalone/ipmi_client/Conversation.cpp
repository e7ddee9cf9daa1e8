#include "platform/standalone/ipmi_client/Conversation.h"

#include <algorithm>
#include <cerrno>

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
  Noticed noticed;
  for (auto last = first; last < deadline; last = Clock::now()) {
    const Datagram datagram = question.make();
    int error = datagram.empty() ? ENOMEM : socket_.Send(datagram);
    if (error == 0 && Await(std::min(last + interval, deadline), question, noticed, error)) {
      // It had as long as its slowness asks for: what had to be repeated was lost, not late.
      const bool hadItsTime = interval == 2 * attempt_.roundTrip;
      MeasureRoundTrip(first, last, hadItsTime);
      return {};
    }
    if (error != 0) {
      return SystemFailure(error);
    }
  }
  return SilenceFailure(question.silence, noticed);
}

/// Returns whether the answer came before `end`.
bool Conversation::Await(Clock::time_point end, const Question& question, Noticed& noticed,
                         int& error) {
  for (;;) {
    const UdpSocket::Received received = socket_.Receive(end);
    error = received.error;
    if (received.datagram == nullptr) {
      return false;
    }
    if (IsAnswer(*received.datagram, question, noticed)) {
      return true;
    }
  }
}

bool Conversation::IsAnswer(const Datagram& datagram, const Question& question, Noticed& noticed) {
  switch (question.judge(datagram)) {
    case Verdict::Answer:
      return true;
    case Verdict::Damaged:
      noticed.damaged = true;
      return false;
    default:
      NoticeForeign(datagram, noticed);
      return false;
  }
}

/// A message outside of a session is known by its tag: that of an earlier question makes it a
/// second copy, or the answer that an earlier attempt did not wait for.
void Conversation::NoticeForeign(const Datagram& datagram, Noticed& noticed) {
  const std::optional<DatagramHeader> header = ReadHeader(datagram);
  const bool isOfEarlierQuestion =
      header && header->sessionId == 0 && header->number < kTags && header->number != lastTag_;
  const auto asked = isOfEarlierQuestion ? asked_.at(header->number) : std::nullopt;
  if (!asked) {
    noticed.foreign = true;
    return;
  }
  // Of several answers to repetitions of one question the first tells best.
  const milliseconds lateness = Between(*asked, Clock::now());
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

Failure Conversation::SilenceFailure(Trouble silence, const Noticed& noticed) const {
  if (lateness_) {
    return LateFailure(*lateness_);
  }
  if (noticed.damaged) {
    return FailureOf(Trouble::DamagedAnswer);
  }
  if (noticed.foreign) {
    return FailureOf(Trouble::OtherAnswer);
  }
  const bool isFirst = silence == Trouble::NoAnswer;
  return isFirst && socket_.PeerError() != 0 ? SystemFailure(socket_.PeerError())
                                             : FailureOf(silence);
}

}  // namespace Standalone
}  // namespace Tavrin
