#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "reading/Reading.h"
#include "report/EnclosureReading.h"
#include "report/Health.h"

namespace Tavrin {

/// What a report says beside the reading.
struct ReportContext {
  /// Of the program that reports, such as "0.1.0"; not empty.
  std::string toolVersion;

  /// What is left out of the health of a report that shows it.
  std::vector<IgnoredFinding> ignored = {};

  /// Whether what was read is to be judged by formats that show health only when asked to.
  bool isHealthAsked = false;
};

/// When the readings of several enclosures are written down.
enum class Order {
  /// Each as soon as it and all that were asked before it have ended.
  AsAsked,

  /// Each as soon as it has ended.
  AsEnded,

  /// None before the last one has ended.
  AllTogether,
};

/// How the readings of several enclosures are written down: a text before anything is read, one for
/// each enclosure in the order stated, and one at the end, of which each may be empty.
struct FormatOfSeveral {
  Order order;

  std::string_view begin;

  /// For a whole reading, also one that came to no query.
  std::string (*enclosure)(const EnclosureReading& enclosure, const ReportContext& context);

  /// With Order::AllTogether `enclosures` are all of them, in the order in which they are to be
  /// shown; otherwise they are not looked at.
  std::string (*end)(const std::vector<EnclosureReading>& enclosures, const ReportContext& context);
};

/// One way to write readings down. Every piece comes out the same however often it is made.
struct Format {
  /// In lower case, as --format takes it.
  std::string_view name;

  /// One line for the help, without a full stop.
  std::string_view summary;

  /// The reading of one enclosure alone, also one that came to no query.
  std::string (*document)(const EnclosureReading& enclosure, const ReportContext& context);

  FormatOfSeveral several;
};

/// All formats, the tool's default first. Lives as long as the program; may be called on any
/// thread.
const std::vector<Format>& Formats();

/// The format of that name, in exactly that spelling; nullptr when there is none.
const Format* FindFormat(std::string_view name);

}  // namespace Tavrin
