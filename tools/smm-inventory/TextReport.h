#pragma once

#include <ostream>

#include "tools/smm-inventory/Section.h"

namespace Tavrin {

/// Writes a section for people, in aligned columns: one line a field, or a table where the records
/// are numbered. Bytes that could drive a terminal are escaped.
void PrintSection(std::ostream& out, const Section& section);

/// Writes, in the place of all sections, that there are none.
void PrintNoSections(std::ostream& out);

}  // namespace Tavrin
