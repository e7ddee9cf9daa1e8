#pragma once

#include <string>

namespace Tavrin {

/// A new directory that only this user can read, where temporary files belong (the environment
/// variable TMPDIR, or /tmp); removed with all it holds when the object is destroyed. A process
/// that is killed leaves it behind.
class TemporaryDirectory {
 public:
  /// Its name begins with `prefix`, and ends so that no other has it. Throws std::system_error,
  /// with the system's reason, when it cannot be made.
  explicit TemporaryDirectory(const std::string& prefix);

  /// Removes it. What cannot be removed stays, and is not told of.
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  /// Absolute when TMPDIR is; without a slash at its end.
  [[nodiscard]] const std::string& Path() const { return path_; }

  /// Writes a file into the directory, readable and writable by its owner alone; what a file of
  /// that name held before is gone. Throws std::system_error, with the system's reason, when it
  /// cannot be written.
  void Write(const std::string& name, const std::string& content) const;

 private:
  std::string path_;
};

}  // namespace Tavrin
