#include "tools/smm-inventory/MemoryImage.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <cstdlib>

namespace Tavrin {
namespace {

TEST(MemoryImage, ProcessIsNotDumpableOnceForbidden) {
  const auto forbid = [] {
    ForbidMemoryImages();
    std::_Exit(prctl(PR_GET_DUMPABLE));
  };
  EXPECT_EXIT(forbid(), testing::ExitedWithCode(0), "");
}

TEST(MemoryImage, CoreFilesHaveNoRoomOnceForbidden) {
  const auto forbid = [] {
    ForbidMemoryImages();
    rlimit limit{1, 1};
    getrlimit(RLIMIT_CORE, &limit);
    std::_Exit(static_cast<int>(limit.rlim_cur + limit.rlim_max));
  };
  EXPECT_EXIT(forbid(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Tavrin
