#include "support/FileDescriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "support/Pipe.h"

namespace Tavrin {
namespace {

bool IsOpen(int descriptor) { return fcntl(descriptor, F_GETFD) >= 0; }

int OpenOne() { return open("/dev/null", O_RDONLY | O_CLOEXEC); }

TEST(FileDescriptor, IsClosedWithItsOwner) {
  const int number = OpenOne();
  {
    const FileDescriptor owner(number);
    EXPECT_TRUE(IsOpen(owner.Get()));
  }
  EXPECT_FALSE(IsOpen(number));
}

TEST(FileDescriptor, MovesToAnotherOwner) {
  const int number = OpenOne();
  std::optional<FileDescriptor> first(number);
  const FileDescriptor second(std::move(*first));
  first.reset();
  EXPECT_EQ(second.Get(), number);
  EXPECT_TRUE(IsOpen(number));
}

TEST(FileDescriptor, ClosedEarlyIsNotClosedAgain) {
  const int number = OpenOne();
  std::optional<FileDescriptor> owner(number);
  owner->Close();
  EXPECT_FALSE(IsOpen(number));
  const FileDescriptor next(OpenOne());
  EXPECT_EQ(next.Get(), number);  // The system gives the lowest free number.
  owner.reset();
  EXPECT_TRUE(IsOpen(number));
}

TEST(Pipe, GivesWhatWasWrittenAndThenItsEnd) {
  Pipe pipe = MakePipe();
  EXPECT_EQ(write(pipe.write.Get(), "x", 1), 1);
  pipe.write.Close();
  char byte = 0;
  EXPECT_EQ(read(pipe.read.Get(), &byte, 1), 1);
  EXPECT_EQ(byte, 'x');
  EXPECT_EQ(read(pipe.read.Get(), &byte, 1), 0);
}

TEST(Pipe, IsNotInheritedByPrograms) {
  const Pipe pipe = MakePipe();
  EXPECT_EQ(fcntl(pipe.read.Get(), F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(fcntl(pipe.write.Get(), F_GETFD), FD_CLOEXEC);
}

}  // namespace
}  // namespace Tavrin
