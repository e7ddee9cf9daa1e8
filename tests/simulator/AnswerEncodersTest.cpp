#include "simulator/AnswerEncoders.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
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
        IdentityCase{"FirstSerialNumber", kFirst, 0x01, "  SIM10001  ~~~~"},
        IdentityCase{"FirstName", kFirst, 0x0B, "simulated-first~~~~~~~~~"},
        IdentityCase{"Second253SerialNumber", kSecond253, 0x01, "\x05\x01  SIM25301  ~~~~"},
        IdentityCase{"Second253Name", kSecond253, 0x0B, "\x05\x0Bsimulated-second-253~~~~"},
        IdentityCase{"Second254MachineType", kSecond254, 0x00, "\x05~2qB2~~~~"},
        IdentityCase{"Second254SerialNumber", kSecond254, 0x01, "\x05\x01  SIM25401  ~~~~"},
        IdentityCase{"Second254Name", kSecond254, 0x0B, "\x05\x0Bsimulated-second-254~~~~"}),
    [](const auto& instance) { return instance.param.name; });

/// The bytes of the text, two digits each.
Bytes Hex(const std::string& text) {
  std::istringstream stream(text);
  stream >> std::hex;
  Bytes bytes;
  for (unsigned int byte = 0; stream >> byte;) {
    bytes.push_back(static_cast<std::uint8_t>(byte));
  }
  return bytes;
}

struct ReadingCase {
  const char* name;
  EnclosureKind kind;
  const char* request;  ///< Network function, command, data.
  const char* answer;
};

class ReadingAnswer : public testing::TestWithParam<ReadingCase> {};

TEST_P(ReadingAnswer, HasItsLayout) {
  const Bytes request = Hex(GetParam().request);
  const Answer answer =
      EncodeAnswer(MakeEnclosure(GetParam().kind),
                   {request[0], request[1], {request.begin() + 2, request.end()}});
  EXPECT_EQ(answer.completionCode, 0x00);
  EXPECT_EQ(answer.data, Hex(GetParam().answer));
}

/// What sets the kinds, their nodes and their PSUs apart from those of the sample answers.
const ReadingCase kReadings[] = {
    {"StatusFirst", kFirst, "32 A8", "01 05 A1 A2 A3 46 47 45 4E 37 00 00 00 00 00 00"},
    {"StatusSecond253", kSecond253, "32 A8", "FD 02 1A B1 B2 B3 53 47 45 4E 33 00 00 03 00 00"},
    {"StatusSecond254", kSecond254, "32 A8", "FE 10 0F C1 C2 C3 53 47 45 4E 34 00 00 01 00 00"},
    // 633, 1618, 2798.
    {"ChassisPowerSecond254", kSecond254, "32 98 05", "05 79 02 52 06 EE 0A"},
    // 640, 3450, 3010, 2150, 2560.
    {"ChassisCapsSecond254", kSecond254, "32 9D 05", "05 80 02 7A 0D C2 0B 66 08 00 0A"},
    // 146, 374, 652.
    {"NodePowerFirstsLast", kFirst, "32 98 04", "92 00 76 01 8C 02"},
    // 156, 386, 666: 05 is a node where the enclosure has another selector.
    {"NodePowerSecond253sFifth", kSecond253, "32 98 05", "05 9C 00 82 01 9A 02"},
    // 219, 463, 757.
    {"NodePowerSecond253sLast", kSecond253, "32 98 0C", "0C DB 00 CF 01 F5 02"},
    // 130, 354, 628.
    {"NodePowerSecond254sSecond", kSecond254, "32 98 02", "02 82 00 62 01 74 02"},
    {"NodeStatusSecond253", kSecond253, "32 A7 0C", "0C 80 02 01 1C"},
    {"NodeStatusSecond254", kSecond254, "32 A7 04", "04 80 02 01 14"},
    // 5780, 62.
    {"PsuFansFirstsSecond", kFirst, "32 A5 02", "94 16 3E 02"},
    // 7850, 69, 11255, 89.
    {"PsuFansSecond253sLast", kSecond253, "32 A5 09", "09 AA 1E 45 F7 2B 59 02"},
    // 5570, 61, 8615, 81.
    {"PsuFansSecond254sFirst", kSecond254, "32 A5 01", "01 C2 15 3D A7 21 51 02"},
    {"FirstsVersionOfSlot2", kFirst, "06 52 0D D0 02 FC", "09 02"},
    {"FirstsPosition", kFirst, "06 52 0D D0 20 F0",
     "0B 02 C2 C3 C4 C5 C6 C7 C8 C9 CA CB CC CD CE CF D0 D1 D2 D3 D4 D5 D6 D7 D8 D9 DA DB DC DD DE "
     "DF"},
    {"FirstsShorterRead", kFirst, "06 52 0F D0 03 99", "04 50 41"},
    {"Second253sVersion", kSecond253, "32 92 09 02 FC", "11 09"},
    {"Second253sManufacturer", kSecond253, "32 92 03 05 99", "50 42 53 33 00"},
    {"Second253sPosition", kSecond253, "32 92 07 20 F0",
     "10 07 C2 C3 C4 C5 C6 C7 C8 C9 CA CB CC CD CE CF D0 D1 D2 D3 D4 D5 D6 D7 D8 D9 DA DB DC DD DE "
     "DF"},
    {"Second254sVersion", kSecond254, "32 92 02 02 FC", "0B 02"},
    {"Second254sManufacturer", kSecond254, "32 92 02 05 99", "50 43 53 32 00"},
    {"FlagsSecond254", kSecond254, "32 91", "00 00 A5 5A 00 00 03 00 03 00"},
    {"SelectionFirstsNegative", kFirst, "32 F4 00 FF", "FF"},
    {"SelectionWithoutPsu", kSecond254, "32 F4 00", "00"},
};

INSTANTIATE_TEST_SUITE_P(All, ReadingAnswer, testing::ValuesIn(kReadings),
                         [](const auto& instance) { return instance.param.name; });

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
