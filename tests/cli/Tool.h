#pragma once

#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"

namespace Tavrin {

/// Runs the tool to its end.
Finished RunTool(std::vector<std::string> arguments, std::vector<std::string> environment = {},
                 const std::string& input = {});

}  // namespace Tavrin
