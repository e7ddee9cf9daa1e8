#pragma once

#include <string>

namespace Tavrin {

/// Whether the text is of printable ASCII alone.
bool IsPlain(const std::string& text);

/// The text as it is where it is plain; otherwise with every byte that is not printable ASCII, and
/// the backslash, as \n, \r, \t, \\ or \xNN. Nothing says which encoding the SMM's bytes are in.
std::string PlainText(const std::string& text);

}  // namespace Tavrin
