#pragma once

#include <string>
#include <vector>

namespace Tavrin {

/// Reads a privilege level by name: user 2, operator 3, administrator 4. Throws UsageError for any
/// other text.
int ParsePrivilege(const std::string& text);

/// Reads the id of a cipher suite that the IPMI client can speak. Throws UsageError for any other
/// text.
int ParseCipherSuite(const std::string& text);

/// The flags of the workarounds named, joined. Throws UsageError for a name that is not known.
int ParseWorkarounds(const std::vector<std::string>& names);

/// The names that each parser takes, for messages and the help text.
std::string PrivilegeNames();
std::string CipherSuiteIds();
std::string WorkaroundNames();

}  // namespace Tavrin
