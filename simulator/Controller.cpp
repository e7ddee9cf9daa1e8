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

Controller::Controller(Scenario scenario) : scenario_(std::move(scenario)) {}

Reply Controller::Handle(const Request& request) {
  for (Override& override : scenario_.overrides) {
    if (!Matches(override, request)) {
      continue;
    }
    if (override.times) {
      --*override.times;
    }
    // The enclosure does not see a request whose answer is overridden.
    Answer answer = override.answer   ? *override.answer
                    : override.silent ? Answer{}
                                      : AnswerItself(request);
    return {std::move(answer), override.delay, override.silent};
  }
  return {AnswerItself(request), {}, false};
}

/// The PSU selection is the only command that changes the enclosure.
Answer Controller::AnswerItself(const Request& request) {
  Answer answer = EncodeAnswer(scenario_.enclosure, request);
  if (request.netFn == kNetFnOem && request.command == kSelectPsu &&
      answer.completionCode == CompletionCode::kNormal) {
    scenario_.enclosure.selectedPsu = answer.data.front();
  }
  return answer;
}

}  // namespace Tavrin::Simulator
