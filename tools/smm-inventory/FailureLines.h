#pragma once

#include <string>

namespace Tavrin {

struct Reading;

/// One line for each way in which queries of the reading failed: which queries, why, and what to
/// try next. One line alone where no query came about; empty where all succeeded.
std::string FailureLines(const Reading& reading);

/// The same, each line with the enclosure's address, and without the last line break.
std::string NamedFailureLines(const Reading& reading);

}  // namespace Tavrin
