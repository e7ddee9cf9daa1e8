#pragma once

namespace Tavrin {

/// Whether the descriptor is a terminal, and whether that can change what it shows: its cursor
/// moves, and it takes colours.
bool IsTerminal(int descriptor);
bool CanMoveCursor(int descriptor);

}  // namespace Tavrin
