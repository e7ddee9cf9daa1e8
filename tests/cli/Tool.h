#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/report/SchemaErrors.h"
#include "tests/support/Child.h"

namespace Tavrin {

/// Port 9 is the discard service, which answers nothing where it runs at all.
constexpr const char* kDeadHost = "127.0.0.1:9";

/// Runs the tool to its end.
inline Finished RunTool(const std::vector<std::string>& arguments,
                        const std::vector<std::string>& environment = {},
                        const std::string& input = {}) {
  return Child(Joined({SMM_INVENTORY}, arguments), environment, input).Wait();
}

/// What the tool is called with to read a simulated SMM there, its password on standard input.
inline std::vector<std::string> CallArguments(const std::string& address,
                                              const std::vector<std::string>& options) {
  return Joined(
      {"-H", address, "-U", "admin", "-W", "open-session-privilege", "--password-file", "-"},
      options);
}

/// How often `piece` stands in the text.
inline int CountOf(const std::string& piece, const std::string& text) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(piece, at)) != std::string::npos; ++at) {
    ++count;
  }
  return count;
}

/// The document that a run with --json printed, after it was found to keep to the schema.
inline nlohmann::json DocumentOf(const Finished& finished) {
  EXPECT_EQ(SchemaErrors({finished.output}).front(), "") << finished.error;
  return nlohmann::json::parse(finished.output);
}

}  // namespace Tavrin
