#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <exception>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "benchmarks/support/AllocationCount.h"
#include "platform/ConnectionInfo.h"
#include "platform/IpmiClient.h"
#include "platform/SMMInfo.h"

namespace Tavrin::Double {

using Bytes = std::vector<std::uint8_t>;

/// What a client does with the answer and the completion code that it is handed, which hold what
/// they held before.
enum class Filling { Replaces, ReplacesAllButTheCode, Appends, LeavesAlone };

/// One conversation that the code under test is expected to have, over a client of its own. The
/// client compares every byte of the request, and the test fails when one part is left over or one
/// too many is asked for.
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
  std::function<void()> afterSend = [] {};  ///< What else changes with this answer.

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

/// Everything behind the seam: what the test says will happen, and what did.
struct Platform {
  // What will happen.
  std::vector<Exchange> script;
  std::optional<Exchange> everyExchange;  ///< With one, any request goes, and the script waits.
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

  // What did.
  std::size_t exchangesBegun = 0;
  std::vector<Line> lines;
  std::vector<unsigned int> lineNumbers;
  std::size_t thresholdReads = 0;
  std::vector<unsigned int> pauses;
  std::vector<Wait> waits;
  std::vector<std::string> events;
  int openConnections = 0;
  const TavrinConnection::ConnectionInfo* settingsOfInformation = nullptr;
  const SMMIype* askedSmmType = nullptr;
  AllocationCount allocationsAtRelease;  ///< When the SMM information was released.

  /// Adds one exchange that is expected, with the answer to it.
  void Expect(std::uint8_t netFn, std::uint8_t command, const Bytes& data, const Bytes& response,
              std::uint8_t completionCode = 0);

  /// Adds `count` status requests that all get the same answer.
  void ExpectStatusReads(int count, const Bytes& response, std::uint8_t completionCode = 0);

  /// Adds one exchange whose connection fails: connect() returns these, one after the other.
  void ExpectConnectFailures(const std::vector<int>& results);

  void ForgetWhatHappened();
};

/// The one that the platform's functions work on; a fresh one for each test.
Platform& ThePlatform();
void ResetPlatform();

/// Fails the test when the script was not played to its end.
void ExpectScriptPlayed();

/// Connection settings in which every field differs from its default and from every other.
TavrinConnection::ConnectionInfo TestSettings();

/// A 14-byte status answer in which every byte differs.
Bytes StatusAnswer(std::uint8_t platformId, std::uint8_t enclosureType);

/// A test with a platform of its own.
class PlatformTest : public ::testing::Test {
 protected:
  PlatformTest() {
    ResetPlatform();
    platform.expectedSettings = TestSettings();
  }
  void TearDown() override { ExpectScriptPlayed(); }

  /// Runs the operation at each threshold from 0 to 4 and compares the lines it writes with those
  /// of `linesAtThreshold4` that the threshold lets through. Each of them is to ask for the
  /// threshold once, whether or not it is written.
  void ExpectLines(const std::vector<Line>& linesAtThreshold4,
                   const std::function<void()>& operation);

  Platform& platform = ThePlatform();
};

}  // namespace Tavrin::Double
