#include "platform/Log.h"

#include <pthread.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/stdout_color_sinks.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <locale>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <utility>

#include "platform/standalone/StrictNumber.h"
#include "platform/standalone/logger/LogControl.h"
#include "platform/standalone/logger/ThreadLog.h"
#include "support/EscapeControlBytes.h"

namespace Tavrin {
namespace {

namespace LogLevel = Standalone::LogLevel;
using Standalone::LogLine;

constexpr int kDefaultLevel = LogLevel::Error;
constexpr unsigned int kHighestLevel = LogLevel::Debug;
constexpr const char* kLevelKey = "TAVRIN_LOG_LEVEL";

/// Keeps handler calls apart and lets SetLogLineHandler() wait for a call that is under way. Guards
/// the console, too, whose own mutex a fork() would not know of.
std::mutex outputMutex;

/// Whether the calling thread holds the mutex.
thread_local bool holdsOutput = false;

/// A child has the forking thread alone, and nobody there would release the mutex for another one.
/// A handler that forks holds it itself, and releases it on both sides.
void LockForFork() {
  if (!holdsOutput) {
    outputMutex.lock();
  }
}

void UnlockAfterFork() {
  if (!holdsOutput) {
    outputMutex.unlock();
  }
}

/// As the library is loaded. It fails only for want of memory; then children must not log.
[[maybe_unused]] const int forkHandlers =
    pthread_atfork(LockForFork, UnlockAfterFork, UnlockAfterFork);

/// Where lines go, for as long as this lives.
class Output {
 public:
  Output() : lock_(outputMutex) { holdsOutput = true; }
  ~Output() { holdsOutput = false; }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  std::function<void(const LogLine&)>& Handler() {
    // Never destroyed, as the console: destructors of other static objects may still log.
    static auto* const handler = new std::function<void(const LogLine&)>;
    return *handler;
  }

  spdlog::logger& Console() {
    static auto* const console = [] {
      auto made = std::make_unique<spdlog::logger>(
          std::string(), std::make_shared<spdlog::sinks::stderr_color_sink_st>());
      made->set_level(spdlog::level::trace);
      made->set_pattern("%Y-%m-%d %H:%M:%S.%e %^%l%$ %v");
      return made.release();
    }();
    return *console;
  }

 private:
  std::lock_guard<std::mutex> lock_;
};

/// Where the lines of one thread go, and where they went before. Needs no lock.
struct ThreadOutput {
  unsigned int threshold;
  std::function<void(const LogLine&)> handler;
  const ThreadOutput* outer;
};

thread_local const ThreadOutput* innermostOutput = nullptr;

spdlog::level::level_enum Severity(unsigned int level) {
  constexpr std::array severities = {spdlog::level::err, spdlog::level::err, spdlog::level::warn,
                                     spdlog::level::info, spdlog::level::debug};
  return severities.at(std::min(level, kHighestLevel));
}

void HandOn(const LogLine& line) {
  if (innermostOutput != nullptr) {
    innermostOutput->handler(line);
    return;
  }
  Output output;
  if (output.Handler()) {
    output.Handler()(line);
    return;
  }
  const std::string whole = line.source + ":" + std::to_string(line.line) + ": " + line.text;
  output.Console().log(Severity(line.level), EscapeControlBytes(whole));
}

/// Hands on what `compose` returns. Without memory, or when the handler throws, the line is lost:
/// it comes from a destructor, and throwing out of one would end the program.
template <typename Compose>
void Write(const Compose& compose) {
  try {
    HandOn(compose());
  } catch (...) {
  }
}

constexpr int kNotRead = -1;

/// What the environment says, for as long as nobody else has said anything.
std::atomic<int> processThreshold{kNotRead};

/// The environment's threshold, if it is one.
std::optional<int> ParseThreshold(const char* text) {
  const std::optional<int> parsed = Standalone::ParseStrictly(text);
  const bool isThreshold = parsed && *parsed >= 0 && *parsed <= static_cast<int>(kHighestLevel);
  return isThreshold ? parsed : std::nullopt;
}

void ReportRejectedThreshold(const char* text) {
  Write([text] {
    return LogLine{LogLevel::Error, "platform/standalone/logger/Log", __LINE__,
                   std::string(kLevelKey) + " is \"" + text +
                       "\"; expected 0 (off), 1 (error), 2 (warning), 3 (info) or 4 (debug); " +
                       std::to_string(kDefaultLevel) + " holds"};
  });
}

/// Takes the environment's threshold, once. What is to be said about it is said behind that: the
/// handler that gets the line may ask for the threshold.
void ReadThreshold() {
  if (processThreshold != kNotRead) {
    return;
  }
  const char* const text = std::getenv(kLevelKey);
  const std::optional<int> given = text == nullptr ? kDefaultLevel : ParseThreshold(text);
  int expected = kNotRead;
  if (processThreshold.compare_exchange_strong(expected, given.value_or(kDefaultLevel)) && !given) {
    ReportRejectedThreshold(text);
  }
}

}  // namespace

struct Log::State {
  State(unsigned int lineLevel, std::string sourcePath, unsigned int lineNumber)
      : level(lineLevel), source(std::move(sourcePath)), line(lineNumber) {
    // Numbers read the same wherever the program runs.
    text.imbue(std::locale::classic());
  }

  unsigned int level;
  std::string source;
  unsigned int line;
  std::ostringstream text;
};

Log::Log(unsigned int level, const std::string& sourcePath, unsigned int line)
    : state_(std::make_unique<State>(level, sourcePath, line)) {}

Log::~Log() {
  // Before the line is handed on: a handler that asks for the threshold must not be the first.
  GetMinLogLevel();
  Write([this] {
    return LogLine{state_->level, std::move(state_->source), state_->line, state_->text.str()};
  });
}

std::ostream& Log::Stream() { return state_->text; }

unsigned int Log::GetMinLogLevel() {
  if (innermostOutput != nullptr) {
    return innermostOutput->threshold;
  }
  ReadThreshold();
  return static_cast<unsigned int>(processThreshold);
}

namespace Standalone {

void SetMinLogLevel(unsigned int level) {
  // The environment's comes first, so that a malformed one is reported whoever wins.
  ReadThreshold();
  processThreshold = static_cast<int>(std::min(level, kHighestLevel));
}

void SetLogLineHandler(std::function<void(const LogLine&)> handler) {
  Output().Handler().swap(handler);
}

struct ThreadLog::State : ThreadOutput {};

ThreadLog::ThreadLog(unsigned int threshold, std::function<void(const LogLine&)> handler)
    : state_(new State{{std::min(threshold, kHighestLevel), std::move(handler), innermostOutput}}) {
  innermostOutput = state_.get();
}

ThreadLog::~ThreadLog() { innermostOutput = state_->outer; }

std::string EscapeControlBytes(const std::string& text) { return Tavrin::EscapeControlBytes(text); }

}  // namespace Standalone
}  // namespace Tavrin
