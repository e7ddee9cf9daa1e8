#pragma once

#include "report/Format.h"

namespace Tavrin {

/// For spreadsheets and scripts: RFC 4180 with a header line, then the rows of each part, one row
/// a value. A value that is not there has a reason in its place, so that a query
/// that failed has one in each of its rows; it has one row without a field where its slots could
/// not be counted. A pass that came to no query is one row. Whatever bytes the SMM gave, the rows
/// are printable ASCII: a text with others is escaped as in the JSON document. A text that begins
/// like a formula stays as it is, since programs compare it; who opens the file in a spreadsheet
/// has to import the columns as texts. Several enclosures have one header and their rows in the
/// order in which they were asked, so that two runs can be compared.
Format CsvFormat();

}  // namespace Tavrin
