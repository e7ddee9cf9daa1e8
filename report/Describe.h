#pragma once

#include <optional>
#include <vector>

#include "reading/Reading.h"
#include "report/Section.h"

namespace Tavrin {

/// The key of the query that is made before all others, which go by what it gives.
constexpr const char* kGenerationKey = "generation";

/// The section that one part of the reading makes; nothing where the reading has no such part.
std::optional<Section> Describe(const Reading& reading, Part part);

/// What every query of the reading gave, in the order of Part; empty when no query came about.
std::vector<Answer> AllAnswers(const Reading& reading);

}  // namespace Tavrin
