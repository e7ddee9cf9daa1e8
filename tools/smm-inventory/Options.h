#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "fleet/FleetReader.h"
#include "fleet/Target.h"
#include "report/Health.h"
#include "tools/smm-inventory/Commands.h"

namespace Tavrin {

struct Format;

/// What the tool is to do with the enclosures.
struct Task {
  const Command* command = nullptr;  ///< One of Commands(); the first of them unless asked for.
  int psu = 0;  ///< The PSU that is to be selected, from 1 to 9; 0 where the command reads.
};

/// What the command line asks for. A setting that a target does not have leaves the IPMI client's
/// own default, or what the environment says.
struct Options {
  Task task;
  const Format* format = nullptr;  ///< One of Formats(); the first of them unless asked for.

  /// The enclosures, at least one, in the order in which they are named; each with its settings,
  /// which are the command line's where the hosts file says nothing.
  std::vector<Target> targets;

  std::vector<std::string> notes;  ///< What the user should know about them, a sentence each.
  unsigned int verbosity = 0;      ///< How often -v was given.
  bool isQuiet = false;            ///< Whether progress is to stay away.

  std::size_t fanout = kMaxFanout;                   ///< So many are read at once.
  std::optional<std::chrono::milliseconds> timeout;  ///< For the whole of one enclosure.
  bool asksPresence = true;
  std::optional<std::string> failedTo;   ///< Path of a hosts file to be written.
  std::optional<std::string> hostsFile;  ///< Path of the one that was read; `-` is no path.
  std::string groupField;                ///< One of GroupFields(); empty for the readings.
  std::vector<IgnoredFinding> ignored;
  bool isForNagios = false;

  /// Up to which level log lines are shown as they are.
  [[nodiscard]] unsigned int ShownLogLevel() const;

  [[nodiscard]] bool IsText() const;
  [[nodiscard]] bool IsAboutHealth() const;

  /// Whether the health of all enclosures stands in front of their tables, or in place of them.
  [[nodiscard]] bool ShowsHealthFirst() const;

  /// What is read of each enclosure.
  [[nodiscard]] std::vector<Part> Parts() const;
};

/// A text that was asked for instead of a run: the help or the version.
struct Notice {
  std::string text;
};

/// Whether the answer is for a monitoring system, even where the rest cannot be used.
bool IsForNagios(int argc, const char* const* argv);

/// Reads the command line, and the hosts file that it names. Throws UsageError when they hold what
/// the tool cannot use.
std::variant<Options, Notice> ParseCommandLine(int argc, const char* const* argv);

}  // namespace Tavrin
