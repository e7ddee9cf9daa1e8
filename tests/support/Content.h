#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace Tavrin {

/// What the file holds, byte for byte; empty where it cannot be read.
inline std::string ContentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace Tavrin
