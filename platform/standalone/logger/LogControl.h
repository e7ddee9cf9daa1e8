#pragma once

#include <functional>
#include <string>

namespace Tavrin {
namespace Standalone {

/// The levels of log lines, which are thresholds as well: one lets the lines up to it through, and
/// 0 none.
namespace LogLevel {
constexpr unsigned int Error = 1;
constexpr unsigned int Warning = 2;
constexpr unsigned int Info = 3;
constexpr unsigned int Debug = 4;
}  // namespace LogLevel

/// One complete log line.
struct LogLine {
  unsigned int level;  ///< One of LogLevel.
  std::string source;  ///< Path of the source that wrote the line, from the root of its repository.
  unsigned int line;   ///< Line number in that source.
  std::string text;    ///< As written: it may hold any byte that a controller sent.
};

/// Sets the log threshold at run time: 0 or one of LogLevel; a larger value counts as Debug. Wins
/// over the environment variable TAVRIN_LOG_LEVEL, and does not count for threads that have a log
/// of their own (ThreadLog.h). May be called from any thread.
void SetMinLogLevel(unsigned int level);

/// Hands every line that is written from now on to `handler` instead of to standard error, but for
/// those of threads that have a log of their own (ThreadLog.h); an empty handler restores standard
/// error. Calls of the handler are made one at a time, on the thread that wrote the line; the
/// handler itself must not log nor call this, and what it throws is dropped. When the call returns,
/// the handler before it is not running any more. May be called from any thread.
///
/// fork() waits for a call that is under way on another thread, so that the child can log: a thread
/// must not call it while it holds what the handler may wait for.
void SetLogLineHandler(std::function<void(const LogLine&)> handler);

/// The text with every byte outside printable ASCII, and the backslash, written as an escape
/// sequence (\n, \r, \t, \\, \xNN), so that nothing that a controller sent can drive a terminal or
/// forge a line. For handlers that show lines to people; lines on standard error come escaped.
/// Programs outside this repository have no support/EscapeControlBytes.h, hence this one.
std::string EscapeControlBytes(const std::string& text);

}  // namespace Standalone
}  // namespace Tavrin
