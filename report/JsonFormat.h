#pragma once

#include "report/Format.h"

namespace Tavrin {

/// For programs: one document at the end, as docs/smm-inventory.schema.json describes it. Whatever
/// bytes the SMM gave, the document is ASCII. A failure that all queries share is told once, at the
/// top; a query that gave nothing has its status alone then. The generation is left aside in this:
/// it is found out before the queries that go by it.
Format JsonFormat();

}  // namespace Tavrin
