#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "support/TemporaryFile.h"

namespace Tavrin {
namespace {

namespace fs = std::filesystem;

TEST(TemporaryDirectory, IsItsUsersAloneAndBearsItsName) {
  const TemporaryDirectory directory("test-");
  EXPECT_EQ(fs::status(directory.Path()).permissions(), fs::perms::owner_all);
  EXPECT_THAT(fs::path(directory.Path()).filename(), testing::StartsWith("test-"));
  EXPECT_EQ(fs::path(directory.Path()).parent_path(), fs::temp_directory_path());
}

TEST(TemporaryDirectory, ThatCannotBeMadeIsAnError) {
  EXPECT_THROW(TemporaryDirectory("none/test-"), std::system_error);
}

TEST(TemporaryDirectory, FileHoldsWhatWasWrittenLast) {
  const TemporaryDirectory directory("test-");
  directory.Write("file", "a longer content");
  directory.Write("file", std::string("con\0tent", 8));
  std::ifstream file(directory.Path() + "/file", std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), std::string("con\0tent", 8));
}

TEST(TemporaryDirectory, FileIsItsUsersAlone) {
  const TemporaryDirectory directory("test-");
  directory.Write("file", "content");
  EXPECT_EQ(fs::status(directory.Path() + "/file").permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST(TemporaryDirectory, FileThatCannotBeOpenedOrWrittenIsAnError) {
  const TemporaryDirectory directory("test-");
  fs::create_symlink("/dev/full", directory.Path() + "/full");
  EXPECT_THROW(directory.Write("none/file", "content"), std::system_error);
  EXPECT_THROW(directory.Write("full", "content"), std::system_error);
}

TEST(TemporaryDirectory, IsRemovedWithAllItHolds) {
  std::string path;
  {
    const TemporaryDirectory directory("test-");
    path = directory.Path();
    fs::create_directory(path + "/folder");
    directory.Write("folder/file", "content");
  }
  EXPECT_FALSE(fs::exists(path));
}

TEST(TemporaryFile, HoldsItsContentUntilItIsRemovedWithAll) {
  fs::path path;
  {
    const TemporaryFile file("content");
    path = file.Path();
    std::ifstream stream(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), "content");
  }
  EXPECT_FALSE(fs::exists(path.parent_path()));
}

}  // namespace
}  // namespace Tavrin
