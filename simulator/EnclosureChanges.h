#pragma once

#include "simulator/EnclosureState.h"
#include "simulator/ScenarioValue.h"

namespace Tavrin::Simulator {

/// Changes the enclosure as the scenario's object `changes` says. Throws ScenarioError.
void ChangeEnclosure(const ScenarioValue& changes, EnclosureState& enclosure);

}  // namespace Tavrin::Simulator
