#include "platform/Log.h"

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

namespace Tavrin {
namespace {

using Standalone::LogLine;

constexpr unsigned int kDefaultLevel = 1;
constexpr unsigned int kHighestLevel = 4;
constexpr const char* kLevelKey = "TAVRIN_LOG_LEVEL";

/// Where lines go. The mutex keeps handler calls apart and lets SetLogLineHandler() wait for a call
/// that is under way.
struct Output {
  std::mutex mutex;
  std::function<void(const LogLine&)> handler;
  spdlog::logger console{"", std::make_shared<spdlog::sinks::stderr_color_sink_mt>()};
};

Output& TheOutput() {
  // Never destroyed: destructors of other static objects may still log.
  static Output* const output = [] {
    auto* const made = new Output;
    made->console.set_level(spdlog::level::trace);
    made->console.set_pattern("%Y-%m-%d %H:%M:%S.%e %^%l%$ %v");
    return made;
  }();
  return *output;
}

spdlog::level::level_enum Severity(unsigned int level) {
  constexpr std::array severities = {spdlog::level::err, spdlog::level::err, spdlog::level::warn,
                                     spdlog::level::info, spdlog::level::debug};
  return severities.at(std::min(level, kHighestLevel));
}

void HandOn(const LogLine& line) {
  Output& output = TheOutput();
  const std::lock_guard<std::mutex> lock(output.mutex);
  if (output.handler) {
    output.handler(line);
    return;
  }
  const std::string whole = line.source + ":" + std::to_string(line.line) + ": " + line.text;
  output.console.log(Severity(line.level), Standalone::EscapeControlBytes(whole));
}

void Write(const LogLine& line) {
  try {
    HandOn(line);
  } catch (...) {
    // The line is lost: it comes from a destructor, and throwing out of one would end the program.
  }
}

/// The threshold, and what is still to be said about the environment's.
struct Threshold {
  Threshold() {
    const char* const text = std::getenv(kLevelKey);
    if (text == nullptr) {
      return;
    }
    const std::optional<int> parsed = Standalone::ParseStrictly(text);
    if (parsed && *parsed >= 0 && *parsed <= static_cast<int>(kHighestLevel)) {
      level = static_cast<unsigned int>(*parsed);
    } else {
      rejected = text;
      reportDue = true;
    }
  }

  std::atomic<unsigned int> level{kDefaultLevel};
  std::string rejected;
  std::atomic<bool> reportDue{false};
};

Threshold& TheThreshold() {
  // Never destroyed, as the output.
  static auto* const threshold = new Threshold;
  return *threshold;
}

/// Says once that the environment's threshold does not hold. Not part of making the threshold: the
/// handler that gets the line may ask for it.
void ReportRejectedLevel(Threshold& threshold) {
  if (!threshold.reportDue.exchange(false)) {
    return;
  }
  Write({1, "platform/standalone/logger/Log", __LINE__,
         std::string(kLevelKey) + " is \"" + threshold.rejected +
             "\"; expected 0 (off), 1 (error), 2 (warning), 3 (info) or 4 (debug); " +
             std::to_string(kDefaultLevel) + " holds"});
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
    : state_(std::make_unique<State>(level, sourcePath, line)) {
  // Before any line is handed on: a handler that asks for the threshold must not make another one.
  ReportRejectedLevel(TheThreshold());
}

Log::~Log() { Write({state_->level, state_->source, state_->line, state_->text.str()}); }

std::ostream& Log::Stream() { return state_->text; }

unsigned int Log::GetMinLogLevel() {
  Threshold& threshold = TheThreshold();
  ReportRejectedLevel(threshold);
  return threshold.level;
}

namespace Standalone {

void SetMinLogLevel(unsigned int level) {
  Threshold& threshold = TheThreshold();
  ReportRejectedLevel(threshold);
  threshold.level = std::min(level, kHighestLevel);
}

void SetLogLineHandler(std::function<void(const LogLine&)> handler) {
  Output& output = TheOutput();
  const std::lock_guard<std::mutex> lock(output.mutex);
  output.handler.swap(handler);
}

std::string EscapeControlBytes(const std::string& text) {
  constexpr const char* hexDigits = "0123456789abcdef";
  std::string escaped;
  escaped.reserve(text.size());
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (character == '\\') {
      escaped += "\\\\";
    } else if (character == '\n') {
      escaped += "\\n";
    } else if (character == '\r') {
      escaped += "\\r";
    } else if (character == '\t') {
      escaped += "\\t";
    } else if (byte < 0x20 || byte > 0x7E) {
      escaped += {'\\', 'x', hexDigits[byte >> 4U], hexDigits[byte & 0xFU]};
    } else {
      escaped += character;
    }
  }
  return escaped;
}

}  // namespace Standalone
}  // namespace Tavrin
