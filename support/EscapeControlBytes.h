#pragma once

#include <string>

namespace Tavrin {

/// The text with every byte outside printable ASCII, and the backslash, written as an escape
/// sequence (\n, \r, \t, \\, \xNN), so that nothing that a controller sent, or that a user's
/// environment holds, can drive a terminal or forge a line. What it gives tells every text from
/// every other.
std::string EscapeControlBytes(const std::string& text);

}  // namespace Tavrin
