#include "platform/standalone/ipmi_client/SessionKeys.h"

#include <freeipmi/freeipmi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace Tavrin::Standalone {
namespace {

TEST(SessionKeys, AreWipedAtTheirEnd) {
  ipmi_rmcpplus_init();
  const std::string text = "sesame";
  Login login(text, text);
  login.privilegeLevel = 4;
  login.algorithms = {IPMI_AUTHENTICATION_ALGORITHM_RAKP_HMAC_SHA1,
                      IPMI_INTEGRITY_ALGORITHM_HMAC_SHA1_96,
                      IPMI_CONFIDENTIALITY_ALGORITHM_AES_CBC_128};
  alignas(SessionKeys) std::array<unsigned char, sizeof(SessionKeys)> memory{};
  auto* const keys = new (memory.data()) SessionKeys();
  ASSERT_TRUE(keys->Compute(login, Handshake()));
  const SessionKeys::Key integrity = keys->Integrity();
  const auto holdsKey = [&] {
    return std::search(memory.begin(), memory.end(), integrity.bytes.begin(),
                       integrity.bytes.begin() + integrity.length) != memory.end();
  };
  EXPECT_EQ(integrity.length, 20U);
  EXPECT_TRUE(holdsKey());
  keys->~SessionKeys();
  EXPECT_FALSE(holdsKey());
  EXPECT_LT(
      std::count_if(memory.begin(), memory.end(), [](unsigned char byte) { return byte != 0; }),
      4);  // The lengths.
}

/// The bytes that count of a key.
std::vector<std::uint8_t> Value(const SessionKeys::Key& key) {
  return {key.bytes.begin(), key.bytes.begin() + key.length};
}

/// Of the last key the cipher takes the first 16 bytes.
TEST(SessionKeys, AreThoseThatAnotherImplementationComputes) {
  ASSERT_EQ(ipmi_rmcpplus_init(), 0);
  const std::string userName = "admin";
  const std::string password = "sesame";
  Login login(userName, password);
  login.privilegeLevel = 4;
  login.algorithms = {IPMI_AUTHENTICATION_ALGORITHM_RAKP_HMAC_SHA1,
                      IPMI_INTEGRITY_ALGORITHM_HMAC_SHA1_96,
                      IPMI_CONFIDENTIALITY_ALGORITHM_AES_CBC_128};
  Handshake handshake;
  handshake.remoteConsoleRandomNumber.fill(0x5A);
  handshake.managedSystemRandomNumber.fill(0xA5);
  SessionKeys keys;
  ASSERT_TRUE(keys.Compute(login, handshake));
  EXPECT_EQ(
      Value(keys.SessionIntegrity()),
      (std::vector<std::uint8_t>{0xB0, 0x7E, 0x3F, 0x63, 0x0D, 0x7C, 0x35, 0xB2, 0xEA, 0x33,
                                 0x3E, 0xEC, 0x23, 0x02, 0xA7, 0x61, 0xDB, 0x33, 0xCA, 0xFC}));
  EXPECT_EQ(
      Value(keys.Integrity()),
      (std::vector<std::uint8_t>{0x6E, 0x26, 0xE1, 0x55, 0x25, 0x97, 0x40, 0x85, 0x11, 0xAB,
                                 0xCD, 0xAF, 0x77, 0xE5, 0xA4, 0x3D, 0x6E, 0xA0, 0x49, 0x90}));
  EXPECT_EQ(
      Value(keys.Confidentiality()),
      (std::vector<std::uint8_t>{0x83, 0x7A, 0x15, 0x20, 0xC2, 0x47, 0x58, 0x8B, 0x37, 0x5C,
                                 0xCE, 0xE8, 0x55, 0x66, 0x4F, 0x21, 0x48, 0x87, 0xF8, 0x61}));
}

TEST(SessionKeys, KeyThatTheSuiteDoesNotHaveIsNull) {
  SessionKeys::Key key;
  EXPECT_EQ(key.Data(), nullptr);
  key.length = 1;
  EXPECT_EQ(key.Data(), key.bytes.data());
}

TEST(Handshake, NumbersAreDrawnAnewEachTime) {
  Handshake first;
  Handshake second;
  ASSERT_TRUE(DrawNumbers(first));
  ASSERT_TRUE(DrawNumbers(second));
  EXPECT_NE(first.remoteConsoleSessionId, 0U);
  EXPECT_NE(first.remoteConsoleSessionId, second.remoteConsoleSessionId);
  EXPECT_NE(first.remoteConsoleRandomNumber, second.remoteConsoleRandomNumber);
}

}  // namespace
}  // namespace Tavrin::Standalone
