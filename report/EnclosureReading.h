#pragma once

#include <cstddef>
#include <string>

#include "reading/Reading.h"

namespace Tavrin {

/// One enclosure's reading among those of several, with what the reading itself does not know. A
/// plain value, which may be copied and looked at on any thread.
struct EnclosureReading {
  Reading reading;

  /// Its position among those that were asked, counted from 0; no two have the same.
  std::size_t index = 0;

  /// What people call it, as they wrote it, such as "rack07"; empty for the reading's address. Any
  /// byte may occur.
  std::string name;

  /// What it is shown under together with others; may be empty. Any byte may occur.
  std::string group;
};

/// What to call the enclosure, for people: its name or, without one, the address of the reading.
/// Printable: every byte that is not printable ASCII, and the backslash, is escaped.
std::string ShownName(const EnclosureReading& enclosure);

}  // namespace Tavrin
