#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/Child.h"

namespace Tavrin {

/// Runs the tool to its end.
Finished RunTool(std::vector<std::string> arguments, std::vector<std::string> environment = {},
                 const std::string& input = {});

/// What the tool is called with to read a simulated SMM there, its password on standard input.
std::vector<std::string> CallArguments(const std::string& address,
                                       const std::vector<std::string>& options);

/// The document that a run with --json printed, after it was found to keep to the schema.
nlohmann::json DocumentOf(const Finished& finished);

}  // namespace Tavrin
