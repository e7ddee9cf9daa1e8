#pragma once

#include <string>
#include <vector>

#include "report/HealthLines.h"

namespace Tavrin {

/// What a page on several enclosures begins with: how many are how bad, how many have which
/// firmware, and a tile each, by group. In a group the worst come first, as in the order given; and
/// first comes the group with the worst. A tile leads to the enclosure below, see HtmlAnchor().
std::string HtmlWall(const std::vector<JudgedEnclosure>& worstFirst);

/// The name of the place in the page where the enclosure is shown in full.
std::string HtmlAnchor(const EnclosureReading& enclosure);

}  // namespace Tavrin
