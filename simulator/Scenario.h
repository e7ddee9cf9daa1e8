#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulator/EnclosureState.h"
#include "simulator/Message.h"

namespace Tavrin::Simulator {

/// One entry of a scenario file: which requests it holds for, and what happens to them.
struct Override {
  std::uint8_t netFn = kNetFnOem;
  std::uint8_t command{};
  std::optional<Bytes> requestData;   ///< Nothing: any request data.
  std::optional<unsigned int> times;  ///< Nothing: without end.
  std::optional<Answer> answer;       ///< Nothing: the enclosure's own answer.
  std::chrono::milliseconds delay{};
  bool silent = false;
};

struct Scenario {
  EnclosureState enclosure;
  std::vector<Override> overrides;
};

/// Reads a scenario from JSON text: what it changes about `enclosure`, and its overrides. `source`
/// names the text in error sentences. Throws ScenarioError.
Scenario ParseScenario(const std::string& text, const std::string& source,
                       EnclosureState enclosure);

}  // namespace Tavrin::Simulator
