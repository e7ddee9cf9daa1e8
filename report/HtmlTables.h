#pragma once

#include <string>

#include "reading/Reading.h"

namespace Tavrin {

/// The reading's parts as tables of a page, in the order of Part, each below its title. Below a
/// table stands why a query failed. Empty when no query came about.
std::string HtmlTables(const Reading& reading);

}  // namespace Tavrin
