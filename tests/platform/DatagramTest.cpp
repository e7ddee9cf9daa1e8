#include "platform/standalone/ipmi_client/Datagram.h"

#include <gtest/gtest.h>

namespace Tavrin::Standalone {
namespace {

/// A message of IPMI 2.0 with two bytes of payload, encrypted and authenticated.
const Datagram kRmcpPlus = {0x06, 0x00, 0xFF, 0x07, 0x06, 0xD2, 0x11, 0x22, 0x33,
                            0x44, 0x01, 0x00, 0x00, 0x00, 0x02, 0x00, 0x85, 0x99};
/// One of IPMI 1.5 with five.
const Datagram kIpmi15 = {0x06, 0x00, 0xFF, 0x07, 0x00, 0x01, 0x00, 0x00, 0x00, 0x11,
                          0x22, 0x33, 0x44, 0x05, 0x81, 0x1C, 0x63, 0x20, 0x3F};

Datagram With(Datagram datagram, std::size_t at, std::uint8_t value) {
  datagram.at(at) = value;
  return datagram;
}

TEST(DatagramHeader, OfIpmi20SaysWhatStandsThere) {
  const auto header = ReadHeader(kRmcpPlus);
  ASSERT_TRUE(header);
  EXPECT_TRUE(header->isRmcpPlus);
  EXPECT_EQ(header->payloadType, 0x12);
  EXPECT_TRUE(header->isEncrypted);
  EXPECT_TRUE(header->isAuthenticated);
  EXPECT_EQ(header->sessionId, 0x44332211U);
  EXPECT_EQ(header->number, 0x85);
}

TEST(DatagramHeader, OfIpmi20TellsEncryptionFromAuthentication) {
  constexpr std::size_t payloadTypeAt = 5;
  const auto encrypted = ReadHeader(With(kRmcpPlus, payloadTypeAt, 0x80));
  EXPECT_TRUE(encrypted->isEncrypted);
  EXPECT_FALSE(encrypted->isAuthenticated);
  const auto authenticated = ReadHeader(With(kRmcpPlus, payloadTypeAt, 0x40));
  EXPECT_FALSE(authenticated->isEncrypted);
  EXPECT_TRUE(authenticated->isAuthenticated);
  EXPECT_EQ(authenticated->payloadType, 0);
}

TEST(DatagramHeader, OfIpmi15HasNoProtection) {
  const auto header = ReadHeader(kIpmi15);
  ASSERT_TRUE(header);
  EXPECT_FALSE(header->isRmcpPlus);
  EXPECT_EQ(header->payloadType, 0);
  EXPECT_FALSE(header->isEncrypted);
  EXPECT_FALSE(header->isAuthenticated);
  EXPECT_EQ(header->sessionId, 0x44332211U);
  EXPECT_EQ(header->number, 0x0F);
}

TEST(DatagramHeader, IsNotReadOfADatagramThatEndsEarly) {
  for (const Datagram& datagram : {kRmcpPlus, kIpmi15}) {
    for (std::size_t length = 0; length < datagram.size(); ++length) {
      const Datagram cut(datagram.begin(), datagram.begin() + static_cast<std::ptrdiff_t>(length));
      EXPECT_FALSE(ReadHeader(cut)) << length;
    }
  }
}

TEST(DatagramHeader, IsNotReadWhereTheMessageEndsBehindTheDatagram) {
  EXPECT_FALSE(ReadHeader(With(kRmcpPlus, 14, 3)));
  EXPECT_FALSE(ReadHeader(With(kRmcpPlus, 15, 1)));
  EXPECT_FALSE(ReadHeader(With(kIpmi15, 13, 6)));
  // Of neither is less asked for than the byte with the number.
  EXPECT_TRUE(ReadHeader(With(kRmcpPlus, 14, 1)));
  EXPECT_TRUE(ReadHeader(With(kIpmi15, 13, 0)));
  EXPECT_FALSE(ReadHeader({0x06, 0x00, 0xFF, 0x07, 0x06, 0x12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_FALSE(
      ReadHeader({0x06, 0x00, 0xFF, 0x07, 0x00, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x81, 0, 0, 0}));
}

TEST(DatagramHeader, IsReadOfIpmiMessagesAlone) {
  EXPECT_FALSE(ReadHeader(With(kRmcpPlus, 0, 0x05)));
  EXPECT_FALSE(ReadHeader(With(kRmcpPlus, 3, 0x06)));
  EXPECT_FALSE(ReadHeader(With(kRmcpPlus, 4, 0x01)));
}

}  // namespace
}  // namespace Tavrin::Standalone
