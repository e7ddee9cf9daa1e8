#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tools/smm-inventory/Section.h"

namespace Tavrin {

/// Writes the document of one enclosure, as docs/smm-inventory.schema.json describes it. Whatever
/// bytes the SMM gave, the document is ASCII.
void PrintJson(std::ostream& out, const std::string& address, const std::vector<Section>& sections);

}  // namespace Tavrin
