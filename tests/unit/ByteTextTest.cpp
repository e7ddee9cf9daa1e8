#include "module/smm/smm_inventory/impl/ByteText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Tavrin {
namespace {

TEST(ByteText, HexIsLowerCaseWithoutPrefixOrLeadingZeros) {
  EXPECT_EQ(Hex(0), "0");
  EXPECT_EQ(Hex(0x0A), "a");
  EXPECT_EQ(Hex(0xFF), "ff");
  EXPECT_EQ(Hex(0xFFFFFFFF), "ffffffff");
}

TEST(ByteText, DottedHexPadsTheSecondHalfAlone) {
  EXPECT_EQ(DottedHex(0x00, 0x00), "0.00");
  EXPECT_EQ(DottedHex(0x0F, 0x0F), "f.0f");
  EXPECT_EQ(DottedHex(0x10, 0x10), "10.10");
  EXPECT_EQ(DottedHex(0xFF, 0xAB), "ff.ab");
}

TEST(ByteText, OnlyTheText0IsReplaced) {
  std::string zero = "0";
  ReplaceZero(zero);
  EXPECT_EQ(zero, "N/A");
  for (const std::string other : {"", "00", "10", "100", "65535", "N/A"}) {
    std::string reading = other;
    ReplaceZero(reading);
    EXPECT_EQ(reading, other);
  }
}

TEST(ByteText, RawRenderingPutsABlankBehindEachByteAsItIs) {
  EXPECT_EQ(RawRendering({'A', 0x00, 0xFF}), std::string("A \0 \xFF ", 6));
  EXPECT_EQ(RawRendering({}), "");
}

TEST(ByteText, HexRenderingPutsABlankBehindEachByte) {
  EXPECT_EQ(HexRendering({0x05, 0x00, 0xFF, 0x10}), "0x5 0x0 0xff 0x10 ");
  EXPECT_EQ(HexRendering({}), "");
}

// They are made for each exchange that is logged.
TEST(ByteText, RenderingsReserveExactlyWhatTheyFill) {
  const std::vector<std::uint8_t> bytes(100, 0xAB);
  const std::string raw = RawRendering(bytes);
  const std::string hex = HexRendering(bytes);
  EXPECT_EQ(raw.capacity(), raw.size());
  EXPECT_EQ(hex.capacity(), hex.size());
}

}  // namespace
}  // namespace Tavrin
