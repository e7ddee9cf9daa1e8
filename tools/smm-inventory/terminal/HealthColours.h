#pragma once

#include <string>
#include <vector>

#include "report/HealthLines.h"

namespace Tavrin {

/// Whether standard output is a terminal that takes colours, and the user has nothing against them
/// (NO_COLOR).
bool HasColours();

/// The lines as they are shown, each with its line break; where colours are wanted the words of
/// faults have one beside them.
std::string HealthOnTerminal(const std::vector<HealthLine>& lines, bool hasColours);

}  // namespace Tavrin
