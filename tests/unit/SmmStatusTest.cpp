#include "module/smm/smm_inventory/impl/SmmStatus.h"

#include <gtest/gtest.h>

#include "tests/unit/PlatformTest.h"

namespace Tavrin {
namespace {

using Double::StatusAnswer;

TEST(SmmStatusDecoder, TakesByte0AndByte13) {
  const SmmStatusAnswer answer = DecodeSmmStatus(StatusAnswer(0xFD, 0x03));
  EXPECT_EQ(answer.platformId, 0xFD);
  EXPECT_EQ(answer.enclosureType, 0x03);
}

TEST(SmmStatusDecoder, Byte13DecidesThePsuSlotsOfPlatform253) {
  for (unsigned int type = 0; type <= 0xFF; ++type) {
    const SMMStatus status = ToSmmStatus({0xFD, static_cast<std::uint8_t>(type)});
    EXPECT_EQ(status.platformId, 253) << "byte 13 " << type;
    EXPECT_EQ(status.psuSlotCount, type == 0x03 ? 9 : 6) << "byte 13 " << type;
  }
}

TEST(SmmStatusDecoder, EveryOtherByte0StandsForPlatform254WithTwoSlots) {
  for (unsigned int byte0 = 0; byte0 <= 0xFF; ++byte0) {
    const SMMStatus status = ToSmmStatus({static_cast<std::uint8_t>(byte0), 0x03});
    EXPECT_EQ(status.platformId, byte0 == 0xFD ? 253 : 254) << "byte 0 " << byte0;
    EXPECT_EQ(status.psuSlotCount, byte0 == 0xFD ? 9 : 2) << "byte 0 " << byte0;
  }
}

TEST(SmmStatusDecoder, EgsIsPlatform253WithByte13Of4) {
  EXPECT_TRUE(IsEgs({0xFD, 0x04}));
  EXPECT_FALSE(IsEgs({0xFD, 0x03}));
  EXPECT_FALSE(IsEgs({0xFE, 0x04}));
}

TEST(SmmStatusDecoder, Platform253HasTwelveNodesAndEveryOtherFour) {
  EXPECT_EQ(NodeCountOf(253), 12U);
  EXPECT_EQ(NodeCountOf(254), 4U);
  EXPECT_EQ(NodeCountOf(0), 4U);
}

}  // namespace
}  // namespace Tavrin
