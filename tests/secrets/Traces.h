#pragma once

#include <string>
#include <vector>

namespace Tavrin {

/// What `text` tells of a secret of at least eight letters and digits: which parts of eight bytes
/// it holds, and whether as text, in hexadecimal or in base64. Longer parts are made of these.
/// Blanks, separators and prefixes between the bytes hide nothing, nor does the place that a part
/// has in a longer base64 text.
std::vector<std::string> TracesOf(const std::string& secret, const std::string& text);

}  // namespace Tavrin
