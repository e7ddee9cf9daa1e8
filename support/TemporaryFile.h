#pragma once

#include <string>

#include "support/TemporaryDirectory.h"

namespace Tavrin {

/// A file that only this user can read and write, in a temporary directory of its own; removed with
/// the object, also while an exception passes. Programs that are started find it under its path,
/// for a password, say, which must not be among their arguments. A process that is killed leaves it
/// behind.
class TemporaryFile {
 public:
  /// Writes the content, byte for byte, and closes the file. Throws std::system_error, with the
  /// system's reason, when it cannot be written; then nothing is left behind.
  explicit TemporaryFile(const std::string& content) { directory_.Write(kName, content); }

  /// Good for as long as the object lives; as absolute as the directory's.
  [[nodiscard]] std::string Path() const { return directory_.Path() + "/" + kName; }

 private:
  static constexpr const char* kName = "file";

  TemporaryDirectory directory_{"poveixme-"};
};

}  // namespace Tavrin
