#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Tavrin {

struct EnclosureSettings;

/// IPMI's own UDP port, which is asked where none is named.
constexpr std::uint16_t kDefaultPort = 623;

/// How an enclosure is asked, as far as a line of a hosts file or a command line says so: what is
/// empty was not said. Values are such as the parsers of fleet/Settings.h give.
struct TargetSettings {
  std::optional<std::string> userName;

  /// Where the password stands; a relative path counts from where the program was started.
  std::optional<std::string> passwordFile;

  std::optional<int> cipherSuite;
  std::optional<int> privilegeLevel;
  std::optional<int> workaroundFlags;
  std::optional<int> attempts;
  std::optional<int> sessionTimeoutMs;
};

/// One enclosure that is to be asked.
struct Target {
  std::string host;  ///< Name or address; an IPv6 address without brackets.
  std::uint16_t port = kDefaultPort;

  /// The heading that it stands under in the hosts file; empty without one.
  std::string group;

  TargetSettings settings;
};

/// Puts what `defaults` say in place of what `settings` leave open.
void Complete(TargetSettings& settings, const TargetSettings& defaults);

/// Writes host, port and what the target's settings say into `enclosure`, all but the password, and
/// leaves there what they do not say.
void Apply(const Target& target, EnclosureSettings& enclosure);

}  // namespace Tavrin
