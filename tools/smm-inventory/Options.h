#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "fleet/Target.h"
#include "tools/smm-inventory/Commands.h"

namespace Tavrin {

struct Format;

/// What the tool is to do with the enclosures.
struct Task {
  const Command* command = nullptr;  ///< One of Commands(); the first of them unless asked for.
  int psu = 0;  ///< The PSU that is to be selected, from 1 to 9; 0 where the command reads.
};

/// What the command line asks for. An empty setting leaves the IPMI client's own default, or what
/// the environment says.
struct Options {
  Task task;
  const Format* format = nullptr;  ///< One of Formats(); the first of them unless asked for.

  /// The enclosures, at least one, in the order in which they are named; each with its settings,
  /// for which those below already stand where the hosts file says nothing.
  std::vector<Target> targets;

  std::vector<std::string> notes;  ///< What the user should know about them, a sentence each.
  std::string userName;            ///< Empty where only the hosts file names users.
  std::optional<std::string> passwordFile;
  std::optional<int> cipherSuite;
  std::optional<int> privilegeLevel;
  std::optional<int> workaroundFlags;
  std::optional<int> attempts;          ///< To connect, for each request; at least 1.
  std::optional<int> sessionTimeoutMs;  ///< From 100 to 600,000.
  unsigned int verbosity = 0;           ///< How often -v was given.
};

/// A text that was asked for instead of a run: the help or the version.
struct Notice {
  std::string text;
};

/// Reads the command line, and the hosts file that it names. Throws UsageError when they hold what
/// the tool cannot use.
std::variant<Options, Notice> ParseCommandLine(int argc, const char* const* argv);

}  // namespace Tavrin
