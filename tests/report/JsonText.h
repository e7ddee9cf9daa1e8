#pragma once

#include <string>
#include <vector>

namespace Tavrin {

/// What stands at `pointer` in the document ("" is the whole), without blanks and with sorted
/// members; empty when nothing stands there.
std::string At(const std::string& document, const std::string& pointer);

/// In which ways each of the documents departs from the tool's JSON schema; empty where it does in
/// none. All in one run of the validator, which takes long to start.
std::vector<std::string> SchemaErrors(const std::vector<std::string>& documents);

}  // namespace Tavrin
