#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace Tavrin {

constexpr std::uint16_t kDefaultPort = 623;

enum class Command { Identity, Power, Caps, Nodes, Fans, Psus, All, SelectPsu };

/// What the tool is to do with the enclosure.
struct Task {
  Command command = Command::All;
  int psu = 0;  ///< The PSU that SelectPsu selects.
};

/// What the command line asks for. An empty setting leaves the IPMI client's own default, or what
/// the environment says.
struct Options {
  Task task;
  bool isJson = false;
  std::string host;
  std::uint16_t port = kDefaultPort;
  std::string userName;
  std::optional<std::string> passwordFile;
  std::optional<int> cipherSuite;
  std::optional<int> privilegeLevel;
  std::optional<int> workaroundFlags;
  unsigned int verbosity = 0;  ///< How often -v was given.
};

/// A text that was asked for instead of a run: the help or the version.
struct Notice {
  std::string text;
};

/// Reads the command line. Throws UsageError when it holds what the tool cannot use.
std::variant<Options, Notice> ParseCommandLine(int argc, const char* const* argv);

}  // namespace Tavrin
