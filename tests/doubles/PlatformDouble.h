#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <exception>
#include <functional>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "platform/ConnectionInfo.h"
#include "platform/IpmiClient.h"
#include "platform/SMMInfo.h"
#include "platform/standalone/ipmi_client/LastExchange.h"

namespace Tavrin::Double {

using Bytes = std::vector<std::uint8_t>;

/// What a client does with the answer and the completion code that it is handed, which hold what
/// they held before.
enum class Filling { Replaces, ReplacesAllButTheCode, Appends, LeavesAlone };

/// One conversation that the code under test is expected to have, over a client of its own. The
/// client compares every byte of the request, and complains when one part is left over or one too
/// many is asked for.
struct Exchange {
  Bytes response;
  std::uint8_t completionCode = 0;
  std::uint8_t netFn = 0;
  std::uint8_t command = 0;
  Bytes data;
  std::vector<int> connectResults = {0};  ///< One for each call; only the last may be 0.
  int sendResult = 0;
  Filling filling = Filling::Replaces;
  std::exception_ptr connectException = nullptr;
  std::exception_ptr sendException = nullptr;
  std::function<void(Exchange&)> onRequest;  ///< Decides on the answer once the request is there.
  std::function<void()> afterSend = [] {};   ///< What else changes with this answer.

  /// Why it fails, in the terms of Standalone::GetLastExchange(). With words, each failure is a
  /// line of the client in the log.
  Standalone::FailureCause cause = Standalone::FailureCause::None;
  std::string words = {};

  bool Connects() const { return !connectResults.empty() && connectResults.back() == 0; }
};

/// One line that the code under test wrote. The source line number is checked apart.
struct Line {
  unsigned int level = 0;
  std::string text;

  bool operator==(const Line& other) const { return level == other.level && text == other.text; }
};
std::ostream& operator<<(std::ostream& stream, const Line& line);

/// How one call of sleep() ends.
struct SleepEnd {
  unsigned int result = 0;
  int error = 0;  ///< What it leaves in errno, unless 0.
};

/// One wait for a time on a clock.
struct Wait {
  clockid_t clock = CLOCK_REALTIME;
  int flags = 0;
  timespec until = {};
};

/// Everything behind the seam: what is to happen, and what did. Exchanges come from one of three
/// places: a table of answers, a function that makes them up, or a script.
struct Platform {
  // What will happen.
  /// With it, every request gets this answer with completion code 0, every connection succeeds and
  /// nothing else of this object is looked at but the threshold and the SMM type. Nothing is
  /// checked or written down then, nor anything allocated, but what lines need; any number of
  /// threads may call at once.
  std::function<const Bytes&(const IPMICOMMAND&)> answerTo;
  std::function<Exchange()> improvise;  ///< Makes up each exchange, for any request.
  /// Whether each connection is to be tried as often as its exchange says, to carry one request and
  /// to be closed.
  bool areConversationsWhole = true;
  std::vector<Exchange> script;
  TavrinConnection::ConnectionInfo expectedSettings;
  unsigned int logThreshold = 4;
  std::vector<unsigned int> laterThresholds;  ///< Taken by GetMinLogLevel() one by one, if any.
  int connectAttempts = 3;
  std::optional<std::int32_t> smmType = 0;  ///< Without one, the caller's is left as passed.
  int smmTypeResult = 0;
  std::exception_ptr smmTypeException = nullptr;
  std::vector<SleepEnd> sleepEnds;  ///< Taken by sleep() one by one; then it returns 0.
  std::vector<int> waitResults;     ///< Taken by clock_nanosleep() one by one; then it returns 0.
  std::function<void(const Line&)> whileWritten = [](const Line&) {};  ///< Looks on at each line.
  std::function<void()> onRelease = [] {};  ///< When the SMM information is released.

  // What did.
  std::vector<Exchange> exchanges;  ///< As they were begun, each with the request that was sent.
  std::vector<Line> lines;
  std::vector<unsigned int> lineNumbers;
  std::size_t thresholdReads = 0;
  std::vector<unsigned int> pauses;
  std::vector<Wait> waits;
  std::vector<std::string> events;
  std::size_t exchangesScripted = 0;  ///< Those taken from the script.
  int openConnections = 0;
  const TavrinConnection::ConnectionInfo* settingsOfInformation = nullptr;
  const SMMIype* askedSmmType = nullptr;

  /// Adds one exchange that is expected, with the answer to it.
  void Expect(std::uint8_t netFn, std::uint8_t command, const Bytes& data, const Bytes& response,
              std::uint8_t completionCode = 0);

  /// Adds `count` status requests that all get the same answer.
  void ExpectStatusReads(int count, const Bytes& response, std::uint8_t completionCode = 0);

  /// Adds one exchange whose connection fails: connect() returns these, one after the other.
  void ExpectConnectFailures(const std::vector<int>& results);

  void ForgetWhatHappened();
};

/// The one that the platform's functions work on: of all threads but those that use their own.
Platform& ThePlatform();

/// The one for the calling thread from now on; with null, that of all. Returns what it was before.
/// Threads with their own stand for different SMMs.
Platform* UseOnThisThread(Platform* own);

/// Complains about the code under test.
void Complain(const std::string& text);

inline void Require(bool holds, const char* promise) {
  if (!holds) {
    Complain(promise);
  }
}

template <typename Value>
void ExpectSame(const char* what, const Value& got, const Value& expected) {
  if (!(got == expected)) {
    std::ostringstream text;
    text << what << ": got " << got << ", expected " << expected;
    Complain(text.str());
  }
}

/// The first of what is still to come, which it takes away; as new when nothing is.
template <typename T>
T TakeNext(std::vector<T>& script) {
  if (script.empty()) {
    return {};
  }
  T next = std::move(script.front());
  script.erase(script.begin());
  return next;
}

/// Gets every complaint. Until one is set, a complaint ends the program.
void OnComplaint(void (*complain)(const std::string& text));

/// What one thread has had of the platform so far.
struct Tally {
  std::uint64_t exchanges = 0;  ///< Requests sent.
  std::uint64_t lines = 0;      ///< Log objects constructed.
};
Tally& TallyOfThisThread();

/// A request in words, as complaints name it.
std::string Describe(std::uint8_t netFn, std::uint8_t command, const Bytes& data);

/// Connection settings in which every field differs from its default and from every other, and that
/// admit exchanges.
TavrinConnection::ConnectionInfo TestSettings();

/// A 14-byte status answer in which every byte differs.
Bytes StatusAnswer(std::uint8_t platformId, std::uint8_t enclosureType);

}  // namespace Tavrin::Double
