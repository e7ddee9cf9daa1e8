#pragma once

#include <string>

namespace Tavrin {

/// The value of the global configuration key, or `defaultValue` when none is set. Asked for anew
/// each time, from any thread, so that a change takes effect at once. The library asks for one key:
/// IPMI_CONNECT_RETRY_TIMES, how often a connection is attempted (3 by default; 0 or less sends
/// nothing).
int GetGlobalConfigValue(const std::string& key, int defaultValue);

}  // namespace Tavrin
