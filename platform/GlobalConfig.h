#pragma once

#include <string>

namespace Tavrin {

/// The value of the global configuration key, or `defaultValue` when none is set.
int GetGlobalConfigValue(const std::string& key, int defaultValue);

}  // namespace Tavrin
