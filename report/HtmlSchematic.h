#pragma once

#include <string>
#include <vector>

#include "report/Health.h"

namespace Tavrin {

/// A drawing of the enclosure, as SVG within a page: the nodes in two columns, of which one of full
/// width takes both, and the PSUs in a row. They are drawn in the order of their numbers, since the
/// SMM states no positions, which stands below. Whoever points at a node or PSU gets all that was
/// read of it. Empty where neither nodes nor PSUs were read.
std::string HtmlSchematic(const Reading& reading, const std::vector<Finding>& findings);

}  // namespace Tavrin
