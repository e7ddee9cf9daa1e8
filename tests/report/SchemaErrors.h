#pragma once

#include <string>
#include <vector>

namespace Tavrin {

/// In which ways each of the documents departs from the tool's JSON schema; empty where it does in
/// none. All in one run of the validator, which takes long to start.
std::vector<std::string> SchemaErrors(const std::vector<std::string>& documents);

}  // namespace Tavrin
