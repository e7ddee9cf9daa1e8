#include "simulator/AnswerEncoders.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Tavrin::Simulator {
namespace {

constexpr EnclosureKind kFirst = EnclosureKind::FirstGeneration;
constexpr EnclosureKind kSecond253 = EnclosureKind::SecondGeneration253;
constexpr EnclosureKind kSecond254 = EnclosureKind::SecondGeneration254;

Answer Ask(EnclosureKind kind, std::uint8_t command, const Bytes& data) {
  return EncodeAnswer(MakeEnclosure(kind), {kNetFnOem, command, data});
}

/// The bytes of the text, a 0x00 for each '~'.
Bytes Text(const std::string& text) {
  Bytes bytes(text.begin(), text.end());
  for (std::uint8_t& byte : bytes) {
    byte = byte == '~' ? 0 : byte;
  }
  return bytes;
}

TEST(StatusAnswer, FirstGenerationBeginsWithTheRevision) {
  const Answer answer = Ask(kFirst, 0xA8, {});
  EXPECT_EQ(answer.completionCode, 0x00);
  EXPECT_EQ(answer.data,
            (Bytes{0x01, 0x05, 0xA1, 0xA2, 0xA3, 'F', 'G', 'E', 'N', '7', 0, 0, 0, 0, 0, 0}));
}

TEST(StatusAnswer, Platform253HasPlatformIdInFrontAndTypeOfNineSlotsAtByte13) {
  const Answer answer = Ask(kSecond253, 0xA8, {});
  EXPECT_EQ(answer.completionCode, 0x00);
  EXPECT_EQ(answer.data,
            (Bytes{0xFD, 0x02, 0x1A, 0xB1, 0xB2, 0xB3, 'S', 'G', 'E', 'N', '3', 0, 0, 0x03, 0, 0}));
}

TEST(StatusAnswer, Platform254HasPlatformIdInFront) {
  const Answer answer = Ask(kSecond254, 0xA8, {});
  EXPECT_EQ(answer.completionCode, 0x00);
  EXPECT_EQ(answer.data,
            (Bytes{0xFE, 0x10, 0x0F, 0xC1, 0xC2, 0xC3, 'S', 'G', 'E', 'N', '4', 0, 0, 0x01, 0, 0}));
}

TEST(StatusAnswer, RequestDataGetsInvalidLength) {
  const Answer answer = Ask(kFirst, 0xA8, {0x00});
  EXPECT_EQ(answer.completionCode, 0xC7);
  EXPECT_EQ(answer.data, Bytes{});
}

struct IdentityCase {
  std::string name;
  EnclosureKind kind;
  std::uint8_t item;
  std::string text;
};

class IdentityAnswer : public testing::TestWithParam<IdentityCase> {};

TEST_P(IdentityAnswer, HoldsTheItemPadded) {
  const Answer answer = Ask(GetParam().kind, 0xB0, {0x05, GetParam().item});
  EXPECT_EQ(answer.completionCode, 0x00);
  EXPECT_EQ(answer.data, Text(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    All, IdentityAnswer,
    testing::Values(
        IdentityCase{"FirstMachineType", kFirst, 0x00, "1QA4~~~~"},
        IdentityCase{"FirstSerialNumber", kFirst, 0x01, "  SIM10001  ~~~~"},
        IdentityCase{"FirstName", kFirst, 0x0B, "simulated-first~~~~~~~~~"},
        IdentityCase{"Second253MachineType", kSecond253, 0x00, "\x05~2QC9~~~~"},
        IdentityCase{"Second253SerialNumber", kSecond253, 0x01, "\x05\x01  SIM25301  ~~~~"},
        IdentityCase{"Second253Name", kSecond253, 0x0B, "\x05\x0Bsimulated-second-253~~~~"},
        IdentityCase{"Second254MachineType", kSecond254, 0x00, "\x05~2qB2~~~~"},
        IdentityCase{"Second254SerialNumber", kSecond254, 0x01, "\x05\x01  SIM25401  ~~~~"},
        IdentityCase{"Second254Name", kSecond254, 0x0B, "\x05\x0Bsimulated-second-254~~~~"}),
    [](const auto& instance) { return instance.param.name; });

struct RefusalCase {
  std::string name;
  std::uint8_t netFn;
  std::uint8_t command;
  Bytes data;
  std::uint8_t completionCode;
};

class RefusedRequest : public testing::TestWithParam<RefusalCase> {};

TEST_P(RefusedRequest, GetsTheCompletionCodeAloneFromEveryEnclosure) {
  for (const EnclosureKind kind : {kFirst, kSecond253, kSecond254}) {
    const Answer answer =
        EncodeAnswer(MakeEnclosure(kind), {GetParam().netFn, GetParam().command, GetParam().data});
    EXPECT_EQ(answer.completionCode, GetParam().completionCode);
    EXPECT_EQ(answer.data, Bytes{});
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, RefusedRequest,
    testing::Values(RefusalCase{"IdentityWithoutData", 0x32, 0xB0, {}, 0xC7},
                    RefusalCase{"IdentityWithoutItem", 0x32, 0xB0, {0x05}, 0xC7},
                    RefusalCase{"IdentityWithOneByteMore", 0x32, 0xB0, {0x05, 0x00, 0x00}, 0xC7},
                    RefusalCase{"IdentityOfAnotherGroup", 0x32, 0xB0, {0x06, 0x00}, 0xCC},
                    RefusalCase{"IdentityOfUnknownItem", 0x32, 0xB0, {0x05, 0x02}, 0xC9},
                    RefusalCase{"UnknownCommand", 0x32, 0x20, {}, 0xC1},
                    RefusalCase{"KnownCommandOfAnotherFunction", 0x06, 0xA8, {}, 0xC1}),
    [](const auto& instance) { return instance.param.name; });

TEST(FirstGenerationStatus, CannotBeTakenForASecondGenerationOne) {
  EXPECT_LT(Ask(kFirst, 0xA8, {}).data.at(0), 0xFD);
}

TEST(EnclosureKindName, LeadsBackToTheKind) {
  for (const EnclosureKind kind : {kFirst, kSecond253, kSecond254}) {
    EXPECT_EQ(KindFromName(KindName(kind)), kind);
  }
}

TEST(EnclosureKindName, UnknownNameHasNoKind) {
  EXPECT_EQ(KindFromName("third-generation"), std::nullopt);
}

}  // namespace
}  // namespace Tavrin::Simulator
