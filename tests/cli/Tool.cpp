#include "tests/cli/Tool.h"

#include <gtest/gtest.h>

#include <utility>

#include "tests/report/Schema.h"

namespace Tavrin {

Finished RunTool(std::vector<std::string> arguments, std::vector<std::string> environment,
                 const std::string& input) {
  arguments.insert(arguments.begin(), SMM_INVENTORY);
  return Child(std::move(arguments), std::move(environment), input).Wait();
}

std::vector<std::string> CallArguments(const std::string& address,
                                       const std::vector<std::string>& options) {
  std::vector<std::string> arguments = {
      "-H", address, "-U", "admin", "-W", "open-session-privilege", "--password-file", "-"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return arguments;
}

nlohmann::json DocumentOf(const Finished& finished) {
  EXPECT_EQ(SchemaErrors(finished.output), "") << finished.error;
  return nlohmann::json::parse(finished.output);
}

}  // namespace Tavrin
