#pragma once

#include "tools/smm-inventory/terminal/Console.h"

namespace Tavrin {

struct Options;

/// Whether standard error is a terminal, and whether a status there can change in place.
bool IsTerminal();
bool CanMoveCursor();

/// Complains of what is malformed about the logger's own environment variable, as of all of the
/// environment, and with -v says which defaults the environment replaces.
void CheckEnvironment(const Options& options, Console& console);

}  // namespace Tavrin
