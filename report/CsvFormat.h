#pragma once

#include "report/Format.h"

namespace Tavrin {

/// For spreadsheets and scripts: RFC 4180 with a header line, one row a value. Whatever bytes the
/// SMM gave, the rows are printable ASCII. A text that begins like a formula stays as it is, since
/// programs compare it; who opens the file in a spreadsheet has to import the columns as texts.
Format CsvFormat();

}  // namespace Tavrin
