#include "reading/EnclosureSettings.h"

#include <gtest/gtest.h>

#include <array>
#include <new>
#include <string_view>

#include "reading/Wiping.h"

namespace Tavrin {
namespace {

TEST(EnclosureSettings, WipedTextIsEmptyAndItsRoomIsZero) {
  std::string text = "a password of many bytes";
  text.resize(4);
  const char* const bytes = text.data();
  const std::size_t room = text.capacity();
  WipeText(text);
  EXPECT_EQ(text, "");
  EXPECT_EQ(std::string(bytes, room), std::string(room, '\0'));
}

TEST(EnclosureSettings, TextIsWipedAtTheEndOfTheScope) {
  std::string text = "sesame";
  {
    const WipedAtEnd wiped(text);
    EXPECT_EQ(text, "sesame");
  }
  EXPECT_EQ(text, "");
}

TEST(EnclosureSettings, PasswordIsWipedWithThem) {
  // Short enough to stand within the text itself, whose room is still there afterwards.
  constexpr std::string_view kPassword = "sesame";
  alignas(EnclosureSettings) std::array<char, sizeof(EnclosureSettings)> room{};
  auto* const settings = new (room.data()) EnclosureSettings();
  settings->password = kPassword;
  EXPECT_NE(std::string_view(room.data(), room.size()).find(kPassword), std::string_view::npos);
  settings->~EnclosureSettings();
  EXPECT_EQ(std::string_view(room.data(), room.size()).find(kPassword), std::string_view::npos);
}

TEST(EnclosureSettings, PortIsThatOfIpmiAndNothingElseIsSet) {
  const EnclosureSettings settings;
  EXPECT_EQ(settings.port, 623);
  EXPECT_EQ(settings.cipherSuite, std::nullopt);
}

}  // namespace
}  // namespace Tavrin
