#pragma once

#include <optional>
#include <string>

#include "simulator/EnclosureState.h"

namespace Tavrin::Simulator {

/// The enclosures that can be simulated.
enum class EnclosureKind { FirstGeneration, SecondGeneration253, SecondGeneration254 };

/// The kind as the settings file spells it: "first-generation", "second-generation-253",
/// "second-generation-254".
std::string KindName(EnclosureKind kind);

/// The kind of that name, or nothing when there is none.
std::optional<EnclosureKind> KindFromName(const std::string& name);

/// A healthy enclosure of that kind.
EnclosureState MakeEnclosure(EnclosureKind kind);

}  // namespace Tavrin::Simulator
