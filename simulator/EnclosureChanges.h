#pragma once

#include "simulator/Enclosure.h"
#include "simulator/ScenarioValue.h"

namespace Tavrin::Simulator {

/// Changes the enclosure as the scenario's object `changes` says. Throws ScenarioError.
void ChangeEnclosure(const ScenarioValue& changes, Enclosure& enclosure);

}  // namespace Tavrin::Simulator
