#pragma once

#include <string>
#include <vector>

#include "report/Section.h"

namespace Tavrin {

/// What stands for a value that was not read.
constexpr const char* kNotRead = "not read";

/// A section as people are shown it: texts in rows and columns. Without line breaks and control
/// bytes, which are escaped.
struct Table {
  /// What the columns are called; empty where each row is a field with its name in front.
  std::vector<std::string> heading;

  /// As many texts a row as the heading has, or two; no rows where nothing was read.
  std::vector<std::vector<std::string>> rows;
};

/// The text of one value: "not read" stands for what failed, "-" for what there is not, "(empty)"
/// for an empty text. Bytes that are not printable ASCII, and the backslash, are escaped.
std::string ShownText(const Field& field);

/// A heading and a row a record where the records are numbered, otherwise a row a field.
Table TableOf(const Section& section);

}  // namespace Tavrin
