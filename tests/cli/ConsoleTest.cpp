#include "tools/smm-inventory/terminal/Console.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/cli/Terminal.h"

namespace Tavrin {
namespace {

constexpr const char* kErased = "\r\x1b[K";

class ConsoleOnTerminal : public testing::Test {
 protected:
  /// What was written since it was asked last.
  std::string Written() {
    const std::string text = out_.str();
    out_.str("");
    return text;
  }

  Terminal terminal_;
  std::ostringstream out_;
  Console console_{out_, true, terminal_.Descriptor()};
};

TEST_F(ConsoleOnTerminal, StatusKeepsToOneRow) {
  terminal_.Resize(20);
  console_.ShowStatus("0123456789012345678");
  EXPECT_EQ(Written(), "0123456789012345678");
  console_.ShowStatus("01234567890123456789");
  EXPECT_EQ(Written(), std::string(kErased) + "0123456789012345678");
}

TEST_F(ConsoleOnTerminal, WidthIsLookedAtEachTime) {
  terminal_.Resize(5);
  console_.ShowStatus("0123456789");
  EXPECT_EQ(Written(), "0123");
  terminal_.Resize(8);
  console_.ShowLine("a line of any length");
  EXPECT_EQ(Written(), std::string(kErased) + "a line of any length\n0123456");
  terminal_.Resize(1);
  console_.ShowLine("a line");
  EXPECT_EQ(Written(), std::string(kErased) + "a line\n");
}

TEST_F(ConsoleOnTerminal, StatusStaysWholeWhereTheWidthIsNotKnown) {
  const std::string status(200, 'x');
  terminal_.Resize(0);
  console_.ShowStatus(status);
  EXPECT_EQ(Written(), status);
  Console(out_, true).ShowStatus(status);
  EXPECT_EQ(Written(), status);
}

TEST_F(ConsoleOnTerminal, StatusIsAWholeLineWhereTheCursorCannotMove) {
  terminal_.Resize(5);
  Console(out_, false, terminal_.Descriptor()).ShowStatus("0123456789");
  EXPECT_EQ(Written(), "0123456789\n");
}

}  // namespace
}  // namespace Tavrin
