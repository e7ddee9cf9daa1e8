#pragma once

#include <string>

#include "support/TemporaryDirectory.h"

namespace Tavrin {

/// A file that only this user can read, in a temporary directory of its own; removed with the
/// object.
class TemporaryFile {
 public:
  /// Throws std::system_error when it cannot be written.
  explicit TemporaryFile(const std::string& content) { directory_.Write(kName, content); }

  [[nodiscard]] std::string Path() const { return directory_.Path() + "/" + kName; }

 private:
  static constexpr const char* kName = "file";

  TemporaryDirectory directory_{"poveixme-"};
};

}  // namespace Tavrin
