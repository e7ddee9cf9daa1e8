#include "simulator/Controller.h"

#include <utility>

#include "simulator/AnswerEncoders.h"

namespace Tavrin::Simulator {
namespace {

bool Matches(const Override& entry, const Request& request) {
  return entry.netFn == request.netFn && entry.command == request.command &&
         entry.requestData.value_or(request.data) == request.data && entry.times != 0U;
}

}  // namespace

Controller::Controller(Scenario scenario) : scenario_(std::move(scenario)) {}

Reply Controller::Handle(const Request& request) {
  for (Override& entry : scenario_.overrides) {
    if (!Matches(entry, request)) {
      continue;
    }
    if (entry.times) {
      --*entry.times;
    }
    // The enclosure does not see a request whose answer is overridden.
    Answer answer = entry.answer ? *entry.answer : entry.silent ? Answer{} : AnswerItself(request);
    return {std::move(answer), entry.delay, entry.silent};
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
