#pragma once

#include <string>
#include <vector>

namespace Tavrin {

// JSON as texts, so that only one source includes the parser, which takes long to compile.

/// The JSON text without blanks and with sorted members, so that like documents are like texts.
std::string Normal(const std::string& json);

/// What stands at `pointer` in the document ("" is the whole), as Normal() has it; empty when
/// nothing stands there.
std::string At(const std::string& document, const std::string& pointer);

/// The names of the members of what stands at `pointer`, in order; of a list, the indices.
std::vector<std::string> MembersAt(const std::string& document, const std::string& pointer);

/// The document with `json` at `pointer`, in place of what stood there.
std::string Changed(const std::string& document, const std::string& pointer,
                    const std::string& json);

/// The document without that member of the whole.
std::string Without(const std::string& document, const std::string& member);

/// In which ways each of the documents departs from the tool's JSON schema; empty where it does in
/// none. All in one run of the validator, which takes long to start.
std::vector<std::string> SchemaErrors(const std::vector<std::string>& documents);

}  // namespace Tavrin
