#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tools/smm-inventory/Section.h"

namespace Tavrin {

/// Writes the document of one enclosure, as docs/smm-inventory.schema.json describes it. Whatever
/// bytes the SMM gave, the document is ASCII.
void PrintJson(std::ostream& out, const std::string& address, const std::vector<Section>& sections);

/// Writes the document of an enclosure that could not be asked anything.
void PrintJsonFailure(std::ostream& out, const std::string& address, int status,
                      const Cause& cause);

}  // namespace Tavrin
