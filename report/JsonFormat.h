#pragma once

#include "report/Format.h"

namespace Tavrin {

/// For programs: one document, as docs/smm-inventory.schema.json describes it. Whatever
/// bytes the SMM gave, the document is ASCII. A failure that all queries share is told once, at the
/// top; a query that gave nothing has its status alone then. The generation is left aside in this:
/// it is found out before the queries that go by it. Several enclosures are written as by
/// JsonLinesFormat().
Format JsonFormat();

/// The same document on one line an enclosure, as soon as that has ended, whatever became of the
/// others. In front of it stand `host`, with the port, and `index`: the enclosure's position among
/// those that were asked, from 0.
Format JsonLinesFormat();

}  // namespace Tavrin
