#pragma once

#include <string>
#include <vector>

#include "fleet/Target.h"
#include "support/HostAndPort.h"

namespace Tavrin {

/// A line of a hosts file that names enclosures.
struct HostsLine {
  /// In the order written, at least one. The port is the one beside the host or the line's `port=`.
  std::vector<HostAndPort> hosts;

  std::string group;  ///< The heading above it, without brackets; empty without one.
  TargetSettings settings;
  std::string writtenSettings;  ///< As they stand there, but for `port=`; a blank between them.
};

/// What a hosts file says.
struct HostsFile {
  std::vector<std::string> groups;  ///< Headings in their order, each once.
  std::vector<HostsLine> lines;
};

/// Reads the text of a hosts file, which `source` names in refusals.
///
/// A line holds a range as ExpandHosts() takes it, and behind it, each after a blank, `key=value`
/// for what is particular to these hosts: user, password-file, port, cipher-suite, privilege,
/// workaround (several with commas between them), session-timeout and attempts, with the values
/// that the tool's options of these names take. A line `[name]`, of letters, digits, `-`, `_` and
/// `.`, is the heading of a group: what follows belongs to it up to the next one. A heading holds
/// no colon: a line that begins with a bracket and holds one before that closes names an IPv6
/// address. `#` at the start of a line or behind a blank begins a comment; empty lines say nothing.
///
/// Throws UsageError with the number of the line, from 1, for a bad line, an unknown or repeated
/// key and a bad value, and where the file comes to name more than kMostHosts hosts. The value of
/// an unknown key is not told: it could be a password.
HostsFile ParseHostsFile(const std::string& text, const std::string& source);

/// Reads the hosts file at that path, or standard input where the path is `-`, and parses it.
/// Throws UsageError as above, and where it cannot be read or is longer than 4 MiB.
HostsFile ReadHostsFile(const std::string& path);

}  // namespace Tavrin
