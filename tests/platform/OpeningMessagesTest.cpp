#include "platform/standalone/ipmi_client/OpeningMessages.h"

#include <freeipmi/freeipmi.h>
#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <string>
#include <vector>

namespace Tavrin::Standalone {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// What proves the password, computed elsewhere from the numbers of the handshake below.
struct Proofs {
  std::uint8_t authentication;
  std::uint8_t integrity;
  Bytes ofRakp2;
  Bytes ofRakp3;
  Bytes ofRakp4;
};

const std::vector<Proofs>& EachAlgorithm() {
  static const std::vector<Proofs> each = {
      {IPMI_AUTHENTICATION_ALGORITHM_RAKP_HMAC_SHA1,
       IPMI_INTEGRITY_ALGORITHM_NONE,
       {0x8E, 0xFA, 0x73, 0x62, 0x54, 0x5E, 0x3D, 0x2D, 0xAB, 0x30,
        0xB8, 0xA4, 0xE6, 0x1B, 0xBC, 0x42, 0x25, 0x84, 0xCB, 0x57},
       {0xE4, 0x50, 0xE4, 0x5C, 0xE3, 0x44, 0x0A, 0xD6, 0xC5, 0xE3,
        0x27, 0x51, 0x84, 0x69, 0x72, 0x8B, 0x4B, 0x2B, 0x5F, 0x03},
       {0xD6, 0x69, 0xA9, 0xA9, 0xAA, 0x52, 0xE9, 0x26, 0xB2, 0xFB, 0x04, 0xE3}},
      {IPMI_AUTHENTICATION_ALGORITHM_RAKP_HMAC_MD5,
       IPMI_INTEGRITY_ALGORITHM_NONE,
       {0xE4, 0x0E, 0x17, 0x2B, 0x2E, 0xA9, 0xE7, 0xC2, 0xC2, 0xA9, 0xDE, 0xA8, 0x8B, 0x0E, 0x99,
        0x50},
       {0x83, 0x9E, 0xCC, 0xE1, 0x68, 0x3B, 0x87, 0x74, 0xB6, 0x6F, 0x1B, 0x51, 0x16, 0x98, 0x77,
        0x4A},
       {0x02, 0x5B, 0x9E, 0x59, 0xD5, 0x06, 0xFA, 0x32, 0x61, 0xE3, 0xDE, 0x30, 0xC4, 0xE0, 0x31,
        0xD0}},
      {IPMI_AUTHENTICATION_ALGORITHM_RAKP_HMAC_SHA256,
       IPMI_INTEGRITY_ALGORITHM_HMAC_SHA256_128,
       {0xF9, 0x98, 0xC5, 0x5F, 0xD8, 0x3B, 0x8C, 0xD9, 0x83, 0xC9, 0x03,
        0x95, 0xD6, 0xD2, 0xD8, 0x6C, 0x98, 0x9E, 0x80, 0x94, 0x5B, 0xA5,
        0x5E, 0x90, 0x68, 0xF4, 0x98, 0x53, 0xB7, 0xF7, 0x41, 0x47},
       {0x13, 0x92, 0xF6, 0x5E, 0xF0, 0x2E, 0x65, 0x16, 0xBD, 0x3B, 0xB0,
        0x10, 0xDC, 0x38, 0x7F, 0x5E, 0xA7, 0xAF, 0xA3, 0x67, 0x1A, 0x70,
        0xD6, 0xD8, 0xDC, 0x78, 0x0C, 0x59, 0xDE, 0x87, 0xCA, 0xCE},
       {0x92, 0x3C, 0x68, 0x44, 0xB9, 0xC2, 0x42, 0x1C, 0x0F, 0x2E, 0x5C, 0xD8, 0x0B, 0xB2, 0xF2,
        0x30}}};
  return each;
}

const std::string kUserName = "admin";
const std::string kPassword = "sesame";
constexpr std::uint8_t kTag = 9;
const Bytes kConsolesSession = {0x78, 0x56, 0x34, 0x12};
const Bytes kControllersSession = {0x11, 0x22, 0x33, 0x44};

Bytes Joined(const std::vector<Bytes>& parts) {
  Bytes whole;
  for (const Bytes& part : parts) {
    whole.insert(whole.end(), part.begin(), part.end());
  }
  return whole;
}

Bytes Message(std::uint8_t payloadType, const Bytes& session, const Bytes& rest) {
  const auto length = static_cast<std::uint8_t>(8 + rest.size());
  return Joined({{0x06, 0, 0xFF, 0x07, 0x06, payloadType},
                 Bytes(8),
                 {length, 0, kTag, 0, 0, 0},
                 session,
                 rest});
}

std::array<std::uint8_t, 16> CountingFrom(std::uint8_t first) {
  std::array<std::uint8_t, 16> bytes{};
  std::iota(bytes.begin(), bytes.end(), first);
  return bytes;
}

Bytes BytesOf(const std::array<std::uint8_t, 16>& array) { return {array.begin(), array.end()}; }

class OpeningMessages : public testing::TestWithParam<Proofs> {
 protected:
  static void SetUpTestSuite() { ipmi_rmcpplus_init(); }

  OpeningMessages() : login(kUserName, kPassword) {
    login.privilegeLevel = IPMI_PRIVILEGE_LEVEL_ADMIN;
    login.algorithms.authentication = GetParam().authentication;
    login.algorithms.integrity = GetParam().integrity;
    handshake.remoteConsoleSessionId = 0x12345678;
    handshake.managedSystemSessionId = 0x44332211;
    handshake.remoteConsoleRandomNumber = CountingFrom(0x10);
    handshake.managedSystemRandomNumber = CountingFrom(0x40);
    handshake.managedSystemGuid = CountingFrom(0x70);
  }

  static Bytes Rakp2With(const Bytes& proof) {
    return Message(0x13, kConsolesSession,
                   Joined({BytesOf(CountingFrom(0x40)), BytesOf(CountingFrom(0x70)), proof}));
  }

  Login login;
  Handshake handshake;
};

TEST_P(OpeningMessages, ControllersProofOfThePasswordIsKnown) {
  Handshake before;
  before.remoteConsoleSessionId = handshake.remoteConsoleSessionId;
  before.managedSystemSessionId = handshake.managedSystemSessionId;
  before.remoteConsoleRandomNumber = handshake.remoteConsoleRandomNumber;
  Rakp2 read;
  Bytes proof = GetParam().ofRakp2;
  ASSERT_EQ(ReadRakp2(Rakp2With(proof), kTag, login, before, read), Verdict::Answer);
  EXPECT_TRUE(read.provesPassword);
  EXPECT_EQ(read.managedSystemRandomNumber, handshake.managedSystemRandomNumber);
  EXPECT_EQ(read.managedSystemGuid, handshake.managedSystemGuid);
  proof.back() ^= 0x01U;
  ASSERT_EQ(ReadRakp2(Rakp2With(proof), kTag, login, before, read), Verdict::Answer);
  EXPECT_FALSE(read.provesPassword);
}

TEST_P(OpeningMessages, ControllersProofOfAnotherLengthIsDamage) {
  Rakp2 read;
  Bytes proof = GetParam().ofRakp2;
  proof.push_back(0);
  EXPECT_EQ(ReadRakp2(Rakp2With(proof), kTag, login, handshake, read), Verdict::Damaged);
  proof.resize(proof.size() - 2);
  EXPECT_EQ(ReadRakp2(Rakp2With(proof), kTag, login, handshake, read), Verdict::Damaged);
}

TEST_P(OpeningMessages, OwnProofOfThePasswordIsTheOneExpected) {
  EXPECT_EQ(MakeRakp3(kTag, login, handshake),
            Message(0x14, kControllersSession, GetParam().ofRakp3));
}

TEST_P(OpeningMessages, CheckValueIsTakenOnlyWhereItIsRight) {
  SessionKeys keys;
  ASSERT_TRUE(keys.Compute(login, handshake));
  std::uint8_t status = 0xFF;
  Bytes checkValue = GetParam().ofRakp4;
  const auto read = [&] {
    return ReadRakp4(Message(0x15, kConsolesSession, checkValue), kTag, login, handshake, keys,
                     false, status);
  };
  EXPECT_EQ(read(), Verdict::Answer);
  EXPECT_EQ(status, 0);
  checkValue.back() ^= 0x01U;
  EXPECT_EQ(read(), Verdict::Damaged);
}

INSTANTIATE_TEST_SUITE_P(Algorithms, OpeningMessages, testing::ValuesIn(EachAlgorithm()));

}  // namespace
}  // namespace Tavrin::Standalone
