#pragma once

#include <optional>
#include <vector>

#include "reading/Reading.h"
#include "report/Section.h"

namespace Tavrin {

/// The failure that all queries of the reading share, so that it has to be told once only; nothing
/// where they differ, or one succeeded. The generation is left aside: it is found out before the
/// queries that go by it. Where no query came about, it is the failure of the reading. `answers`
/// are AllAnswers() of it.
std::optional<QueryOutcome> SharedFailure(const Reading& reading,
                                          const std::vector<Answer>& answers);

}  // namespace Tavrin
