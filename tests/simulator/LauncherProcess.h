#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "support/TemporaryDirectory.h"
#include "tests/support/Child.h"

namespace Tavrin::Simulator {

/// A launcher with a temporary directory of its own, so that what it leaves there shows. The
/// directory is a base, too, because it has to be there before the process is.
class LauncherProcess : private TemporaryDirectory, public Child {
 public:
  explicit LauncherProcess(const std::vector<std::string>& arguments,
                           const std::string& path = "/usr/bin:/bin");

  /// How many entries its temporary directory has.
  std::size_t FilesLeft() const;

  const std::string& Directory() const { return Path(); }
};

}  // namespace Tavrin::Simulator
