#pragma once

#include "report/Format.h"

namespace Tavrin {

/// For people: the address, then a section a part, in aligned columns: one
/// line a field, or a table where the records are numbered. "not read" stands for what failed, "-"
/// for what there is not, "(empty)" for an empty text. Bytes that could drive a terminal, and the
/// backslash, are escaped. Why something failed is not said here: that is for standard error.
/// Several enclosures are a block each, in the order in which they were asked.
Format TextFormat();

}  // namespace Tavrin
