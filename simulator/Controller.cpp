#include "simulator/Controller.h"

#include <utility>

#include "simulator/AnswerEncoders.h"

namespace Tavrin::Simulator {
namespace {

bool Matches(const Override& override, const Request& request) {
  return override.netFn == request.netFn && override.command == request.command &&
         override.requestData.value_or(request.data) == request.data &&
         override.times.value_or(1) > 0;
}

}  // namespace

Controller::Controller(Enclosure enclosure, Scenario scenario)
    : enclosure_(std::move(enclosure)), scenario_(std::move(scenario)) {}

Reply Controller::Handle(const Request& request) {
  for (Override& override : scenario_) {
    if (!Matches(override, request)) {
      continue;
    }
    if (override.times) {
      --*override.times;
    }
    // The enclosure does not see a request whose answer is overridden.
    Answer answer = override.answer   ? *override.answer
                    : override.silent ? Answer{}
                                      : EncodeAnswer(enclosure_, request);
    return {std::move(answer), override.delay, override.silent};
  }
  return {EncodeAnswer(enclosure_, request), {}, false};
}

}  // namespace Tavrin::Simulator
