#include "platform/standalone/ipmi_client/SessionMessages.h"

#include <freeipmi/freeipmi.h>
#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <string>
#include <vector>

#include "platform/standalone/ipmi_client/Packet.h"

namespace Tavrin::Standalone {
namespace {

using Bytes = std::vector<std::uint8_t>;

const std::string kSessionUser = "admin";
const std::string kSessionPassword = "sesame";
constexpr std::uint32_t kSessionId = 0x11223344;

/// A controller at the other end of a session, with the same keys.
class SessionMessages : public testing::TestWithParam<int> {
 protected:
  static void SetUpTestSuite() { ipmi_rmcpplus_init(); }

  SessionMessages() : login(kSessionUser, kSessionPassword) {
    login.privilegeLevel = 4;
    ipmi_cipher_suite_id_to_algorithms(
        static_cast<std::uint8_t>(GetParam()), &login.algorithms.authentication,
        &login.algorithms.integrity, &login.algorithms.confidentiality);
    handshake.remoteConsoleRandomNumber.fill(0x5A);
    handshake.managedSystemRandomNumber.fill(0xA5);
    EXPECT_TRUE(keys.Compute(login, handshake));
  }

  Protection Protect(const Algorithms& algorithms) const {
    return {algorithms, keys, login.password, login.passwordLength};
  }

  /// An answer has the layout of a request, with the completion code as its first byte of data.
  Datagram Answer(const IPMICOMMAND& message) const {
    return MakeRequest({IPMI_PAYLOAD_TYPE_IPMI, kSessionId, 5, message.netFn, 9},
                       Protect(login.algorithms), message);
  }

  Verdict Read(const Datagram& datagram) {
    return ReadAnswer(datagram, Protect(login.algorithms), expected, read);
  }

  /// Whether the code at its end is that of the session's keys, in suites 2 and 3.
  bool HasRightCode(const Datagram& datagram) const {
    constexpr std::size_t codeLength = 12;
    const FiidObject trailer(tmpl_rmcpplus_session_trlr);
    fiid_obj_set_data(trailer.Get(), "authentication_code",
                      datagram.data() + datagram.size() - codeLength, codeLength);
    return ipmi_rmcpplus_check_packet_session_authentication_code(
               login.algorithms.integrity, datagram.data(),
               static_cast<unsigned int>(datagram.size()), keys.Integrity().Data(),
               keys.Integrity().length, login.password, login.passwordLength, trailer.Get()) == 1;
  }

  bool IsProtected() const { return login.algorithms.integrity != 0; }

  Login login;
  Handshake handshake;
  SessionKeys keys;
  ExpectedAnswer expected{kSessionId, 9, 0x32, 0xB0, {}, true};
  IPMICOMMAND answer{0xB0, {0x00, 0x31, 0x51}, 0x33};
  SessionAnswer read;
};

TEST_P(SessionMessages, AnswerIsRead) {
  ASSERT_EQ(Read(Answer(answer)), Verdict::Answer);
  EXPECT_EQ(read.sequenceNumber, 5U);
  EXPECT_EQ(read.completionCode, 0);
  EXPECT_EQ(read.data, (Bytes{0x31, 0x51}));
}

TEST_P(SessionMessages, RefusalWithoutDataIsRead) {
  answer.data = {0xC1};
  ASSERT_EQ(Read(Answer(answer)), Verdict::Answer);
  EXPECT_EQ(read.completionCode, 0xC1);
  EXPECT_EQ(read.data, Bytes());
}

TEST_P(SessionMessages, AnswerWithoutACompletionCodeIsDamaged) {
  answer.data = {};
  EXPECT_EQ(Read(Answer(answer)), Verdict::Damaged);
  expected.checksChecksums = false;
  EXPECT_EQ(Read(Answer(answer)), Verdict::Damaged);
}

TEST_P(SessionMessages, PacketWithoutAnIpmiMessageHasNoPartOfTheOneBefore) {
  ASSERT_EQ(Read(Answer(answer)), Verdict::Answer);
  const Datagram refusedSession = {0x06, 0x00, 0xFF, 0x07, 0x06, 0x11, 0x00, 0x00,
                                   0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x08, 0x00,
                                   0x01, 0x01, 0x00, 0x00, 0x04, 0x03, 0x02, 0x01};
  UnpackedPacket packet(tmpl_rmcpplus_open_session_response);
  ASSERT_TRUE(packet.Unpack(refusedSession, Protect({})));
  EXPECT_EQ(packet.MessageHeader().Number("rq_seq"), std::nullopt);
  EXPECT_EQ(PacketParts::OfThisThread().messageTrailer.Number("checksum2"), std::nullopt);
}

TEST_P(SessionMessages, AnswerIsReadWholeHoweverLong) {
  answer.data.resize(kMostRequestBytes);
  std::iota(answer.data.begin(), answer.data.end(), std::uint8_t{0});
  ASSERT_EQ(Read(Answer(answer)), Verdict::Answer);
  EXPECT_EQ(read.data, Bytes(answer.data.begin() + 1, answer.data.end()));
}

TEST_P(SessionMessages, AnotherCommandOrNetworkFunctionIsForeign) {
  answer.cmd = 0xB1;
  EXPECT_EQ(Read(Answer(answer)), Verdict::Foreign);
  answer.cmd = 0xB0;
  answer.netFn = 0x31;
  EXPECT_EQ(Read(Answer(answer)), Verdict::Foreign);
  answer.netFn = 0x32;
  EXPECT_EQ(Read(Answer(answer)), Verdict::Foreign);
}

TEST_P(SessionMessages, AnotherNumberOrSessionIsForeign) {
  expected.requesterSequenceNumber = 10;
  EXPECT_EQ(Read(Answer(answer)), Verdict::Foreign);
  expected.requesterSequenceNumber = 9;
  expected.remoteConsoleSessionId = kSessionId + 1;
  EXPECT_EQ(Read(Answer(answer)), Verdict::Foreign);
}

TEST_P(SessionMessages, SecondCopyIsForeignWhereTheSessionIsProtected) {
  const Verdict copy = IsProtected() ? Verdict::Foreign : Verdict::Answer;
  for (const std::uint32_t last : {5U, 6U, 0x7FFFFFFFU}) {
    expected.lastSequenceNumber = last;
    EXPECT_EQ(Read(Answer(answer)), copy) << last;
  }
  for (const std::uint32_t last : {4U, 0U, 0xFFFFFFFFU, 0xF0000000U}) {
    expected.lastSequenceNumber = last;
    EXPECT_EQ(Read(Answer(answer)), Verdict::Answer) << last;
  }
}

TEST_P(SessionMessages, AnswerThatIsNotProtectedAsAgreedIsDamaged) {
  for (const int suite : {0, 2, 3}) {
    Login other = login;
    ipmi_cipher_suite_id_to_algorithms(
        static_cast<std::uint8_t>(suite), &other.algorithms.authentication,
        &other.algorithms.integrity, &other.algorithms.confidentiality);
    const bool isSame = other.algorithms.integrity == login.algorithms.integrity &&
                        other.algorithms.confidentiality == login.algorithms.confidentiality;
    SessionKeys otherKeys;
    ASSERT_TRUE(otherKeys.Compute(other, handshake));
    const Datagram datagram =
        MakeRequest({IPMI_PAYLOAD_TYPE_IPMI, kSessionId, 5, 0x33, 9},
                    {other.algorithms, otherKeys, other.password, other.passwordLength}, answer);
    EXPECT_EQ(Read(datagram), isSame ? Verdict::Answer : Verdict::Damaged) << suite;
  }
}

TEST_P(SessionMessages, AnswerThatEndsEarlyIsNotTaken) {
  const Datagram sound = Answer(answer);
  for (std::size_t length = 0; length < sound.size(); ++length) {
    EXPECT_NE(Read(Datagram(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(length))),
              Verdict::Answer)
        << length;
  }
}

TEST_P(SessionMessages, AnswerThatOnlySaysItIsProtectedOtherwiseIsDamaged) {
  constexpr std::size_t payloadTypeAt = 5;
  for (const std::uint8_t bits : Bytes{0x40, 0x80, 0xC0}) {
    Datagram changed = Answer(answer);
    changed[payloadTypeAt] ^= bits;
    EXPECT_EQ(Read(changed), Verdict::Damaged) << int{bits};
  }
}

TEST_P(SessionMessages, WhatIsNoAnswerLeavesTheLastOneAsItWas) {
  ASSERT_EQ(Read(Answer(answer)), Verdict::Answer);
  answer.data = {0xC1, 0x77};
  expected.command = 0xB1;
  EXPECT_EQ(Read(Answer(answer)), Verdict::Foreign);
  EXPECT_EQ(Read({0x01}), Verdict::Damaged);
  EXPECT_EQ(read.sequenceNumber, 5U);
  EXPECT_EQ(read.completionCode, 0);
  EXPECT_EQ(read.data, (Bytes{0x31, 0x51}));
}

TEST_P(SessionMessages, MessageOfIpmi15IsForeign) {
  EXPECT_EQ(Read({0x06, 0x00, 0xFF, 0x07, 0x00, 0x01, 0x00, 0x00, 0x00, 0x44, 0x33, 0x22, 0x11,
                  0x05, 0x81, 0x1C, 0x63, 0x20, 0x24}),
            Verdict::Foreign);
}

TEST_P(SessionMessages, OtherPayloadWithinTheSessionIsForeign) {
  constexpr std::size_t payloadTypeAt = 5;
  Datagram changed = Answer(answer);
  changed[payloadTypeAt] ^= 0x01U;
  EXPECT_EQ(Read(changed), Verdict::Foreign);
}

TEST_P(SessionMessages, RequestIsProtectedWhateverItsSequenceNumber) {
  const Datagram request = MakeRequest({IPMI_PAYLOAD_TYPE_IPMI, kSessionId, 0, 0x32, 9},
                                       Protect(login.algorithms), answer);
  ASSERT_TRUE(ReadHeader(request));
  EXPECT_EQ(ReadHeader(request)->isAuthenticated, IsProtected());
  EXPECT_EQ(ReadHeader(request)->isEncrypted, login.algorithms.confidentiality != 0);
}

TEST_P(SessionMessages, RequestWhoseNumberIsOutOfRangeIsNotMade) {
  const auto make = [this](std::uint8_t number) {
    return MakeRequest({IPMI_PAYLOAD_TYPE_IPMI, kSessionId, 5, 0x32, number},
                       Protect(login.algorithms), answer);
  };
  EXPECT_NE(make(63), Datagram());
  EXPECT_EQ(make(64), Datagram());
}

TEST_P(SessionMessages, ChangedByteIsNotTaken) {
  // Nothing protects what stands before the session's own part, or else before the message.
  const Datagram sound = Answer(answer);
  for (std::size_t at = IsProtected() ? 4 : 16; at < sound.size(); ++at) {
    Datagram changed = sound;
    changed[at] ^= 0x10U;
    EXPECT_NE(Read(changed), Verdict::Answer) << at;
  }
}

using UnprotectedSessionMessages = SessionMessages;

TEST_P(UnprotectedSessionMessages, AnswerWhoseMessageEndsBeforeItsCompletionCodeIsNotTaken) {
  constexpr std::size_t lengthAt = 14;
  constexpr std::size_t payloadAt = 16;
  expected.checksChecksums = false;
  const Datagram sound = Answer(answer);
  for (std::size_t length = 0; length < 8; ++length) {
    Datagram changed(sound.begin(),
                     sound.begin() + static_cast<std::ptrdiff_t>(payloadAt + length));
    changed.at(lengthAt) = static_cast<std::uint8_t>(length);
    EXPECT_EQ(Read(changed), Verdict::Damaged) << length;
  }
}

TEST_P(UnprotectedSessionMessages, WrongChecksumIsTakenOnlyWhereItIsNotChecked) {
  Datagram changed = Answer(answer);
  changed.back() ^= 0x10U;
  EXPECT_EQ(Read(changed), Verdict::Damaged);
  expected.checksChecksums = false;
  EXPECT_EQ(Read(changed), Verdict::Answer);
}

// Recorded, since the client itself makes none such: sound answers in which one byte was changed
// before their code was computed.

using AuthenticatedSessionMessages = SessionMessages;

TEST_P(AuthenticatedSessionMessages, TrailerThatTellsOfMorePadThanThereIsIsDamaged) {
  const Datagram padOfNine = {0x06, 0x00, 0xFF, 0x07, 0x06, 0x40, 0x44, 0x33, 0x22, 0x11,
                              0x05, 0x00, 0x00, 0x00, 0x0A, 0x00, 0x20, 0xCC, 0x14, 0x81,
                              0x24, 0xB0, 0x00, 0x31, 0x51, 0x29, 0x09, 0x07, 0xBD, 0xCB,
                              0xF9, 0x3E, 0x70, 0xCC, 0x4A, 0x7A, 0xDC, 0x00, 0xE2, 0x5D};
  ASSERT_TRUE(HasRightCode(padOfNine));
  EXPECT_EQ(Read(padOfNine), Verdict::Damaged);
}

using EncryptedSessionMessages = SessionMessages;

TEST_P(EncryptedSessionMessages, AnswerThatSaysItIsNotEncryptedIsDamagedThoughItIs) {
  const Datagram saidToBePlain = {0x06, 0x00, 0xFF, 0x07, 0x06, 0x40, 0x44, 0x33, 0x22, 0x11, 0x05,
                                  0x00, 0x00, 0x00, 0x20, 0x00, 0x3D, 0xE9, 0x97, 0x6C, 0xCB, 0xEC,
                                  0x5F, 0x94, 0x51, 0xAC, 0x06, 0xE9, 0x21, 0x7E, 0xB6, 0xD7, 0x20,
                                  0x6C, 0x2B, 0x4E, 0x56, 0xDC, 0xD9, 0x4C, 0xE2, 0x2B, 0xF3, 0xD7,
                                  0xD7, 0x5C, 0xB7, 0xD6, 0xFF, 0xFF, 0x02, 0x07, 0x4F, 0xBC, 0x06,
                                  0x2F, 0xAB, 0x6B, 0xDD, 0x33, 0xDD, 0x7A, 0x8D, 0x7B};
  ASSERT_TRUE(HasRightCode(saidToBePlain));
  EXPECT_EQ(Read(saidToBePlain), Verdict::Damaged);
}

INSTANTIATE_TEST_SUITE_P(CipherSuites, AuthenticatedSessionMessages, testing::Values(2),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(CipherSuites, EncryptedSessionMessages, testing::Values(3),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(CipherSuites, SessionMessages,
                         testing::Values(0, 1, 2, 3, 6, 7, 8, 11, 12, 15, 16, 17),
                         testing::PrintToStringParamName());
INSTANTIATE_TEST_SUITE_P(CipherSuites, UnprotectedSessionMessages, testing::Values(0, 1, 6, 15),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace Tavrin::Standalone
