#pragma once

#include "tools/smm-inventory/terminal/Console.h"

namespace Tavrin {

struct Options;

/// Complains of what is malformed about the logger's own environment variable, as of all of the
/// environment, and with -v says which defaults the environment replaces.
void CheckEnvironment(const Options& options, Console& console);

}  // namespace Tavrin
