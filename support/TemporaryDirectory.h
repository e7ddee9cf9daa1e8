#pragma once

#include <string>

namespace Tavrin {

/// A new directory that only this user can read, where temporary files belong (the environment
/// variable TMPDIR, or /tmp); removed with all it holds when the object is destroyed.
class TemporaryDirectory {
 public:
  /// Its name begins with `prefix`. Throws std::system_error when it cannot be made.
  explicit TemporaryDirectory(const std::string& prefix);
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  [[nodiscard]] const std::string& Path() const { return path_; }

  /// Writes a file of mode 0600 into the directory; what it held before is gone. Throws
  /// std::system_error when it cannot be written.
  void Write(const std::string& name, const std::string& content) const;

 private:
  std::string path_;
};

}  // namespace Tavrin
