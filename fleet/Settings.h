#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/HostAndPort.h"

namespace Tavrin {

/// Takes an IPMI user name, 1 to 16 bytes. Throws UsageError for any other text.
std::string ParseUserName(const std::string& text);

/// Reads a privilege level by name: user 2, operator 3, administrator 4. Throws UsageError for any
/// other text.
int ParsePrivilege(const std::string& text);

/// Reads the id of a cipher suite that the IPMI client can speak. Throws UsageError for any other
/// text.
int ParseCipherSuite(const std::string& text);

/// The flags of the workarounds named, joined. Throws UsageError for a name that is not known.
int ParseWorkarounds(const std::vector<std::string>& names);

/// Reads a whole number of that range. Throws UsageError, which calls it `name`, for any other
/// text.
int ParseWholeNumber(const char* name, const std::string& text, int lowest, int highest);

/// Reads how often to connect, a whole number of at least 1. Throws UsageError for any other text.
int ParseAttempts(const std::string& text);

/// Reads a time in seconds from 0.1 to 600, of which the decimal places may be more than one, and
/// returns it in milliseconds. Throws UsageError for any other text.
int ParseSessionTimeout(const std::string& text);

/// Throws UsageError where the host has a port beside it that is not this one, which is said
/// elsewhere.
void RequireOnePort(const HostAndPort& place, std::uint16_t port);

/// The names that each parser takes, for messages and the help text.
std::string PrivilegeNames();
std::string CipherSuiteIds();
std::string WorkaroundNames();

}  // namespace Tavrin
