#pragma once

#include <string>
#include <vector>

#include "report/Format.h"

namespace Tavrin {

// Pieces that formats share. Those of nothing stand in the places where a format has no piece.

std::string NoEnclosure(const EnclosureReading& enclosure, const ReportContext& context);
std::string NoEndOfSeveral(const std::vector<EnclosureReading>& enclosures,
                           const ReportContext& context);

/// What `part` gives for each part of the reading, in the order of Part.
std::string EachPart(const Reading& reading,
                     std::string (*part)(const Reading& reading, Part part));

}  // namespace Tavrin
