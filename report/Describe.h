#pragma once

#include <optional>
#include <vector>

#include "reading/Reading.h"
#include "report/Section.h"

namespace Tavrin {

/// The key of the query that is made before all others, which go by what it gives.
constexpr const char* kGenerationKey = "generation";

/// The section that one part of the reading makes; nothing where the reading has no such part,
/// because nobody asked for it or no query came about. A part that was asked for and failed makes a
/// section that says so.
std::optional<Section> Describe(const Reading& reading, Part part);

/// What every query of the reading gave, in the order of Part, and within a part in that of nodes;
/// empty when no query came about. For what concerns the queries of all parts alike, such as
/// whether one failed.
std::vector<Answer> AllAnswers(const Reading& reading);

}  // namespace Tavrin
