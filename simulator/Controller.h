#pragma once

#include <chrono>

#include "simulator/Message.h"
#include "simulator/Scenario.h"

namespace Tavrin::Simulator {

/// What becomes of one request.
struct Reply {
  Answer answer;
  std::chrono::milliseconds delay{};
  bool silent{};
};

/// The simulated management controller: an enclosure, and a scenario that may override its answers.
class Controller {
 public:
  explicit Controller(Scenario scenario);

  /// Answers one request. The first override that matches and is not used up decides.
  Reply Handle(const Request& request);

 private:
  Answer AnswerItself(const Request& request);

  Scenario scenario_;
};

}  // namespace Tavrin::Simulator
