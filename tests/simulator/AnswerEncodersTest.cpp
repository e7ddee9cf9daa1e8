#include "simulator/AnswerEncoders.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "simulator/EnclosureKind.h"
#include "simulator/Scenario.h"
#include "tests/doubles/Operations.h"
#include "tests/doubles/PlatformDouble.h"

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

/// Each operation of the library against the enclosure of its generation, with texts that fill
/// their fields.
class SampleAnswer : public testing::TestWithParam<SMMIype> {
 protected:
  static EnclosureState Sampled(SMMIype generation) {
    const bool isFirst = generation == SMM_FIRST_GENERATION;
    return ParseScenario(isFirst ? R"({"enclosure": {"buildName": "FGEN70",
                                       "serialNumber": "SIM100010001",
                                       "name": "first rack, enclosure 17"}})"
                                 : R"({"enclosure": {"buildName": "SGEN30",
                                       "serialNumber": "SIM253012530",
                                       "name": "second rack, enclosure 4"}})",
                         "texts", MakeEnclosure(isFirst ? kFirst : kSecond253))
        .enclosure;
  }

  SampleAnswer() {
    Double::Platform& platform = Double::ThePlatform();
    platform = {};
    platform.logThreshold = 0;
    platform.smmType = GetParam();
    platform.answerTo = [this](const IPMICOMMAND& asked) -> const Bytes& {
      requests.push_back({asked.netFn, asked.cmd, asked.data});
      given = EncodeAnswer(enclosure, requests.back());
      EXPECT_EQ(given.completionCode, 0x00);
      return given.data;
    };
  }
  ~SampleAnswer() override { Double::ThePlatform() = {}; }

  const EnclosureState enclosure = Sampled(GetParam());
  std::vector<Request> requests;
  Answer given;
};

bool IsFor(const Request& request, const Double::SampleAnswer& sample) {
  return request.command == sample.command &&
         (!sample.lastByte || request.data.back() == *sample.lastByte);
}

TEST_P(SampleAnswer, IsTheEnclosuresByteForByte) {
  SMMInventory inventory({"smm", 623, "admin", "sesame", 0, 0, 0, 1, 0});
  for (const auto& operation : Double::Operations<SMMInventory>()) {
    SCOPED_TRACE(operation.name);
    requests.clear();
    Double::Output output = operation.fresh;
    EXPECT_EQ(operation.call(inventory, 1, output), StatusCode::Success);
    for (const Double::SampleAnswer& sample : operation.answers) {
      const auto asked =
          std::find_if(requests.begin(), requests.end(),
                       [&](const Request& request) { return IsFor(request, sample); });
      if (sample.generation == GetParam()) {
        ASSERT_NE(asked, requests.end());
        EXPECT_EQ(EncodeAnswer(enclosure, *asked).data, sample.data);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(OfSmmType, SampleAnswer,
                         testing::Values(SMM_FIRST_GENERATION, SMM_SECOND_GENERATION),
                         testing::PrintToStringParamName());

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

struct ReadingCase {
  std::string name;
  EnclosureKind kind;
  Request request;
  Bytes answer;
};

class ReadingAnswer : public testing::TestWithParam<ReadingCase> {};

TEST_P(ReadingAnswer, HasItsLayout) {
  const Answer answer = EncodeAnswer(MakeEnclosure(GetParam().kind), GetParam().request);
  EXPECT_EQ(answer.completionCode, 0x00);
  EXPECT_EQ(answer.data, GetParam().answer);
}

std::string NameOf(const testing::TestParamInfo<ReadingCase>& instance) {
  return instance.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    ChassisPower, ReadingAnswer,
    testing::Values(
        // 625, 1610, 2790.
        ReadingCase{"First", kFirst, {0x32, 0x98, {0x05}}, {0x71, 0x02, 0x4A, 0x06, 0xE6, 0x0A}},
        // 2129, 5010, 8486, and the selector in front.
        ReadingCase{"Second253",
                    kSecond253,
                    {0x32, 0x98, {0x0D}},
                    {0x0D, 0x51, 0x08, 0x92, 0x13, 0x26, 0x21}},
        // 633, 1618, 2798.
        ReadingCase{"Second254",
                    kSecond254,
                    {0x32, 0x98, {0x05}},
                    {0x05, 0x79, 0x02, 0x52, 0x06, 0xEE, 0x0A}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    ChassisCaps, ReadingAnswer,
    testing::Values(
        // 610, 3400, 2950, 2100, 2500.
        ReadingCase{"First",
                    kFirst,
                    {0x32, 0x9D, {0x05}},
                    {0x62, 0x02, 0x48, 0x0D, 0x86, 0x0B, 0x34, 0x08, 0xC4, 0x09}},
        // 2210, 9700, 9100, 7600, 8300.
        ReadingCase{"Second253",
                    kSecond253,
                    {0x32, 0x9D, {0x0D}},
                    {0x0D, 0xA2, 0x08, 0xE4, 0x25, 0x8C, 0x23, 0xB0, 0x1D, 0x6C, 0x20}},
        // 640, 3450, 3010, 2150, 2560.
        ReadingCase{"Second254",
                    kSecond254,
                    {0x32, 0x9D, {0x05}},
                    {0x05, 0x80, 0x02, 0x7A, 0x0D, 0xC2, 0x0B, 0x66, 0x08, 0x00, 0x0A}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    NodePower, ReadingAnswer,
    testing::Values(
        // 119, 341, 613.
        ReadingCase{
            "FirstsFirst", kFirst, {0x32, 0x98, {0x01}}, {0x77, 0x00, 0x55, 0x01, 0x65, 0x02}},
        // 146, 374, 652.
        ReadingCase{
            "FirstsLast", kFirst, {0x32, 0x98, {0x04}}, {0x92, 0x00, 0x76, 0x01, 0x8C, 0x02}},
        // 156, 386, 666: 05 is a node where the enclosure has another selector.
        ReadingCase{"Second253sFifth",
                    kSecond253,
                    {0x32, 0x98, {0x05}},
                    {0x05, 0x9C, 0x00, 0x82, 0x01, 0x9A, 0x02}},
        // 219, 463, 757.
        ReadingCase{"Second253sLast",
                    kSecond253,
                    {0x32, 0x98, {0x0C}},
                    {0x0C, 0xDB, 0x00, 0xCF, 0x01, 0xF5, 0x02}},
        // 130, 354, 628.
        ReadingCase{"Second254sSecond",
                    kSecond254,
                    {0x32, 0x98, {0x02}},
                    {0x02, 0x82, 0x00, 0x62, 0x01, 0x74, 0x02}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    NodeStatus, ReadingAnswer,
    testing::Values(
        ReadingCase{"First", kFirst, {0x32, 0xA7, {0x01}}, {0x80, 0x01, 0x02, 0x11}},
        ReadingCase{"Second253", kSecond253, {0x32, 0xA7, {0x0C}}, {0x0C, 0x80, 0x02, 0x01, 0x1C}},
        ReadingCase{"Second254", kSecond254, {0x32, 0xA7, {0x04}}, {0x04, 0x80, 0x02, 0x01, 0x14}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    PsuFans, ReadingAnswer,
    testing::Values(
        // 5490, 61.
        ReadingCase{"FirstsFirst", kFirst, {0x32, 0xA5, {0x01}}, {0x72, 0x15, 0x3D, 0x02}},
        // 5780, 62.
        ReadingCase{"FirstsSecond", kFirst, {0x32, 0xA5, {0x02}}, {0x94, 0x16, 0x3E, 0x02}},
        // 7850, 69, 11255, 89.
        ReadingCase{"Second253sLast",
                    kSecond253,
                    {0x32, 0xA5, {0x09}},
                    {0x09, 0xAA, 0x1E, 0x45, 0xF7, 0x2B, 0x59, 0x02}},
        // 5570, 61, 8615, 81.
        ReadingCase{"Second254sFirst",
                    kSecond254,
                    {0x32, 0xA5, {0x01}},
                    {0x01, 0xC2, 0x15, 0x3D, 0xA7, 0x21, 0x51, 0x02}}),
    NameOf);

/// A position register: two bytes, then filling that counts up.
Bytes Position(std::uint8_t first, std::uint8_t second) {
  Bytes bytes = {first, second};
  for (std::uint8_t filling = 0xC2; filling <= 0xDF; ++filling) {
    bytes.push_back(filling);
  }
  return bytes;
}

INSTANTIATE_TEST_SUITE_P(
    PsuRegisters, ReadingAnswer,
    testing::Values(
        ReadingCase{"FirstsVersion", kFirst, {0x06, 0x52, {0x0F, 0xD0, 0x02, 0xFC}}, {0x08, 0x01}},
        ReadingCase{
            "FirstsVersionOfSlot2", kFirst, {0x06, 0x52, {0x0D, 0xD0, 0x02, 0xFC}}, {0x09, 0x02}},
        ReadingCase{"FirstsManufacturerWithBlockLength",
                    kFirst,
                    {0x06, 0x52, {0x0F, 0xD0, 0x05, 0x99}},
                    {0x04, 'P', 'A', 'S', '1'}},
        ReadingCase{
            "FirstsPosition", kFirst, {0x06, 0x52, {0x0D, 0xD0, 0x20, 0xF0}}, Position(0x0B, 0x02)},
        ReadingCase{
            "FirstsShorterRead", kFirst, {0x06, 0x52, {0x0F, 0xD0, 0x03, 0x99}}, {0x04, 'P', 'A'}},
        ReadingCase{
            "Second253sVersion", kSecond253, {0x32, 0x92, {0x09, 0x02, 0xFC}}, {0x11, 0x09}},
        ReadingCase{"Second253sManufacturer",
                    kSecond253,
                    {0x32, 0x92, {0x03, 0x05, 0x99}},
                    {'P', 'B', 'S', '3', 0x00}},
        ReadingCase{"Second253sPosition",
                    kSecond253,
                    {0x32, 0x92, {0x07, 0x20, 0xF0}},
                    Position(0x10, 0x07)},
        ReadingCase{
            "Second254sVersion", kSecond254, {0x32, 0x92, {0x02, 0x02, 0xFC}}, {0x0B, 0x02}},
        ReadingCase{"Second254sManufacturer",
                    kSecond254,
                    {0x32, 0x92, {0x02, 0x05, 0x99}},
                    {'P', 'C', 'S', '2', 0x00}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    PsuFlags, ReadingAnswer,
    testing::Values(
        ReadingCase{"First", kFirst, {0x32, 0x91, {}}, {0x00, 0x00, 0x03, 0x03, 0xA5, 0x5A}},
        ReadingCase{"Second253",
                    kSecond253,
                    {0x32, 0x91, {}},
                    {0x00, 0x00, 0xA5, 0x5A, 0x00, 0x00, 0xFF, 0x01, 0xFF, 0x01}},
        ReadingCase{"Second254",
                    kSecond254,
                    {0x32, 0x91, {}},
                    {0x00, 0x00, 0xA5, 0x5A, 0x00, 0x00, 0x03, 0x00, 0x03, 0x00}}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    PsuSelection, ReadingAnswer,
    testing::Values(ReadingCase{"First", kFirst, {0x32, 0xF4, {0x00, 0x03}}, {0x03}},
                    ReadingCase{"FirstsNegative", kFirst, {0x32, 0xF4, {0x00, 0xFF}}, {0xFF}},
                    ReadingCase{"Second253", kSecond253, {0x32, 0xF4, {0x00, 0x09}}, {0x09}},
                    ReadingCase{"WithoutPsu", kSecond254, {0x32, 0xF4, {0x00}}, {0x00}}),
    NameOf);

/// Every PSU has other flags than the rest; no two flags have the same bits.
EnclosureState WithFlags(EnclosureKind kind) {
  EnclosureState enclosure = MakeEnclosure(kind);
  enclosure.psus.front().earlyPowerOffWarning = true;
  enclosure.psus[1].throttle = true;
  enclosure.psus.front().powerGood = false;
  enclosure.psus[1].powerGood = false;
  return enclosure;
}

TEST(PsuFlagsAnswer, FirstGenerationHasOneByteAFlag) {
  EXPECT_EQ(EncodeAnswer(WithFlags(kFirst), {0x32, 0x91, {}}).data,
            (Bytes{0x01, 0x02, 0x03, 0x00, 0xA5, 0x5A}));
}

TEST(PsuFlagsAnswer, SecondGenerationHasEarlyPowerOffWarningThrottlePowerGoodAndPresence) {
  EnclosureState enclosure = WithFlags(kSecond253);
  enclosure.psus.back().throttle = true;
  enclosure.psus[3].present = false;
  EXPECT_EQ(EncodeAnswer(enclosure, {0x32, 0x91, {}}).data,
            (Bytes{0x01, 0x00, 0xA5, 0x5A, 0x02, 0x01, 0xFC, 0x01, 0xF7, 0x01}));
}

TEST(AbsentPsu, LetsNobodyReadItsRegisters) {
  EnclosureState first = MakeEnclosure(kFirst);
  EnclosureState second = MakeEnclosure(kSecond254);
  first.psus.back().present = false;
  second.psus.back().present = false;
  EXPECT_EQ(EncodeAnswer(first, {0x06, 0x52, {0x0D, 0xD0, 0x02, 0xFC}}).completionCode, 0x83);
  EXPECT_EQ(EncodeAnswer(first, {0x06, 0x52, {0x0F, 0xD0, 0x02, 0xFC}}).completionCode, 0x00);
  EXPECT_EQ(EncodeAnswer(second, {0x32, 0x92, {0x02, 0x02, 0xFC}}).completionCode, 0xCB);
  EXPECT_EQ(EncodeAnswer(second, {0x32, 0x92, {0x01, 0x02, 0xFC}}).completionCode, 0x00);
}

/// The bytes behind the front of every answer that consists of readings.
std::vector<Bytes> Readings(EnclosureKind kind) {
  const EnclosureState enclosure = MakeEnclosure(kind);
  const std::uint8_t whole = kind == kSecond253 ? 0x0D : 0x05;
  std::vector<Request> requests = {{0x32, 0x98, {whole}}, {0x32, 0x9D, {whole}}};
  for (std::uint8_t node = 1; node <= enclosure.nodes.size(); ++node) {
    requests.push_back({0x32, 0x98, {node}});
  }
  for (std::uint8_t slot = 1; slot <= enclosure.psus.size(); ++slot) {
    requests.push_back({0x32, 0xA5, {slot}});
  }
  std::vector<Bytes> readings;
  for (const Request& request : requests) {
    const Bytes data = EncodeAnswer(enclosure, request).data;
    readings.emplace_back(data.begin() + (enclosure.secondGeneration ? 1 : 0), data.end());
  }
  return readings;
}

TEST(HealthyReadings, HaveNoTwoEqualBytesInAnAnswerSoThatSwappedOnesShow) {
  for (const EnclosureKind kind : {kFirst, kSecond253, kSecond254}) {
    for (const Bytes& bytes : Readings(kind)) {
      const std::set<std::uint8_t> different(bytes.begin(), bytes.end());
      EXPECT_EQ(different.size(), bytes.size()) << testing::PrintToString(bytes);
    }
  }
}

TEST(HealthyReadings, DifferFromAnswerToAnswer) {
  for (const EnclosureKind kind : {kFirst, kSecond253, kSecond254}) {
    const std::vector<Bytes> readings = Readings(kind);
    EXPECT_EQ(std::set<Bytes>(readings.begin(), readings.end()).size(), readings.size());
  }
}

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
    Readings, RefusedRequest,
    testing::Values(RefusalCase{"PowerWithoutSelector", 0x32, 0x98, {}, 0xC7},
                    RefusalCase{"PowerOfTwo", 0x32, 0x98, {0x01, 0x02}, 0xC7},
                    RefusalCase{"PowerOfNodeZero", 0x32, 0x98, {0x00}, 0xC9},
                    RefusalCase{"PowerOfUnknownSelector", 0x32, 0x98, {0x0E}, 0xC9},
                    RefusalCase{"CapsWithoutSelector", 0x32, 0x9D, {}, 0xC7},
                    RefusalCase{"CapsOfANode", 0x32, 0x9D, {0x01}, 0xC9},
                    RefusalCase{"NodeStatusWithoutNode", 0x32, 0xA7, {}, 0xC7},
                    RefusalCase{"NodeStatusOfNodeZero", 0x32, 0xA7, {0x00}, 0xC9},
                    RefusalCase{"NodeStatusBehindTheLast", 0x32, 0xA7, {0x0D}, 0xC9},
                    RefusalCase{"FansWithoutSlot", 0x32, 0xA5, {}, 0xC7},
                    RefusalCase{"FansOfSlotZero", 0x32, 0xA5, {0x00}, 0xC9},
                    RefusalCase{"FansBehindTheLast", 0x32, 0xA5, {0x0A}, 0xC9},
                    RefusalCase{"FlagsWithData", 0x32, 0x91, {0x00}, 0xC7},
                    RefusalCase{"SelectionWithoutData", 0x32, 0xF4, {}, 0xC7},
                    RefusalCase{"SelectionOfTwo", 0x32, 0xF4, {0x00, 0x01, 0x02}, 0xC7},
                    RefusalCase{"SelectionOfAnotherKind", 0x32, 0xF4, {0x01, 0x01}, 0xCC}),
    [](const auto& instance) { return instance.param.name; });

struct LengthCase {
  std::string name;
  EnclosureKind kind;
  std::uint8_t netFn;
  std::uint8_t command;
  std::size_t fewest;
  std::size_t most;
};

class RequestLength : public testing::TestWithParam<LengthCase> {};

TEST_P(RequestLength, OtherThanTheCommandsGetsInvalidLength) {
  const EnclosureState enclosure = MakeEnclosure(GetParam().kind);
  for (std::size_t length = 0; length <= 6; ++length) {
    const Answer answer =
        EncodeAnswer(enclosure, {GetParam().netFn, GetParam().command, Bytes(length)});
    const bool wrong = length < GetParam().fewest || length > GetParam().most;
    EXPECT_EQ(answer.completionCode == 0xC7, wrong) << length;
  }
}

INSTANTIATE_TEST_SUITE_P(All, RequestLength,
                         testing::Values(LengthCase{"Status", kSecond254, 0x32, 0xA8, 0, 0},
                                         LengthCase{"Identity", kFirst, 0x32, 0xB0, 2, 2},
                                         LengthCase{"Power", kFirst, 0x32, 0x98, 1, 1},
                                         LengthCase{"Caps", kFirst, 0x32, 0x9D, 1, 1},
                                         LengthCase{"NodeStatus", kFirst, 0x32, 0xA7, 1, 1},
                                         LengthCase{"PsuFans", kFirst, 0x32, 0xA5, 1, 1},
                                         LengthCase{"PsuFlags", kFirst, 0x32, 0x91, 0, 0},
                                         LengthCase{"PsuRegister", kSecond254, 0x32, 0x92, 3, 3},
                                         LengthCase{"PsuSelection", kFirst, 0x32, 0xF4, 1, 2},
                                         LengthCase{"MasterWriteRead", kFirst, 0x06, 0x52, 4, 4}),
                         [](const auto& instance) { return instance.param.name; });

TEST(CommandOfTheOtherGeneration, IsInvalidWhateverItsLength) {
  for (std::size_t length = 0; length <= 6; ++length) {
    EXPECT_EQ(Ask(kFirst, 0x92, Bytes(length)).completionCode, 0xC1);
    EXPECT_EQ(EncodeAnswer(MakeEnclosure(kSecond253), {0x06, 0x52, Bytes(length)}).completionCode,
              0xC1);
  }
}

struct KindRefusalCase {
  std::string name;
  EnclosureKind kind;
  Request request;
  std::uint8_t completionCode;
};

class RequestRefusedByOneKind : public testing::TestWithParam<KindRefusalCase> {};

TEST_P(RequestRefusedByOneKind, GetsTheCompletionCodeAlone) {
  const Answer answer = EncodeAnswer(MakeEnclosure(GetParam().kind), GetParam().request);
  EXPECT_EQ(answer.completionCode, GetParam().completionCode);
  EXPECT_EQ(answer.data, Bytes{});
}

INSTANTIATE_TEST_SUITE_P(
    Selectors, RequestRefusedByOneKind,
    testing::Values(
        KindRefusalCase{"FirstsPowerByTheOther", kFirst, {0x32, 0x98, {0x0D}}, 0xC9},
        KindRefusalCase{"Second254sPowerByTheOther", kSecond254, {0x32, 0x98, {0x0D}}, 0xC9},
        KindRefusalCase{"FirstsCapsByTheOther", kFirst, {0x32, 0x9D, {0x0D}}, 0xC9},
        KindRefusalCase{"Second253sCapsByTheOther", kSecond253, {0x32, 0x9D, {0x05}}, 0xC9},
        KindRefusalCase{"Second254sCapsByTheOther", kSecond254, {0x32, 0x9D, {0x0D}}, 0xC9},
        KindRefusalCase{"Second254sNodeFive", kSecond254, {0x32, 0xA7, {0x05}}, 0xC9},
        KindRefusalCase{"Second254sPsuThree", kSecond254, {0x32, 0xA5, {0x03}}, 0xC9}),
    [](const auto& instance) { return instance.param.name; });

INSTANTIATE_TEST_SUITE_P(
    PsuRegisters, RequestRefusedByOneKind,
    testing::Values(
        KindRefusalCase{"FirstsByTheOthersCommand", kFirst, {0x32, 0x92, {0x01, 0x02, 0xFC}}, 0xC1},
        KindRefusalCase{
            "SecondsByTheOthersCommand", kSecond253, {0x06, 0x52, {0x0F, 0xD0, 0x02, 0xFC}}, 0xC1},
        KindRefusalCase{"FirstsWithoutRegister", kFirst, {0x06, 0x52, {0x0F, 0xD0, 0x02}}, 0xC7},
        KindRefusalCase{"FirstsOnAnotherBus", kFirst, {0x06, 0x52, {0x0E, 0xD0, 0x02, 0xFC}}, 0xC9},
        KindRefusalCase{
            "FirstsAtAnotherAddress", kFirst, {0x06, 0x52, {0x0F, 0xD2, 0x02, 0xFC}}, 0x83},
        KindRefusalCase{
            "FirstsUnknownRegister", kFirst, {0x06, 0x52, {0x0F, 0xD0, 0x02, 0x9A}}, 0x83},
        KindRefusalCase{
            "FirstsReadOfNothing", kFirst, {0x06, 0x52, {0x0F, 0xD0, 0x00, 0xFC}}, 0xCA},
        KindRefusalCase{
            "FirstsReadBehindTheEnd", kFirst, {0x06, 0x52, {0x0F, 0xD0, 0x03, 0xFC}}, 0xCA},
        KindRefusalCase{"SecondsWithoutRegister", kSecond254, {0x32, 0x92, {0x01, 0x02}}, 0xC7},
        KindRefusalCase{
            "SecondsSlotBehindTheLast", kSecond254, {0x32, 0x92, {0x03, 0x02, 0xFC}}, 0xC9},
        KindRefusalCase{
            "SecondsUnknownRegister", kSecond254, {0x32, 0x92, {0x01, 0x02, 0x9A}}, 0xC9},
        KindRefusalCase{
            "SecondsReadBehindTheEnd", kSecond254, {0x32, 0x92, {0x01, 0x21, 0xF0}}, 0xCA}),
    [](const auto& instance) { return instance.param.name; });

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
