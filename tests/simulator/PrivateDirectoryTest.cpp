#include "simulator/PrivateDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace Tavrin::Simulator {
namespace {

namespace fs = std::filesystem;

TEST(PrivateDirectory, FileHoldsWhatWasWrittenLast) {
  const PrivateDirectory directory;
  directory.Write("file", "a longer content");
  directory.Write("file", std::string("con\0tent", 8));
  std::ifstream file(directory.Path() + "/file", std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), std::string("con\0tent", 8));
}

TEST(PrivateDirectory, FileThatCannotBeOpenedOrWrittenIsAnError) {
  const PrivateDirectory directory;
  fs::create_symlink("/dev/full", directory.Path() + "/full");
  EXPECT_THROW(directory.Write("none/file", "content"), std::system_error);
  EXPECT_THROW(directory.Write("full", "content"), std::system_error);
}

TEST(PrivateDirectory, IsRemovedWithAllItHolds) {
  std::string path;
  {
    const PrivateDirectory directory;
    path = directory.Path();
    fs::create_directory(path + "/folder");
    directory.Write("folder/file", "content");
  }
  EXPECT_FALSE(fs::exists(path));
}

}  // namespace
}  // namespace Tavrin::Simulator
