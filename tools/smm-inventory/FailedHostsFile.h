#pragma once

#include <string>

namespace Tavrin {

struct Options;

/// Throws UsageError where the file of --failed-to, if one is given, cannot be written, or is one
/// that the run reads. Leaves what is in it until there is something to put in its place; one that
/// is not there comes to be, empty.
void RequireFailedHostsFile(const Options& options);

/// Replaces what is in the file. Throws UsageError when that fails.
void WriteFailedHostsFile(const std::string& path, const std::string& lines);

}  // namespace Tavrin
