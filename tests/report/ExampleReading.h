#pragma once

#include <cstddef>
#include <string>

#include "reading/Decode.h"

namespace Tavrin {

/// A pass over an enclosure of platform 254, with four nodes and two PSU slots, each with other
/// numbers. It has answers of each shape, and values absent for each reason that the library's
/// records can give. It need not have every query: what one is called is DescribeTest's.
Reading ExampleReading();

/// The example of which nothing but the generation was read any more.
Reading LostReading();

/// A pass that came to no query.
Reading FailedReading();

/// A pass that selects a PSU.
Reading SelectionReading(const PsuSelection& selection, const QueryOutcome& outcome);

/// The flags of so many PSU slots: the first is present and triggers, no other is or does.
SlotQuery<PsuFlags> ExampleFlags(std::size_t slotCount);

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

}  // namespace Tavrin
