#include "platform/standalone/ipmi_client/SessionKeys.h"

#include <freeipmi/freeipmi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string>

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
