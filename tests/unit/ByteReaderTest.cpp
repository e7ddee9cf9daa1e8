#include "module/smm/smm_inventory/impl/ByteReader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Tavrin {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(ByteReader, BytesComeInOrder) {
  const Bytes answer = {0x11, 0x22, 0x33};
  ByteReader reader(answer);
  EXPECT_EQ(reader.Byte(), 0x11);
  EXPECT_EQ(reader.Byte(), 0x22);
  EXPECT_EQ(reader.Byte(), 0x33);
  EXPECT_FALSE(reader.Failed());
}

TEST(ByteReader, ByteBeyondTheEndYieldsZeroAndFailsForGood) {
  const Bytes answer = {0x11};
  ByteReader reader(answer);
  reader.Skip(1);
  EXPECT_EQ(reader.Byte(), 0);
  EXPECT_TRUE(reader.Failed());
}

TEST(ByteReader, AfterAFailureNothingIsReadAnyMore) {
  const Bytes answer = {'A', 'B', 'C'};
  ByteReader reader(answer);
  reader.Skip(4);
  EXPECT_TRUE(reader.Failed());
  EXPECT_EQ(reader.Byte(), 0);
  EXPECT_EQ(reader.Characters(1), "");
  EXPECT_EQ(reader.PrintableRun(), "");
}

TEST(ByteReader, LittleEndianNumberHasItsLowByteFirst) {
  const Bytes answer = {0x34, 0x12, 0xFF, 0xFF, 0x00, 0x80};
  ByteReader reader(answer);
  EXPECT_EQ(reader.LittleEndian16(), 0x1234);
  EXPECT_EQ(reader.LittleEndian16(), 0xFFFF);
  EXPECT_EQ(reader.LittleEndian16(), 0x8000);
  EXPECT_FALSE(reader.Failed());
}

TEST(ByteReader, LittleEndianNumberOfOneByteYieldsZeroAndFails) {
  const Bytes answer = {0x34};
  ByteReader reader(answer);
  EXPECT_EQ(reader.LittleEndian16(), 0);
  EXPECT_TRUE(reader.Failed());
  EXPECT_EQ(reader.Byte(), 0);
}

TEST(ByteReader, SkippingUpToTheEndIsNoFailure) {
  const Bytes answer = {0x11, 0x22};
  ByteReader reader(answer);
  reader.Skip(2);
  EXPECT_FALSE(reader.Failed());
}

TEST(ByteReader, CharactersAreTakenAsTheyAre) {
  const Bytes answer = {0x00, 0xFF, 'c', 'd'};
  ByteReader reader(answer);
  EXPECT_EQ(reader.Characters(3), std::string("\x00\xFF"
                                              "c",
                                              3));
  EXPECT_EQ(reader.Byte(), 'd');
}

TEST(ByteReader, MoreCharactersThanAreLeftYieldNothing) {
  const Bytes answer = {'a', 'b'};
  ByteReader reader(answer);
  EXPECT_EQ(reader.Characters(3), "");
  EXPECT_TRUE(reader.Failed());
}

TEST(ByteReader, HugeCountIsRefused) {
  const Bytes answer = {'a', 'b'};
  ByteReader reader(answer);
  reader.Skip(1);
  EXPECT_EQ(reader.Characters(SIZE_MAX), "");
  EXPECT_TRUE(reader.Failed());
}

TEST(ByteReader, PrintableRunStopsBeforeTheFirstOtherByte) {
  const Bytes answer = {'a', ' ', '~', 0x7F, 'b'};
  ByteReader reader(answer);
  EXPECT_EQ(reader.PrintableRun(), "a ~");
  EXPECT_EQ(reader.Byte(), 0x7F);
}

TEST(ByteReader, PrintableRunMayReachTheEndOrBeEmpty) {
  const Bytes answer = {'a', 'b'};
  ByteReader reader(answer);
  EXPECT_EQ(reader.PrintableRun(), "ab");
  EXPECT_EQ(reader.PrintableRun(), "");
  EXPECT_FALSE(reader.Failed());
}

TEST(ByteReader, PrintableAreExactlyTheBytesFrom0x20To0x7E) {
  for (unsigned int value = 0; value <= 0xFF; ++value) {
    const Bytes answer = {static_cast<std::uint8_t>(value)};
    const std::size_t expectedLength = (value >= 0x20 && value <= 0x7E) ? 1 : 0;
    EXPECT_EQ(ByteReader(answer).PrintableRun().size(), expectedLength) << "byte " << value;
  }
}

}  // namespace
}  // namespace Tavrin
