#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

namespace Tavrin {

/// The options as they stand on the command line. Their values are read by parsers of our own,
/// since a refusal is to name the thing, the value and what was expected.
struct RawOptions {
  std::vector<std::string> hosts;
  std::vector<std::string> excludes;
  std::optional<std::string> hostsFile;
  std::optional<std::string> port;
  std::string userName;
  std::optional<std::string> passwordFile;
  std::optional<std::string> cipherSuite;
  std::optional<std::string> privilegeLevel;
  std::vector<std::string> workarounds;
  std::optional<std::string> attempts;
  std::optional<std::string> sessionTimeout;
  std::optional<std::string> format;
  bool isJson = false;
  bool isQuiet = false;
  bool isForNagios = false;
  bool leavesPresenceOut = false;
  std::optional<std::string> fanout;
  std::optional<std::string> timeout;
  std::optional<std::string> failedTo;
  std::optional<std::string> groupBy;
  std::vector<std::string> ignored;
  std::size_t verbosity = 0;
};

/// Tells the parser of command lines all options and the help text. It fills `raw`, and throws
/// UsageError for a password.
void Declare(CLI::App& app, RawOptions& raw);

}  // namespace Tavrin
