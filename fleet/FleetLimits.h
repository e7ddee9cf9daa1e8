#pragma once

#include <cstddef>

namespace Tavrin {

/// How many files, sockets included, one enclosure has open at most while it is read: those of the
/// client, and what a name server is asked with.
constexpr std::size_t kDescriptorsOfEnclosure = 4;

/// What is known of this process's open files.
struct DescriptorLimit {
  /// Files that it may have open, after it was raised as far as needed and possible.
  std::size_t limit = 0;

  /// What it would have to be for all enclosures that were asked for.
  std::size_t needed = 0;

  /// How many enclosures can be read at once within it, at most as many as asked for.
  std::size_t enclosures = 0;
};

/// Makes room for so many enclosures beside the files that are open now and a few more, by raising
/// the soft limit (RLIMIT_NOFILE) to what is needed, or to the hard limit where that is less. Never
/// lowers it. Enclosures that are being read already by somebody else are counted by the files that
/// they have open now.
DescriptorLimit MakeRoomForDescriptors(std::size_t enclosures);

}  // namespace Tavrin
