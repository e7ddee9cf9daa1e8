#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "platform/ConnectionInfo.h"
#include "platform/IpmiClient.h"
#include "platform/SMMInfo.h"
#include "platform/standalone/ipmi_client/LastExchange.h"

namespace Tavrin::Double {

using Bytes = std::vector<std::uint8_t>;

/// Bytes as "0x5 0xab ".
std::string HexText(const Bytes& bytes);

/// Connection settings in which every field differs from its default and from every other, and that
/// admit exchanges.
TavrinConnection::ConnectionInfo TestSettings();

/// A 14-byte status answer in which every byte differs.
Bytes StatusAnswer(std::uint8_t platformId, std::uint8_t enclosureType);

/// What a client does with the answer and the completion code that it is handed, which hold what
/// they held before.
enum class Filling { Replaces, ReplacesAllButTheCode, Appends, LeavesAlone };

/// One conversation over a client of its own.
struct Exchange {
  Bytes response;
  std::uint8_t completionCode = 0;
  std::uint8_t netFn = 0;
  std::uint8_t command = 0;
  Bytes data;
  std::vector<int> connectResults = {0};  ///< One for each call; only the last may be 0.
  int sendResult = 0;
  Filling filling = Filling::Replaces;
  std::exception_ptr exception = nullptr;  ///< Of connect() where that does not succeed, or send().

  /// Is called once the request is there, and may change the answer. What it throws, send() throws.
  std::function<void(Exchange&)> onRequest = [](Exchange&) {};

  /// Why it fails, in the terms of Standalone::GetLastExchange(). With words, each failure is a
  /// line of the client in the log.
  Standalone::FailureCause cause = Standalone::FailureCause::None;
  std::string words = {};

  bool Connects() const { return !connectResults.empty() && connectResults.back() == 0; }

  /// The request that was sent.
  IPMICOMMAND Request() const { return {command, data, netFn}; }
  std::string RequestText() const;
};

/// One line that the code under test wrote. The source line number is checked apart.
struct Line {
  unsigned int level = 0;
  std::string text;
  unsigned int number = 0;

  bool operator==(const Line& other) const { return level == other.level && text == other.text; }
};
std::ostream& operator<<(std::ostream& stream, const Line& line);

/// What the code under test did.
struct Happenings {
  std::vector<Exchange> exchanges;  ///< As they were begun, each with the request that was sent.
  std::vector<Line> lines;
  std::size_t thresholdReads = 0;
  std::vector<unsigned int> pauses;
  std::vector<std::string> events;
};

/// Everything behind the seam: what is to happen, and what did.
struct Platform : Happenings {
  // Exchanges come from one of three places: a table of answers, a function, or a script.

  /// With it, every request gets this answer with completion code 0, every connection succeeds and
  /// nothing else of this object is looked at but the threshold and the SMM type. Nothing is
  /// written down then, nor anything allocated, but what lines need; any number of threads may call
  /// at once.
  std::function<const Bytes&(const IPMICOMMAND&)> answerTo;

  std::function<Exchange()> improvise;  ///< Makes up each exchange, for any request.

  /// Those that the code under test is expected to have: every byte of a request is compared.
  std::vector<Exchange> script;
  std::size_t exchangesScripted = 0;  ///< Those taken from the script.

  /// Whether each connection is to be tried as often as its exchange says, to carry one request and
  /// to be closed.
  bool areConversationsWhole = true;

  TavrinConnection::ConnectionInfo expectedSettings = TestSettings();
  unsigned int logThreshold = 4;
  std::vector<unsigned int> laterThresholds;  ///< Taken by GetMinLogLevel() one by one, if any.
  int connectAttempts = 3;
  std::optional<std::int32_t> smmType = 0;  ///< Without one, the caller's is left as passed.
  int smmTypeResult = 0;

  // Look on while it happens; what they throw, the platform throws.
  std::function<void(const Line&)> whileWritten = [](const Line&) {};
  std::function<void(const std::string&)> onEvent = [](const std::string&) {};

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

  void ForgetWhatHappened() { static_cast<Happenings&>(*this) = {}; }

  /// Writes an event down, unless there is a table of answers.
  void Happened(const char* event);
};

/// The one that the platform's functions work on: of all threads but those that use their own.
Platform& ThePlatform();

/// The one for the calling thread from now on; with null, that of all. Threads with their own stand
/// for different SMMs.
void UseOnThisThread(Platform* own);

/// With it, each client uses on its thread what this gives for its host: for threads that a test
/// does not make itself. Is set while no client is made.
inline std::function<Platform*(const std::string& host)> platformOfHost;

/// Gets every complaint about the code under test. Until one is set, a complaint ends the program.
void OnComplaint(void (*complain)(const std::string& text));

/// Complains unless it holds.
void Require(bool holds, const char* promise);

/// Stands for sleep(), with the pauses and events of the platform.
unsigned int PlayPause(unsigned int seconds);

}  // namespace Tavrin::Double
