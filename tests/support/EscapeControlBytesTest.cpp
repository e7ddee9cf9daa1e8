#include "support/EscapeControlBytes.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdio>

namespace Tavrin {
namespace {

using testing::SizeIs;

TEST(EscapeControlBytes, PrintableAsciiStaysAsItIs) {
  const std::string printable =
      " !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[]^_`"
      "abcdefghijklmnopqrstuvwxyz{|}~";
  ASSERT_THAT(printable, SizeIs(0x7E - 0x20));
  EXPECT_EQ(EscapeControlBytes(printable), printable);
}

TEST(EscapeControlBytes, NamedOnesAndTheBackslashGetTheirLetter) {
  EXPECT_EQ(EscapeControlBytes("\t\n\r\\"), "\\t\\n\\r\\\\");
}

TEST(EscapeControlBytes, EveryOtherByteBecomesTwoHexDigits) {
  struct Range {
    int first;
    int last;
  };
  for (const Range range :
       {Range{0x00, 0x08}, Range{0x0B, 0x0C}, Range{0x0E, 0x1F}, Range{0x7F, 0xFF}}) {
    for (int byte = range.first; byte <= range.last; ++byte) {
      std::array<char, 8> expected{};
      std::snprintf(expected.data(), expected.size(), "\\x%02x", static_cast<unsigned int>(byte));
      EXPECT_EQ(EscapeControlBytes(std::string(1, static_cast<char>(byte))), expected.data());
    }
  }
}

}  // namespace
}  // namespace Tavrin
