#pragma once

#include "report/Format.h"

namespace Tavrin {

/// For programs: one document, as docs/smm-inventory.schema.json describes it. Whatever bytes the
/// SMM gave, the document is ASCII.
Format JsonFormat();

}  // namespace Tavrin
