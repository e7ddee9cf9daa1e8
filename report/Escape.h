#pragma once

#include <string>

namespace Tavrin {

// Nothing says which encoding the SMM's bytes are in, so only printable ASCII gets out as it is.

/// Whether the text is of printable ASCII alone, from blank to tilde. An empty text is.
bool IsPlain(const std::string& text);

/// The text as it is where it is plain; otherwise with every byte that is not printable ASCII, and
/// the backslash, as \n, \r, \t, \\ or \xNN. Plain texts with backslashes are left alone, so that
/// nearly every value is what the SMM sent; whether one was escaped has to be told beside it.
std::string PlainText(const std::string& text);

}  // namespace Tavrin
