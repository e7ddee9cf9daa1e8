#pragma once

#include <chrono>
#include <string>

#include "reading/Reading.h"

namespace Tavrin {

/// Everything that a pass over a healthy second-generation enclosure of platform 254 gives: four
/// nodes, two PSU slots, each with other numbers. Only a selection is not among it.
Reading ExampleReading();

/// A pass that selects a PSU.
Reading SelectionReading(const PsuSelection& selection, const QueryOutcome& outcome);

// Values as a reading has them.

Number ReportedNumber(std::int64_t number);
Text ReportedText(const std::string& text);

template <typename Type>
Value<Type> ReportedState(Type state, const std::string& text) {
  return {state, text, Absence::None};
}

template <typename Type>
Value<Type> AbsentValue(Absence absence, const std::string& text = "") {
  return {std::nullopt, text, absence};
}

/// What the library gives as "N/A".
Number NotReported();

PsuFlags FlagsOf(std::size_t slot, bool flag);

/// The flags of a slot of which the SMM's answer holds none: the texts are the library's.
PsuFlags UntoldFlags(std::size_t slot);

QueryOutcome SucceededOutcome();
QueryOutcome RefusedOutcome();       ///< UnusableAnswer: its answer is empty.
QueryOutcome DisconnectedOutcome();  ///< NotConnected: no answer.

/// What stands in the reports for RefusedOutcome().
constexpr const char* kRefusal =
    "the SMM refused the request or gave an answer of unfit length (its answer is empty)";

template <typename Type>
Query<Type> Good(const Type& value) {
  return {SucceededOutcome(), value};
}

template <typename Type>
Query<Type> Refused(const Type& value = {}) {
  return {RefusedOutcome(), value};
}

template <typename Type>
Query<Type> Disconnected(const Type& value = {}) {
  return {DisconnectedOutcome(), value};
}

/// The example of which nothing but the generation was read any more.
Reading LostReading();

/// A pass that came to no query.
Reading FailedReading();

}  // namespace Tavrin
