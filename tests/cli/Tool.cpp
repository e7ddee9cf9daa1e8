#include "tests/cli/Tool.h"

#include <utility>

namespace Tavrin {

Finished RunTool(std::vector<std::string> arguments, std::vector<std::string> environment,
                 const std::string& input) {
  arguments.insert(arguments.begin(), SMM_INVENTORY);
  return Child(std::move(arguments), std::move(environment), input).Wait();
}

}  // namespace Tavrin
