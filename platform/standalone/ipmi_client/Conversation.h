#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/standalone/ipmi_client/Datagram.h"
#include "platform/standalone/ipmi_client/Failure.h"
#include "platform/standalone/ipmi_client/UdpSocket.h"

namespace Tavrin {
namespace Standalone {

/// How long an answer is waited for, and after what time a question is asked again at the earliest.
struct Patience {
  std::chrono::milliseconds timeout{};
  std::chrono::milliseconds interval{};
  std::chrono::milliseconds openingInterval{};  ///< Of questions that open a session.
};

/// What is made of a datagram that comes while a question is open.
using Judge = std::function<Verdict(const Datagram&)>;

/// One question of a conversation: what is sent, and what is made of that which comes.
struct Question {
  /// The datagram of the first sending and of each repetition; empty when it cannot be made.
  std::function<Datagram()> make;
  Judge judge;
  Trouble silence{};  ///< What it is when nothing at all comes.
  /// Whether it opens a session. A repetition to a controller that is only slow may spoil what
  /// follows, so these questions wait for longer before they are repeated.
  bool isOpening = false;
  /// How long its answer is still waited for once the thread's exchanges are to end.
  std::chrono::milliseconds grace{0};
};

/// Asks questions of one controller, one at a time, and waits for their answers. Lasts for all
/// attempts of a client at one address, so that an answer to an earlier attempt shows that the
/// controller is late rather than silent.
class Conversation {
 public:
  Conversation(const std::string& numericAddress, int port)
      : address_(numericAddress), socket_(numericAddress, port) {}

  [[nodiscard]] const std::string& Address() const { return address_; }

  /// Whether there is a socket to hold it over.
  [[nodiscard]] bool IsOpen() const { return socket_.OpenError() == 0; }

  /// The message tag of the next question, 0 to 63 in turn. It serves as requester sequence number
  /// of a request, too.
  std::uint8_t NextTag();

  /// Holds for all questions until it is called again.
  void BeginAttempt(const Patience& patience);

  /// Asks until the answer came, the time-out is over, or the thread's exchanges end.
  Failure Ask(const Question& question);

  /// Asks twice at most, for two intervals at most.
  void AskInPassing(const Question& question);

  /// Sends once, without an answer.
  void Tell(const Datagram& datagram) { socket_.Send(datagram); }

  /// The longest that an answer of this attempt took which was certainly one to the first sending.
  [[nodiscard]] std::chrono::milliseconds LongestRoundTrip() const {
    return attempt_.longestRoundTrip;
  }

 private:
  struct Attempt {
    Patience patience;
    std::chrono::milliseconds roundTrip;  ///< Of the question before; 0 when it is not known.
    std::chrono::milliseconds longestRoundTrip;  ///< 0 as long as none is certain.
  };

  /// A question that is open, and what came meanwhile.
  struct Asked {
    const Question& question;
    Clock::time_point first;  ///< When it was sent first.
    bool damaged = false;
    bool foreign = false;
  };

  Failure AskFor(std::chrono::milliseconds timeout, const Question& question);
  bool Await(Clock::time_point end, Asked& asked, int& error);
  UdpSocket::Received Receive(Clock::time_point end, const Asked& asked);
  static Clock::time_point EndOfWaiting(const Asked& asked);
  bool IsAnswer(const Datagram& datagram, Asked& asked);
  void NoticeForeign(const Datagram& datagram, Asked& asked);
  void MeasureRoundTrip(Clock::time_point first, Clock::time_point last, bool hadItsTime);
  [[nodiscard]] Failure SilenceFailure(const Asked& asked) const;
  [[nodiscard]] std::chrono::milliseconds IntervalFor(const Question& question) const;

  static constexpr std::size_t kTags = 64;

  std::string address_;
  UdpSocket socket_;
  Attempt attempt_{};
  /// Of an answer that nobody waited for any more.
  std::optional<std::chrono::milliseconds> lateness_;
  std::uint8_t lastTag_ = 0;
  /// When the question of each tag was asked first.
  std::array<std::optional<Clock::time_point>, kTags> asked_{};
};

}  // namespace Standalone
}  // namespace Tavrin
