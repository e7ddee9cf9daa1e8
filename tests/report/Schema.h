#pragma once

#include <string>

namespace Tavrin {

/// In which ways the document departs from the tool's JSON schema; empty when it does in none.
std::string SchemaErrors(const std::string& document);

}  // namespace Tavrin
