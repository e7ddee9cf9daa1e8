#include "reading/EnclosureSettings.h"

#include <gtest/gtest.h>

#include "reading/Wiping.h"

namespace Tavrin {
namespace {

TEST(EnclosureSettings, AddressPutsAnIpv6AddressInBrackets) {
  EXPECT_EQ(AddressText("192.0.2.10", 623), "192.0.2.10:623");
  EXPECT_EQ(AddressText("smm.example", 6230), "smm.example:6230");
  EXPECT_EQ(AddressText("2001:db8::1", 623), "[2001:db8::1]:623");
}

TEST(EnclosureSettings, WipedTextIsEmptyAndItsRoomIsZero) {
  std::string text = "a password of many bytes";
  text.resize(4);
  const char* const bytes = text.data();
  const std::size_t room = text.capacity();
  WipeText(text);
  EXPECT_EQ(text, "");
  EXPECT_EQ(std::string(bytes, room), std::string(room, '\0'));
}

}  // namespace
}  // namespace Tavrin
