#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "simulator/Message.h"

namespace Tavrin::Simulator {

/// One entry of a scenario file: which requests it holds for, and what happens to them.
struct Override {
  std::uint8_t netFn = kNetFnOem;
  std::uint8_t command = 0;
  std::optional<Bytes> requestData;   ///< Nothing: any request data.
  std::optional<unsigned int> times;  ///< Nothing: without end.
  std::optional<Answer> answer;       ///< Nothing: the enclosure's own answer.
  std::chrono::milliseconds delay{0};
  bool silent = false;
};

using Scenario = std::vector<Override>;

/// A scenario that cannot be used; what() is one sentence that names the source, the place, the
/// value and what was expected.
class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads a scenario from JSON text. `source` names the text in error sentences.
Scenario ParseScenario(const std::string& text, const std::string& source);

}  // namespace Tavrin::Simulator
