#pragma once

#include <string>

namespace Tavrin {
namespace Standalone {

/// Sets a configuration value at run time. It wins over the environment variable of the key's name
/// and takes effect on the next read. A value of the reading thread's own (ThreadConfig.h) wins
/// over both. Any key and any value is taken: what reads a value checks its range, and says in
/// words when it does not hold (the README has keys and ranges). A value cannot be taken back. May
/// be called from any thread.
void SetGlobalConfigValue(const std::string& key, int value);

}  // namespace Standalone
}  // namespace Tavrin
