#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fleet/Target.h"
#include "report/EnclosureReading.h"

namespace Tavrin {

/// The fields by which enclosures can be grouped, by the keys of the JSON document: those that an
/// enclosure has once, and that are read with its identity.
const std::vector<std::string_view>& GroupFields();

/// One line for each value of that field among the enclosures, the most frequent first:
/// "SGEN3-2.1a  498: rack[01-40]". Enclosures without a value come last, under "not read".
/// Printable. The targets are those that were asked, which the enclosures' indices count.
std::string GroupLines(std::string_view field, const std::vector<EnclosureReading>& enclosures,
                       const std::vector<Target>& targets);

}  // namespace Tavrin
