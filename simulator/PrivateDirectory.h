#pragma once

#include <string>

namespace Tavrin::Simulator {

/// A new temporary directory that only this user can read; removed with all it holds when the
/// object is destroyed.
class PrivateDirectory {
 public:
  PrivateDirectory();
  ~PrivateDirectory();
  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;

  [[nodiscard]] const std::string& Path() const { return path_; }

  /// Writes a file of mode 0600 into the directory.
  void Write(const std::string& name, const std::string& content) const;

 private:
  std::string path_;
};

}  // namespace Tavrin::Simulator
