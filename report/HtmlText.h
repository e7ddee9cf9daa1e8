#pragma once

#include <string>

#include "report/HealthRules.h"

namespace Tavrin {

// Pieces of a page that is well-formed as XML, too, and made of printable ASCII alone.

/// A text as the content of an element or of an attribute in quotes. Bytes that are not printable
/// ASCII, and the backslash, are escaped as on a terminal (\n, \r, \t, \\, \xNN), since nothing
/// says which encoding an SMM's bytes are in; then what HTML would take for its own.
std::string HtmlText(const std::string& text);

/// The same for a text whose bytes are escaped already.
std::string HtmlShown(const std::string& text);

/// The class of elements that are of that severity: "critical", "warning" or "unknown"; "ok" for
/// what is well, which has no colour.
std::string HtmlClass(Severity severity);

/// A mark and a word, such as "! WARNING", so that nothing is told by colour alone.
std::string HtmlMark(Severity severity);

/// `open`, the content and the end of the element that it opens, on a line. `open` is a tag without
/// its brackets, such as R"(p class="why")".
std::string HtmlElement(const std::string& open, const std::string& content);

}  // namespace Tavrin
