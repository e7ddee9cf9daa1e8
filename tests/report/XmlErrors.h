#pragma once

#include <string>

namespace Tavrin {

/// What keeps the document from being well-formed XML, as an independent parser says it; empty for
/// one that is. Nothing outside the document is looked at.
std::string XmlErrors(const std::string& document);

}  // namespace Tavrin
