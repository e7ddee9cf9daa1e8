#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "support/HostAndPort.h"

namespace Tavrin {

struct EnclosureSettings;

/// IPMI's own UDP port, which is asked where none is named.
constexpr std::uint16_t kDefaultPort = 623;

/// How an enclosure is asked, as far as a line of a hosts file or a command line says so: what is
/// empty was not said. Values are such as the parsers of fleet/Settings.h give, and mean what they
/// mean in EnclosureSettings.
struct TargetSettings {
  std::optional<std::string> userName;  ///< 1 to 16 bytes.

  /// Where the password stands. A relative path counts from where the program was started; `-`,
  /// which no hosts file can say, is standard input.
  std::optional<std::string> passwordFile;

  std::optional<int> cipherSuite;      ///< An id, such as 3 or 17.
  std::optional<int> privilegeLevel;   ///< 2 user, 3 operator, 4 administrator.
  std::optional<int> workaroundFlags;  ///< A sum.

  /// How often to connect for each request, in all; at least 1.
  std::optional<int> attempts;

  /// From 100 to 600,000 milliseconds.
  std::optional<int> sessionTimeoutMs;
};

/// One enclosure that is to be asked.
struct Target {
  /// Name or address as it was written; an IPv6 address without brackets.
  std::string host;

  /// The first that is said of: the one beside the host, that of its line, that of the command line
  /// and kDefaultPort.
  std::uint16_t port = kDefaultPort;

  /// The heading that it stands under in the hosts file, without brackets; empty without one.
  std::string group;

  /// Its line's, and nothing where it has no line, until Complete() adds the command line's.
  TargetSettings settings;

  /// What stands behind the range of its line, as it stands there but for a `port=`; empty where it
  /// has no line.
  std::string writtenSettings;

  /// Whether the host alone, written where this one was found, stands for this port.
  bool isPortPlain = true;
};

/// What people write for it: the port stands beside it unless it is kDefaultPort and goes without
/// saying.
HostAndPort PlaceOf(const Target& target);

/// Puts what `defaults` say in place of what `settings` leave open.
void Complete(TargetSettings& settings, const TargetSettings& defaults);

/// Writes host, port and what the target's settings say into `enclosure`, all but the password, and
/// leaves there what they do not say.
void Apply(const Target& target, EnclosureSettings& enclosure);

}  // namespace Tavrin
