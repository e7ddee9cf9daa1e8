#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "reading/Reading.h"

namespace Tavrin {

/// What a report says beside the reading.
struct ReportContext {
  /// Of the program that reports, such as "0.1.0"; not empty.
  std::string toolVersion;
};

/// One way to write a reading down. A pass is written in pieces, of which each may be empty: one
/// before anything is read, one for each part as soon as it is read, and one at the end. Every
/// piece comes out the same however often it is made.
struct Format {
  /// In lower case, as --format takes it.
  std::string_view name;

  /// One line for the help, without a full stop.
  std::string_view summary;

  /// What stands before everything. `address` is that of the reading to come.
  std::string (*begin)(const std::string& address);

  /// What stands for one part. Empty for a part that `soFar` does not have; parts that come later
  /// are not looked at.
  std::string (*part)(const Reading& soFar, Part part);

  /// For a whole reading, also one that came to no query.
  std::string (*end)(const Reading& reading, const ReportContext& context);
};

/// All formats, the tool's default first. Lives as long as the program; may be called on any
/// thread.
const std::vector<Format>& Formats();

/// The format of that name, in exactly that spelling; nullptr when there is none.
const Format* FindFormat(std::string_view name);

}  // namespace Tavrin
