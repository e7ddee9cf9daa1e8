#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "tools/smm-inventory/Commands.h"

namespace Tavrin {

struct Format;

constexpr std::uint16_t kDefaultPort = 623;

/// What the tool is to do with the enclosure.
struct Task {
  const Command* command = nullptr;  ///< One of Commands(); the first of them unless asked for.
  int psu = 0;  ///< The PSU that is to be selected, from 1 to 9; 0 where the command reads.
};

/// What the command line asks for. An empty setting leaves the IPMI client's own default, or what
/// the environment says.
struct Options {
  Task task;
  const Format* format = nullptr;  ///< One of Formats(); the first of them unless asked for.
  std::string host;
  std::uint16_t port = kDefaultPort;
  std::string userName;
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

/// Reads the command line. Throws UsageError when it holds what the tool cannot use.
std::variant<Options, Notice> ParseCommandLine(int argc, const char* const* argv);

}  // namespace Tavrin
