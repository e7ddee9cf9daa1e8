#include "module/smm/smm_inventory/impl/PsuFirmware.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "tests/unit/InventoryTest.h"

namespace Tavrin {
namespace {

using Double::Bytes;
using Double::ExchangeLines;
using Double::Line;
using Double::OfSmmType;
using StatusCode::ConnectionKindNotAdmitted;
using StatusCode::NotConnected;
using StatusCode::NoUsableResult;
using StatusCode::Success;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto kUnknownSmmType = static_cast<SMMIype>(7);

/// One PSU register, and the query that reads it.
struct Register {
  int (SMMInventoryImpl::*query)(std::map<int, std::string>&);
  std::uint8_t readCount;
  std::uint8_t code;
};
const Register kVersion = {&SMMInventoryImpl::GetPSUVersion, 0x02, 0xFC};
const Register kManufacturer = {&SMMInventoryImpl::GetPSUManufacture, 0x05, 0x99};
const Register kPosition = {&SMMInventoryImpl::GetPSUPosition, 0x20, 0xF0};
const std::vector<Register> kRegisters = {kVersion, kManufacturer, kPosition};

class PsuRegisters : public Double::InventoryTest {
 protected:
  static constexpr const char* kAsPassed = "1=held before;99=another;";

  PsuRegisters() { Reset(); }

  void Reset() { out = {{1, "held before"}, {99, "another"}}; }

  /// Expects the read of a register in the form that the SMM type asks for.
  void ExpectRead(const Register& psuRegister, std::uint8_t slot, const Bytes& response,
                  std::uint8_t completionCode = 0) {
    const std::uint8_t bus = slot == 1 ? 0x0F : 0x0D;
    const Bytes direct = {slot, psuRegister.readCount, psuRegister.code};
    const Bytes overBus = {bus, 0xD0, psuRegister.readCount, psuRegister.code};
    const bool isDirect = inventory.smmType == 1;
    platform.Expect(isDirect ? 0x32 : 0x06, isDirect ? 0x92 : 0x52, isDirect ? direct : overBus,
                    response, completionCode);
  }

  int Run(const Register& psuRegister) { return (inventory.*psuRegister.query)(out); }

  /// Reads the register of the only slot.
  int Get(const Register& psuRegister, const Bytes& response, std::uint8_t completionCode = 0) {
    Reset();
    inventory.psuSlotCount = 1;
    ExpectRead(psuRegister, 1, response, completionCode);
    return Run(psuRegister);
  }

  void ExpectOutcomesOf(const Register& psuRegister, const std::vector<Double::LengthRow>& rows,
                        const Bytes& answer) {
    ExpectOutcomes(
        rows, answer,
        [&](const Bytes& part, std::uint8_t code) { return Get(psuRegister, part, code); },
        [this] { return Output(); });
  }

  std::string Output() const {
    std::string text;
    for (const auto& [slot, value] : out) {
      text += std::to_string(slot) + '=' + value + ';';
    }
    return text;
  }

  std::map<int, std::string> out;
};

TEST_F(PsuRegisters, EveryVersionLengthAndCompletionCodeHasItsOutcome) {
  ExpectOutcomesOf(kVersion,
                   {OfSmmType(0).Lengths(0, 1).Always({Success, kAsPassed}),
                    OfSmmType(0)
                        .Lengths(2, 4)
                        .WithCode0({Success, "1=5.0e;99=another;"})
                        .WithOtherCodes({Success, kAsPassed}),
                    OfSmmType(7).Lengths(0, 1).Always({Success, kAsPassed}),
                    OfSmmType(7)
                        .Lengths(2, 4)
                        .WithCode0({Success, "1=5.0e;99=another;"})
                        .WithOtherCodes({Success, kAsPassed}),
                    OfSmmType(1).Lengths(0, 1).Always({Success, kAsPassed}),
                    OfSmmType(1)
                        .Lengths(2, 4)
                        .WithCode0({Success, "1=5.0e;99=another;"})
                        .WithOtherCodes({Success, kAsPassed})},
                   {0x0E, 0x05, 0x17, 0x28});
}

TEST_F(PsuRegisters, EveryManufacturerLengthAndCompletionCodeHasItsOutcome) {
  ExpectOutcomesOf(kManufacturer,
                   {OfSmmType(0).Lengths(0, 4).Always({Success, kAsPassed}),
                    OfSmmType(0)
                        .Lengths(5, 7)
                        .WithCode0({Success, "1=ABCD;99=another;"})
                        .WithOtherCodes({Success, kAsPassed}),
                    OfSmmType(7).Lengths(0, 4).Always({Success, kAsPassed}),
                    OfSmmType(7)
                        .Lengths(5, 7)
                        .WithCode0({NoUsableResult, kAsPassed})
                        .WithOtherCodes({Success, kAsPassed}),
                    OfSmmType(1).Lengths(0, 4).Always({Success, kAsPassed}),
                    OfSmmType(1)
                        .Lengths(5, 7)
                        .WithCode0({Success, "1=@ABC;99=another;"})
                        .WithOtherCodes({Success, kAsPassed})},
                   {'@', 'A', 'B', 'C', 'D', 'E', 'F'});
}

TEST_F(PsuRegisters, EveryPositionLengthAndCompletionCodeHasItsOutcome) {
  Bytes answer = {0x0E, 0x05};
  answer.resize(34, 0x17);
  ExpectOutcomesOf(kPosition,
                   {OfSmmType(0).Lengths(0, 1).Always({Success, kAsPassed}),
                    OfSmmType(0)
                        .Lengths(2, 34)
                        .WithCode0({Success, "1=e.05;99=another;"})
                        .WithOtherCodes({Success, kAsPassed}),
                    OfSmmType(7).Lengths(0, 1).Always({Success, kAsPassed}),
                    OfSmmType(7)
                        .Lengths(2, 34)
                        .WithCode0({Success, "1=e.05;99=another;"})
                        .WithOtherCodes({Success, kAsPassed}),
                    OfSmmType(1).Lengths(0, 1).Always({Success, kAsPassed}),
                    OfSmmType(1)
                        .Lengths(2, 34)
                        .WithCode0({Success, "1=e.05;99=another;"})
                        .WithOtherCodes({Success, kAsPassed})},
                   answer);
}

TEST_F(PsuRegisters, EachSlotHasACompletionCodeOfItsOwn) {
  for (const Register& psuRegister : kRegisters) {
    Reset();
    ExpectRead(psuRegister, 1, {}, 0xC1);
    ExpectRead(psuRegister, 2, {0x04, '1', '2', '3', '4'}, 0xC1);
    platform.script.back().filling = Double::Filling::ReplacesAllButTheCode;
    EXPECT_EQ(Run(psuRegister), Success);
    EXPECT_EQ(out.count(2), 1U) << "register " << int{psuRegister.code};
  }
}

TEST_F(PsuRegisters, SecondGenerationIsAskedBySlot) {
  inventory.smmType = SMM_SECOND_GENERATION;
  inventory.psuSlotCount = 3;
  for (const std::uint8_t slot : Bytes{1, 2, 3}) {
    platform.Expect(0x32, 0x92, {slot, 0x02, 0xFC}, {0x05, 0x02});
  }
  for (const std::uint8_t slot : Bytes{1, 2, 3}) {
    platform.Expect(0x32, 0x92, {slot, 0x05, 0x99}, {'A', 'B', 'C', 'D', 'E'});
  }
  for (const std::uint8_t slot : Bytes{1, 2, 3}) {
    platform.Expect(0x32, 0x92, {slot, 0x20, 0xF0}, {0x05, 0x02});
  }
  EXPECT_EQ(Run(kVersion), Success);
  EXPECT_EQ(Run(kManufacturer), Success);
  EXPECT_EQ(Run(kPosition), Success);
}

TEST_F(PsuRegisters, OtherSmmTypesAreAskedOverTheBusOfTheSlot) {
  inventory.psuSlotCount = 3;
  for (const SMMIype smmType : {SMM_FIRST_GENERATION, kUnknownSmmType}) {
    inventory.smmType = smmType;
    for (const std::uint8_t bus : Bytes{0x0F, 0x0D, 0x0D}) {
      platform.Expect(0x06, 0x52, {bus, 0xD0, 0x02, 0xFC}, {0x05, 0x02});
    }
    EXPECT_EQ(Run(kVersion), Success);
    for (const std::uint8_t bus : Bytes{0x0F, 0x0D, 0x0D}) {
      platform.Expect(0x06, 0x52, {bus, 0xD0, 0x05, 0x99}, {'A', 'B', 'C', 'D'});
    }
    EXPECT_EQ(Run(kManufacturer), Success);
    for (const std::uint8_t bus : Bytes{0x0F, 0x0D, 0x0D}) {
      platform.Expect(0x06, 0x52, {bus, 0xD0, 0x20, 0xF0}, {0x05, 0x02});
    }
    EXPECT_EQ(Run(kPosition), Success);
  }
}

TEST_F(PsuRegisters, EverySlotIsReadInOrderAndStoredUnderItsNumber) {
  for (const SMMIype smmType : {SMM_FIRST_GENERATION, SMM_SECOND_GENERATION}) {
    inventory.smmType = smmType;
    for (const std::uint8_t count : Double::kSlotCounts) {
      inventory.psuSlotCount = count;
      out.clear();
      std::map<int, std::string> expected;
      for (std::uint8_t slot = 1; slot <= count; ++slot) {
        ExpectRead(kVersion, slot, {0x07, 0x03});
        expected[slot] = "3.07";
      }
      EXPECT_EQ(Run(kVersion), Success);
      EXPECT_EQ(out, expected) << int{count} << " slots";
    }
  }
}

TEST_F(PsuRegisters, WithoutSlotsNothingIsSentAndTheManufacturerQueryCouldNotRun) {
  inventory.psuSlotCount = 0;
  for (const SMMIype smmType : {SMM_FIRST_GENERATION, SMM_SECOND_GENERATION, kUnknownSmmType}) {
    inventory.smmType = smmType;
    EXPECT_EQ(Run(kVersion), Success);
    EXPECT_EQ(Run(kManufacturer), NoUsableResult);
    EXPECT_EQ(Run(kPosition), Success);
  }
  EXPECT_EQ(Output(), kAsPassed);
  EXPECT_THAT(platform.events, IsEmpty());
  EXPECT_THAT(platform.lines, IsEmpty());
}

TEST_F(PsuRegisters, VersionTurnsTheTwoBytesRoundAndPositionDoesNot) {
  struct Row {
    Bytes answer;
    std::string version;
    std::string position;
  };
  for (const Row& row : std::vector<Row>{{{0x05, 0x02}, "2.05", "5.02"},
                                         {{0xFF, 0x00}, "0.ff", "ff.00"},
                                         {{0x0A, 0x01}, "1.0a", "a.01"},
                                         {{0x10, 0xBC}, "bc.10", "10.bc"},
                                         {{0x0F, 0x10}, "10.0f", "f.10"}}) {
    EXPECT_EQ(Get(kVersion, row.answer), Success);
    EXPECT_EQ(out[1], row.version);
    EXPECT_EQ(Get(kPosition, row.answer), Success);
    EXPECT_EQ(out[1], row.position);
  }
}

TEST_F(PsuRegisters, ManufacturerKeepsAnyByteAsItIs) {
  EXPECT_EQ(Get(kManufacturer, {0x04, 'A', 'B', 0x00, 'D'}), Success);
  EXPECT_EQ(out[1], std::string("AB\0D", 4));
  EXPECT_EQ(Get(kManufacturer, {0x04, ' ', 0xFF, 0x7F, ' '}), Success);
  EXPECT_EQ(out[1], " \xFF\x7F ");
  inventory.smmType = SMM_SECOND_GENERATION;
  EXPECT_EQ(Get(kManufacturer, {0x00, 'B', ' ', '\n', 'E'}), Success);
  EXPECT_EQ(out[1], std::string("\0B \n", 4));
}

TEST_F(PsuRegisters, TextsAreStoredBeforeTheirLines) {
  for (const Register& psuRegister : kRegisters) {
    std::string seen;
    platform.whileWritten = [&](const Line&) { seen = Output(); };
    EXPECT_EQ(Get(psuRegister, {0x04, '1', '2', '3', '4'}), Success);
    EXPECT_EQ(platform.lines.back().text.substr(0, 11), "PSU slot 1 ");
    EXPECT_EQ(seen, Output());
    EXPECT_NE(seen, kAsPassed);
  }
}

TEST_F(PsuRegisters, VersionsAreLoggedSlotBySlot) {
  inventory.psuSlotCount = 3;
  ExpectLines(ExchangeLines("FN=0x6 cmd=0x52 data=0xf 0xd0 0x2 0xfc ", {0x0A, 0x01}) +
                  std::vector<Line>{{4, "PSU slot 1 version:1.0a"}} +
                  ExchangeLines("FN=0x6 cmd=0x52 data=0xd 0xd0 0x2 0xfc ", {0x0A}) +
                  std::vector<Line>{{1, "Get psu firmware version failed with error code:0"}} +
                  ExchangeLines("FN=0x6 cmd=0x52 data=0xd 0xd0 0x2 0xfc ", {0x0A, 0x01}) +
                  std::vector<Line>{{1, "Get psu firmware version failed with error code:193"}},
              [&] {
                ExpectRead(kVersion, 1, {0x0A, 0x01});
                ExpectRead(kVersion, 2, {0x0A});
                ExpectRead(kVersion, 3, {0x0A, 0x01}, 0xC1);
                EXPECT_EQ(Run(kVersion), Success);
              });
  EXPECT_EQ(Output(), "1=1.0a;99=another;");
}

TEST_F(PsuRegisters, PositionsAreLoggedSlotBySlot) {
  inventory.smmType = SMM_SECOND_GENERATION;
  inventory.psuSlotCount = 3;
  ExpectLines(ExchangeLines("FN=0x32 cmd=0x92 data=0x1 0x20 0xf0 ", {0x0A, 0x01}) +
                  std::vector<Line>{{4, "PSU slot 1 position:a.01"}} +
                  ExchangeLines("FN=0x32 cmd=0x92 data=0x2 0x20 0xf0 ", {}) +
                  std::vector<Line>{{1, "Get psu position id failed with error code:0"}} +
                  ExchangeLines("FN=0x32 cmd=0x92 data=0x3 0x20 0xf0 ", {0x0A, 0x01}) +
                  std::vector<Line>{{1, "Get psu position id failed with error code:255"}},
              [&] {
                ExpectRead(kPosition, 1, {0x0A, 0x01});
                ExpectRead(kPosition, 2, {});
                ExpectRead(kPosition, 3, {0x0A, 0x01}, 0xFF);
                EXPECT_EQ(Run(kPosition), Success);
              });
  EXPECT_EQ(Output(), "1=a.01;99=another;");
}

TEST_F(PsuRegisters, ManufacturersAreLoggedAndSkippedSlotsAreNot) {
  inventory.psuSlotCount = 3;
  const Bytes good = {0x04, 'A', 'B', 'C', 'D'};
  const Bytes fourBytes = {0x04, 'A', 'B', 'C'};
  ExpectLines(ExchangeLines("FN=0x6 cmd=0x52 data=0xf 0xd0 0x5 0x99 ", fourBytes) +
                  ExchangeLines("FN=0x6 cmd=0x52 data=0xd 0xd0 0x5 0x99 ", good) +
                  std::vector<Line>{{4, "PSU slot 2 manufacture:ABCD"}} +
                  ExchangeLines("FN=0x6 cmd=0x52 data=0xd 0xd0 0x5 0x99 ", good),
              [&] {
                ExpectRead(kManufacturer, 1, fourBytes);
                ExpectRead(kManufacturer, 2, good);
                ExpectRead(kManufacturer, 3, good, 0xC1);
                EXPECT_EQ(Run(kManufacturer), Success);
              });
  EXPECT_EQ(Output(), "1=held before;2=ABCD;99=another;");
}

TEST_F(PsuRegisters, UnknownSmmTypeWarnsOfEachGoodManufacturerAndReturnsTheLastSlotsStatus) {
  inventory.smmType = kUnknownSmmType;
  inventory.psuSlotCount = 2;
  const Bytes good = {0x04, 'A', 'B', 'C', 'D'};
  const std::string request = "FN=0x6 cmd=0x52 data=";
  ExpectLines(ExchangeLines(request + "0xf 0xd0 0x5 0x99 ", good) +
                  std::vector<Line>{{2, "[WARN]: PSU manufacture is empty"}} +
                  ExchangeLines(request + "0xd 0xd0 0x5 0x99 ", good) +
                  std::vector<Line>{{2, "[WARN]: PSU manufacture is empty"}},
              [&] {
                ExpectRead(kManufacturer, 1, good);
                ExpectRead(kManufacturer, 2, good);
                EXPECT_EQ(Run(kManufacturer), NoUsableResult);
              });
  ExpectLines(ExchangeLines(request + "0xf 0xd0 0x5 0x99 ", good) +
                  std::vector<Line>{{2, "[WARN]: PSU manufacture is empty"}} +
                  ExchangeLines(request + "0xd 0xd0 0x5 0x99 ", {0x04}),
              [&] {
                ExpectRead(kManufacturer, 1, good);
                ExpectRead(kManufacturer, 2, {0x04});
                EXPECT_EQ(Run(kManufacturer), Success);
              });
  ExpectLines(ExchangeLines(request + "0xf 0xd0 0x5 0x99 ", good) +
                  ExchangeLines(request + "0xd 0xd0 0x5 0x99 ", good) +
                  std::vector<Line>{{2, "[WARN]: PSU manufacture is empty"}},
              [&] {
                ExpectRead(kManufacturer, 1, good, 0xC1);
                ExpectRead(kManufacturer, 2, good);
                EXPECT_EQ(Run(kManufacturer), NoUsableResult);
              });
  EXPECT_EQ(Output(), kAsPassed);
}

TEST_F(PsuRegisters, AnySmmTypeBut0And1StoresNoManufacturer) {
  for (const int smmType : {-1, 2, 7}) {
    inventory.smmType = static_cast<SMMIype>(smmType);
    EXPECT_EQ(Get(kManufacturer, {0x04, 'A', 'B', 'C', 'D'}), NoUsableResult) << smmType;
    EXPECT_EQ(Output(), kAsPassed) << smmType;
  }
}

TEST_F(PsuRegisters, FailedExchangeIsLoggedForVersionAndManufacturerAlone) {
  const std::vector<Line> connectLine = {{1, "connect failed with error:5"}};
  const std::vector<Line> sendLine = {{1, "Failed to send IPMI command with returns 2"}};
  struct Row {
    Register psuRegister;
    std::vector<Line> lines;
  };
  for (const Row& row : std::vector<Row>{{kVersion, connectLine + sendLine},
                                         {kManufacturer, connectLine + sendLine},
                                         {kPosition, connectLine}}) {
    ExpectLines(row.lines, [&] {
      platform.ExpectConnectFailures({5});
      EXPECT_EQ(Run(row.psuRegister), NotConnected);
    });
  }
  EXPECT_EQ(Output(), kAsPassed);
}

TEST_F(PsuRegisters, RefusedConnectionKindIsLoggedForVersionAndManufacturerAlone) {
  inventory.connectionKind = 3;
  const std::vector<Line> sendLine = {{1, "Failed to send IPMI command with returns 1"}};
  ExpectLines(sendLine, [&] { EXPECT_EQ(Run(kVersion), ConnectionKindNotAdmitted); });
  ExpectLines(sendLine, [&] { EXPECT_EQ(Run(kManufacturer), ConnectionKindNotAdmitted); });
  ExpectLines({}, [&] { EXPECT_EQ(Run(kPosition), ConnectionKindNotAdmitted); });
  EXPECT_EQ(Output(), kAsPassed);
}

TEST_F(PsuRegisters, FailedExchangeIsLoggedAlikeInAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  for (const Register& psuRegister : {kVersion, kManufacturer}) {
    inventory.connectionKind = 1;
    platform.ExpectConnectFailures({5});
    EXPECT_EQ(Run(psuRegister), NotConnected);
    EXPECT_EQ(platform.lines.back(), (Line{1, "Failed to send IPMI command with returns 2"}));
    inventory.connectionKind = 3;
    EXPECT_EQ(Run(psuRegister), ConnectionKindNotAdmitted);
    EXPECT_EQ(platform.lines.back(), (Line{1, "Failed to send IPMI command with returns 1"}));
  }
}

TEST_F(PsuRegisters, FailedExchangeAtALaterSlotKeepsTheEarlierEntries) {
  inventory.psuSlotCount = 3;
  for (const Register& psuRegister : kRegisters) {
    inventory.connectionKind = 1;
    Reset();
    ExpectRead(psuRegister, 1, {0x11, 0x11, 0x11, 0x11, 0x11});
    platform.ExpectConnectFailures({3, 8});
    EXPECT_EQ(Run(psuRegister), NotConnected);
    EXPECT_NE(out[1], "held before");
    EXPECT_EQ(out.size(), 2U);

    Reset();
    ExpectRead(psuRegister, 1, {0x11, 0x11, 0x11, 0x11, 0x11});
    platform.script.back().onRequest = [this](Double::Exchange&) { inventory.connectionKind = 3; };
    EXPECT_EQ(Run(psuRegister), ConnectionKindNotAdmitted);
    EXPECT_NE(out[1], "held before");
    EXPECT_EQ(out.size(), 2U);
  }
}

TEST_F(PsuRegisters, UnknownSmmTypeHandsOnALaterFailedExchangeInsteadOf4) {
  inventory.smmType = kUnknownSmmType;
  ExpectRead(kManufacturer, 1, {0x04, 'A', 'B', 'C', 'D'});
  platform.ExpectConnectFailures({5});
  EXPECT_EQ(Run(kManufacturer), NotConnected);
  EXPECT_EQ(Output(), kAsPassed);
}

TEST_F(PsuRegisters, TextsAndLinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  inventory.psuSlotCount = 10;
  for (std::uint8_t slot = 1; slot <= 10; ++slot) {
    ExpectRead(kVersion, slot, {0x10, 0x22});
  }
  EXPECT_EQ(Run(kVersion), Success);
  EXPECT_EQ(out[10], "22.10");
  EXPECT_EQ(platform.lines.back(), (Line{4, "PSU slot 10 version:22.10"}));
  for (std::uint8_t slot = 1; slot <= 10; ++slot) {
    ExpectRead(kManufacturer, slot, {0x04, '1', '2', '3', '4'});
  }
  EXPECT_EQ(Run(kManufacturer), Success);
  EXPECT_EQ(platform.lines.back(), (Line{4, "PSU slot 10 manufacture:1234"}));
  for (std::uint8_t slot = 1; slot <= 10; ++slot) {
    ExpectRead(kPosition, slot, {0x10, 0x22});
  }
  EXPECT_EQ(Run(kPosition), Success);
  EXPECT_EQ(platform.lines.back(), (Line{4, "PSU slot 10 position:10.22"}));
  EXPECT_EQ(Get(kVersion, {}, 0xC1), Success);
  EXPECT_EQ(platform.lines.back(),
            (Line{1, "Get psu firmware version failed with error code:193"}));
  EXPECT_EQ(Get(kPosition, {}, 0xC1), Success);
  EXPECT_EQ(platform.lines.back(), (Line{1, "Get psu position id failed with error code:193"}));
}

class PsuFirmware : public PsuRegisters {
 protected:
  static constexpr const char* kHeldBefore = "name|identifier|version|slot|description;";

  PsuFirmware() { ResetInventory(); }

  void ResetInventory() { firmware = {{"name", "identifier", "version", "slot", "description"}}; }

  void ExpectReads(const Register& psuRegister, std::uint8_t slots, const Bytes& response) {
    for (std::uint8_t slot = 1; slot <= slots; ++slot) {
      ExpectRead(psuRegister, slot, response);
    }
  }

  void ExpectGoodReads(std::uint8_t slots) {
    ExpectReads(kVersion, slots, goodVersion);
    ExpectReads(kManufacturer, slots, goodManufacturer);
    ExpectReads(kPosition, slots, goodPosition);
  }

  /// What GetPSUFwInfo makes of one slot, whose answers may differ from the good ones. Only the
  /// first `reads` of them are asked for.
  int GetOne(const std::vector<Bytes>& answers, const Bytes& completionCodes,
             std::size_t reads = 3) {
    ResetInventory();
    inventory.psuSlotCount = 1;
    for (std::size_t index = 0; index < reads; ++index) {
      ExpectRead(kRegisters[index], 1, answers[index], completionCodes[index]);
    }
    return inventory.GetPSUFwInfo(firmware);
  }

  std::string Inventory() const {
    std::string text;
    for (const PSUFwInfo& info : firmware) {
      text += info.name + '|' + info.identifier + '|' + info.version + '|' + info.slot + '|' +
              info.description + ';';
    }
    return text;
  }

  const Bytes goodVersion = {0x0A, 0x01};
  const Bytes goodManufacturer = {'A', 'B', 'C', 'D', 'E'};
  const Bytes goodPosition = {0x0A, 0x01};
  std::vector<PSUFwInfo> firmware;
};

TEST_F(PsuFirmware, EverySlotIsListedInOrderBehindWhatTheOutputHeld) {
  for (const SMMIype smmType : {SMM_FIRST_GENERATION, SMM_SECOND_GENERATION}) {
    inventory.smmType = smmType;
    const std::string manufacturer = smmType == SMM_FIRST_GENERATION ? "BCDE" : "ABCD";
    for (const std::uint8_t count : Bytes{1, 2, 6, 9, 33, 40}) {
      inventory.psuSlotCount = count;
      ResetInventory();
      ExpectGoodReads(count);
      std::string expected = kHeldBefore;
      for (int slot = 1; slot <= count; ++slot) {
        const std::string number = std::to_string(slot);
        expected += "PSU" + number + "|PSU" + manufacturer + "a.01|1.0a|" + number +
                    "|Power Supply " + number + ';';
      }
      EXPECT_EQ(inventory.GetPSUFwInfo(firmware), Success);
      EXPECT_EQ(Inventory(), expected) << int{count} << " slots";
    }
  }
}

TEST_F(PsuFirmware, WithoutSlotsReturns4AndAppendsNothing) {
  inventory.psuSlotCount = 0;
  for (const SMMIype smmType : {SMM_FIRST_GENERATION, SMM_SECOND_GENERATION, kUnknownSmmType}) {
    inventory.smmType = smmType;
    EXPECT_EQ(inventory.GetPSUFwInfo(firmware), NoUsableResult);
  }
  EXPECT_EQ(Inventory(), kHeldBefore);
  EXPECT_THAT(platform.events, IsEmpty());
  EXPECT_THAT(platform.lines, IsEmpty());
}

TEST_F(PsuFirmware, EveryLengthAndCompletionCodeOfEachRegisterHasItsOutcome) {
  Bytes longPosition = goodPosition;
  longPosition.resize(34, 0x22);
  const std::vector<Bytes> longest = {
      {0x0A, 0x01, 0x22, 0x33}, {'A', 'B', 'C', 'D', 'E', 'F', 'G'}, longPosition};
  const Double::Outcome skipped = {Success, kHeldBefore};
  const Double::Outcome firstGeneration = {
      Success, std::string(kHeldBefore) + "PSU1|PSUBCDEa.01|1.0a|1|Power Supply 1;"};
  const Double::Outcome secondGeneration = {
      Success, std::string(kHeldBefore) + "PSU1|PSUABCDa.01|1.0a|1|Power Supply 1;"};
  for (std::size_t index = 0; index < longest.size(); ++index) {
    const std::size_t minimum = std::vector<std::size_t>{2, 5, 2}[index];
    ExpectOutcomes(
        {OfSmmType(0).Lengths(0, minimum - 1).Always(skipped),
         OfSmmType(0)
             .Lengths(minimum, longest[index].size())
             .WithCode0(firstGeneration)
             .WithOtherCodes(skipped),
         OfSmmType(1).Lengths(0, minimum - 1).Always(skipped),
         OfSmmType(1)
             .Lengths(minimum, longest[index].size())
             .WithCode0(secondGeneration)
             .WithOtherCodes(skipped)},
        longest[index],
        [&](const Bytes& part, std::uint8_t code) {
          std::vector<Bytes> answers = {goodVersion, goodManufacturer, goodPosition};
          Bytes completionCodes = {0, 0, 0};
          answers[index] = part;
          completionCodes[index] = code;
          return GetOne(answers, completionCodes);
        },
        [this] { return Inventory(); });
  }
}

TEST_F(PsuFirmware, EveryLengthAndCompletionCodeOfAnUnknownSmmTypeHasItsOutcome) {
  const Double::Outcome skipped = {Success, kHeldBefore};
  const Double::Outcome ended = {NoUsableResult, kHeldBefore};
  const auto output = [this] { return Inventory(); };
  ExpectOutcomes(
      {OfSmmType(7).Lengths(0, 4).Always(ended)}, {0x0A, 0x01, 0x22, 0x33},
      [this](const Bytes& part, std::uint8_t code) {
        return GetOne({part, goodManufacturer}, {code, 0}, 2);
      },
      output);
  ExpectOutcomes(
      {OfSmmType(7).Lengths(0, 4).Always(skipped),
       OfSmmType(7).Lengths(5, 7).WithCode0(ended).WithOtherCodes(skipped)},
      {'A', 'B', 'C', 'D', 'E', 'F', 'G'},
      [this](const Bytes& part, std::uint8_t code) {
        const std::size_t reads = code == 0 && part.size() >= 5 ? 2 : 3;
        return GetOne({goodVersion, part, goodPosition}, {0, code, 0}, reads);
      },
      output);
  ExpectOutcomes(
      {OfSmmType(7).Lengths(0, 34).Always(skipped)}, Bytes(34, 0x22),
      [this](const Bytes& part, std::uint8_t code) {
        return GetOne({goodVersion, {}, part}, {0, 0, code});
      },
      output);
}

TEST_F(PsuFirmware, AnySlotThatLacksOneTextIsLoggedAsEmpty) {
  for (const Bytes& completionCodes :
       std::vector<Bytes>{{0xC1, 0, 0}, {0, 0xC1, 0}, {0, 0, 0xC1}}) {
    EXPECT_EQ(GetOne({goodVersion, goodManufacturer, goodPosition}, completionCodes), Success);
    EXPECT_EQ(platform.lines.back(), (Line{4, "PSU slot 1 has no PSU module."}));
  }
}

TEST_F(PsuFirmware, RecordsAndMissingModulesAreLoggedBehindTheReads) {
  inventory.smmType = SMM_SECOND_GENERATION;
  inventory.psuSlotCount = 2;
  const std::string request = "FN=0x32 cmd=0x92 data=";
  ExpectLines(ExchangeLines(request + "0x1 0x2 0xfc ", goodVersion) +
                  std::vector<Line>{{4, "PSU slot 1 version:1.0a"}} +
                  ExchangeLines(request + "0x2 0x2 0xfc ", {}) +
                  std::vector<Line>{{1, "Get psu firmware version failed with error code:203"}} +
                  ExchangeLines(request + "0x1 0x5 0x99 ", goodManufacturer) +
                  std::vector<Line>{{4, "PSU slot 1 manufacture:ABCD"}} +
                  ExchangeLines(request + "0x2 0x5 0x99 ", goodManufacturer) +
                  std::vector<Line>{{4, "PSU slot 2 manufacture:ABCD"}} +
                  ExchangeLines(request + "0x1 0x20 0xf0 ", goodPosition) +
                  std::vector<Line>{{4, "PSU slot 1 position:a.01"}} +
                  ExchangeLines(request + "0x2 0x20 0xf0 ", goodPosition) +
                  std::vector<Line>{{4, "PSU slot 2 position:a.01"},
                                    {4, "Power Supply 1 PSU1 1 1.0a PSUABCDa.01"},
                                    {4, "PSU slot 2 has no PSU module."}},
              [&] {
                ResetInventory();
                ExpectRead(kVersion, 1, goodVersion);
                ExpectRead(kVersion, 2, {}, 0xCB);
                ExpectReads(kManufacturer, 2, goodManufacturer);
                ExpectReads(kPosition, 2, goodPosition);
                EXPECT_EQ(inventory.GetPSUFwInfo(firmware), Success);
                EXPECT_EQ(Inventory(),
                          std::string(kHeldBefore) + "PSU1|PSUABCDa.01|1.0a|1|Power Supply 1;");
              });
}

TEST_F(PsuFirmware, RecordIsAppendedBeforeItsLine) {
  std::string seen;
  platform.whileWritten = [&](const Line&) { seen = Inventory(); };
  EXPECT_EQ(GetOne({goodVersion, goodManufacturer, goodPosition}, {0, 0, 0}), Success);
  EXPECT_EQ(platform.lines.back(), (Line{4, "Power Supply 1 PSU1 1 1.0a PSUBCDEa.01"}));
  EXPECT_EQ(seen, std::string(kHeldBefore) + "PSU1|PSUBCDEa.01|1.0a|1|Power Supply 1;");
}

TEST_F(PsuFirmware, ThresholdIsTestedAnewForEachRecordAndMissingModule) {
  inventory.psuSlotCount = 4;
  ExpectReads(kVersion, 3, goodVersion);
  ExpectRead(kVersion, 4, {});
  ExpectReads(kManufacturer, 4, goodManufacturer);
  ExpectReads(kPosition, 4, goodPosition);
  platform.laterThresholds = std::vector<unsigned int>(3 * 4 * 4, 0);
  platform.laterThresholds.insert(platform.laterThresholds.end(), {3, 4, 3, 4});
  EXPECT_EQ(inventory.GetPSUFwInfo(firmware), Success);
  EXPECT_THAT(platform.laterThresholds, IsEmpty());
  EXPECT_THAT(platform.lines, ElementsAre(Line{4, "Power Supply 2 PSU2 2 1.0a PSUBCDEa.01"},
                                          Line{4, "PSU slot 4 has no PSU module."}));
}

TEST_F(PsuFirmware, ZeroByteOfTheManufacturerIsKeptInTheIdentifier) {
  EXPECT_EQ(GetOne({goodVersion, {0x04, 'A', 'B', 0x00, 'D'}, goodPosition}, {0, 0, 0}), Success);
  ASSERT_EQ(firmware.size(), 2U);
  EXPECT_EQ(firmware.back().identifier, std::string("PSUAB\0Da.01", 11));
}

TEST_F(PsuFirmware, FailedExchangeEndsTheQueryAndAppendsNothing) {
  inventory.psuSlotCount = 3;
  for (std::size_t failing = 0; failing < kRegisters.size(); ++failing) {
    for (const std::uint8_t slotsBefore : Bytes{0, 1, 2}) {
      const std::vector<Bytes> good = {goodVersion, goodManufacturer, goodPosition};
      for (std::size_t index = 0; index < failing; ++index) {
        ExpectReads(kRegisters[index], 3, good[index]);
      }
      ExpectReads(kRegisters[failing], slotsBefore, good[failing]);
      platform.ExpectConnectFailures({5});
      EXPECT_EQ(inventory.GetPSUFwInfo(firmware), NotConnected);
      EXPECT_EQ(Inventory(), kHeldBefore);
    }
  }
}

TEST_F(PsuFirmware, RefusedConnectionKindEndsTheQueryAndAppendsNothing) {
  inventory.psuSlotCount = 3;
  platform.logThreshold = 3;
  const std::vector<Bytes> good = {goodVersion, goodManufacturer, goodPosition};
  inventory.connectionKind = 3;
  EXPECT_EQ(inventory.GetPSUFwInfo(firmware), ConnectionKindNotAdmitted);
  for (std::size_t failing = 0; failing < kRegisters.size(); ++failing) {
    inventory.connectionKind = 1;
    for (std::size_t index = 0; index < failing; ++index) {
      ExpectReads(kRegisters[index], 3, good[index]);
    }
    ExpectReads(kRegisters[failing], 1, good[failing]);
    platform.script.back().onRequest = [this](Double::Exchange&) { inventory.connectionKind = 3; };
    EXPECT_EQ(inventory.GetPSUFwInfo(firmware), ConnectionKindNotAdmitted);
  }
  EXPECT_EQ(Inventory(), kHeldBefore);
  EXPECT_EQ(platform.lines,
            std::vector<Line>(3, Line{1, "Failed to send IPMI command with returns 1"}));
}

TEST_F(PsuFirmware, UnknownSmmTypeReturns4AfterAGoodLastManufacturerAnswer) {
  inventory.smmType = kUnknownSmmType;
  ExpectReads(kVersion, 2, goodVersion);
  ExpectReads(kManufacturer, 2, goodManufacturer);
  EXPECT_EQ(inventory.GetPSUFwInfo(firmware), NoUsableResult);
  EXPECT_EQ(Inventory(), kHeldBefore);
}

TEST_F(PsuFirmware, UnknownSmmTypeListsNothingAfterABadLastManufacturerAnswer) {
  inventory.smmType = kUnknownSmmType;
  platform.logThreshold = 4;
  ExpectReads(kVersion, 2, goodVersion);
  ExpectRead(kManufacturer, 1, goodManufacturer);
  ExpectRead(kManufacturer, 2, goodManufacturer, 0xC1);
  ExpectReads(kPosition, 2, goodPosition);
  EXPECT_EQ(inventory.GetPSUFwInfo(firmware), Success);
  EXPECT_EQ(Inventory(), kHeldBefore);
  EXPECT_THAT(platform.lines, Contains(Line{4, "PSU slot 1 has no PSU module."}));
  EXPECT_EQ(platform.lines.back(), (Line{4, "PSU slot 2 has no PSU module."}));
}

TEST_F(PsuFirmware, TextsAndLinesIgnoreAGlobalLocaleThatDotsNumbers) {
  const Double::DottedNumbers dottedNumbers;
  inventory.psuSlotCount = 11;
  ExpectReads(kVersion, 11, {0x10, 0x22});
  ExpectReads(kManufacturer, 10, goodManufacturer);
  ExpectRead(kManufacturer, 11, {});
  ExpectReads(kPosition, 11, goodPosition);
  EXPECT_EQ(inventory.GetPSUFwInfo(firmware), Success);
  EXPECT_EQ(firmware.back().name, "PSU10");
  EXPECT_EQ(firmware.back().slot, "10");
  EXPECT_EQ(firmware.back().description, "Power Supply 10");
  EXPECT_EQ(platform.lines[platform.lines.size() - 2],
            (Line{4, "Power Supply 10 PSU10 10 22.10 PSUBCDEa.01"}));
  EXPECT_EQ(platform.lines.back(), (Line{4, "PSU slot 11 has no PSU module."}));
}

}  // namespace
}  // namespace Tavrin
