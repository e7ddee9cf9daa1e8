#pragma once

#include "report/Format.h"

namespace Tavrin {

/// For people: aligned columns, one line a field, or a table where the records are numbered. Bytes
/// that could drive a terminal are escaped.
Format TextFormat();

}  // namespace Tavrin
