// Queries in conversation with an SMM that the input makes up. Its first bytes choose, in this
// order, the SMM's generation, its platform, PSU slots, log threshold, kind of connection, attempts
// to connect, and whether the facade is called or the implementation. Then come the queries: the
// operation, its argument in two bytes, and for each exchange what ConversationDouble.h says.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "module/smm/smm_inventory/impl/SMMInventoryImpl.h"
#include "tests/answers/RecordText.h"
#include "tests/fuzz/ConversationDouble.h"
#include "tests/fuzz/Operations.h"
#include "tests/fuzz/QueryModel.h"
#include "tests/fuzz/RecordChecks.h"
#include "tests/fuzz/Require.h"

namespace Tavrin::Fuzz {
namespace {

using Answers::Text;
using Answers::TextOfAll;

using Slots = std::set<std::uint64_t>;
using SlotTexts = std::map<int, std::string>;

const std::string kBefore = "before";

/// The implementation under the names of the facade.
class Implementation : public SMMInventoryImpl {
 public:
  using SMMInventoryImpl::SMMInventoryImpl;
  int SelectPSU(int psu) { return SelectPSUImpl(psu); }
  int GetSMMStatus(SMMStatus& status) { return GetSMMStatusImp(status); }
  [[nodiscard]] unsigned long GetNodeNub() const { return nodeCount; }
};

/// What the call returned or threw. Any other exception ends the fuzzer.
template <typename Call>
int OutcomeOf(Call call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return kRaisesBadAlloc;
  } catch (const PlatformFault&) {
    return kRaisesPlatformFault;
  }
}

/// Every query of one object, each compared with the model.
template <typename Inventory>
class Queries {
 public:
  Queries(Inventory& inventory, const SmmModel& smm) : inventory_(inventory), smm_(smm) {}

  void Run(std::size_t operation, std::int16_t argument) {
    TheConversation().ForgetWhatHappened();
    argument_ = argument;
    switch (operation) {
      case 0:
        return MachineType();
      case 1:
        return SerialNumber();
      case 2:
        return Version();
      case 3:
        return Name();
      case 4:
        return ChassisPower();
      case 5:
        return PowerCap();
      case 6:
        return NodePower();
      case 7:
        return Fans();
      case 8:
        return Firmware();
      case 9:
        return PsuFlags();
      case 10:
        return Selection();
      case 11:
        return NodeState();
      case 12:
        return Status();
      default:
        return Register(operation);
    }
  }

 private:
  [[nodiscard]] unsigned long Node() const { return static_cast<unsigned long>(argument_); }
  [[nodiscard]] Bytes ChassisSelector() const {
    return {smm_.status.platformId == 253 ? std::uint8_t{0x0D} : std::uint8_t{0x05}};
  }

  /// A query that fills one record on success, and leaves it as it was on everything else.
  template <typename Record, typename Query, typename Expect, typename Check>
  void One(const Record& before, Query query, Expect expect, Check check) {
    Record record = before;
    const int status = OutcomeOf([&] { return query(record); });
    Require(status == expect(record), "a query returns what its answer stands for");
    if (status == 0) {
      check(record);
    } else {
      Require(Text(record) == Text(before), "a failure leaves the record as it was");
    }
    Require(TheConversation().openConnections == 0, "no connection stays open");
  }

  void MachineType() {
    One(
        kBefore, [&](std::string& text) { return inventory_.GetSmmMT(text); },
        [&](const std::string&) {
          const int status = StatusOfTrimmed(smm_, 0xB0, {0x05, 0x00}, 2, 4);
          return status == 0 && !HasMachineType() ? 4 : status;
        },
        [](const std::string& text) {
          Require(text.size() == 4 && IsAlphanumericText(text), "a machine type is four of those");
        });
  }

  /// Whether the last answer has four letters or digits where the machine type stands.
  [[nodiscard]] bool HasMachineType() const {
    const Bytes& answer = TheConversation().exchanges.back().answer;
    const auto begin = answer.begin() + (smm_.IsSecondGeneration() ? 2 : 0);
    return IsAlphanumericText(std::string(begin, begin + 4));
  }

  static bool IsAlphanumericText(const std::string& text) {
    return text.find_first_not_of(
               "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
               "0123456789") == std::string::npos;
  }

  void SerialNumber() {
    One(
        kBefore, [&](std::string& text) { return inventory_.GetSmmSN(text); },
        [&](const std::string&) {
          return StatusOfTrimmed(smm_, 0xB0, {0x05, 0x01}, 2, 1);
        },
        [](const std::string& text) {
          Require(IsPrintable(text), "a serial number is printable");
          Require(text.empty() || (text.front() != ' ' && text.back() != ' '),
                  "a serial number has no outer blanks");
        });
  }

  void Version() {
    One(
        kBefore, [&](std::string& text) { return inventory_.GetSmmVersion(text); },
        [&](const std::string&) { return StatusOfTrimmed(smm_, 0xA8, {}, 1, 6); },
        [](const std::string& text) { Require(IsSmmVersion(text), "a version has its form"); });
  }

  void Name() {
    One(
        kBefore, [&](std::string& text) { return inventory_.GetSmmName(text); },
        [&](const std::string&) {
          return StatusOfTrimmed(smm_, 0xB0, {0x05, 0x0B}, 2, 1);
        },
        [](const std::string& text) { Require(IsPrintable(text), "a name is printable"); });
  }

  void ChassisPower() {
    One(
        ChassisPowerCon{kBefore, kBefore, kBefore},
        [&](ChassisPowerCon& power) { return inventory_.GetChassisPowerConsumption(power); },
        [&](const ChassisPowerCon&) {
          return StatusOfTrimmed(smm_, 0x98, ChassisSelector(), 1, 6);
        },
        CheckChassisPower);
  }

  void PowerCap() {
    One(
        ChassisPowerCap{kBefore, kBefore, kBefore, kBefore, kBefore},
        [&](ChassisPowerCap& cap) { return inventory_.GetChassisPowerCap(cap); },
        [&](const ChassisPowerCap&) {
          return StatusOfTrimmed(smm_, 0x9D, ChassisSelector(), 1, 10);
        },
        CheckPowerCap);
  }

  void NodePower() {
    One(
        ChassisPowerCon{kBefore, kBefore, kBefore},
        [&](ChassisPowerCon& power) { return inventory_.GetNodePowerConsumption(Node(), power); },
        [&](const ChassisPowerCon&) { return StatusOfNodeQuery(smm_, 0x98, Node(), 6, 255); },
        CheckNodePower);
  }

  void NodeState() {
    const std::size_t most = smm_.IsSecondGeneration() ? 5 : 4;
    One(
        NodeStatus{kBefore, kBefore, kBefore, -1},
        [&](NodeStatus& status) { return inventory_.GetNodeStatus(Node(), status); },
        [&](const NodeStatus&) { return StatusOfNodeQuery(smm_, 0xA7, Node(), 4, most); },
        CheckNodeStatus);
  }

  void Selection() {
    const int status = OutcomeOf([&] { return inventory_.SelectPSU(argument_); });
    Exchange last;
    int expected = StatusOfRepeated(smm_, 0xF4, SelectionData(smm_, argument_), last);
    if (expected == 0 && (last.completionCode != 0 || last.answer.empty())) {
      expected = 4;
    }
    Require(status == expected, "a selection returns what its last answer stands for");
  }

  /// Writes its record on one failure, too, and not on every success.
  void Status() {
    SMMStatus record{-1, -1};
    SMMStatus expected = record;
    const unsigned long nodes = inventory_.GetNodeNub();
    const int status = OutcomeOf([&] { return inventory_.GetSMMStatus(record); });
    Require(status == StatusOfStatusRead(smm_, expected),
            "a status read returns what its last answer stands for");
    Require(Text(record) == Text(expected), "a status read writes what its last answer says");
    Require(inventory_.GetNodeNub() == nodes && nodes == smm_.nodeCount,
            "the node count stays what it was at construction");
  }

  void Fans() {
    const PSUFanSpeed before{kBefore, kBefore, kBefore, kBefore, kBefore, kBefore};
    std::vector<PSUFanSpeed> fans = {before};
    const int status = OutcomeOf([&] { return inventory_.GetPSUFanSpeed(fans); });
    Slots slots;
    Require(status == StatusOfFans(smm_, slots), "a fan query returns what its answers stand for");
    Require(fans.size() == 1 + slots.size() && Text(fans[0]) == Text(before),
            "fans of the slots that told are appended");
    std::size_t index = 0;
    for (const std::uint64_t slot : slots) {
      CheckFans(fans[++index], slot, smm_.IsSecondGeneration());
    }
  }

  void Firmware() {
    const PSUFwInfo before{kBefore, kBefore, kBefore, kBefore, kBefore};
    std::vector<PSUFwInfo> firmware = {before};
    const int status = OutcomeOf([&] { return inventory_.GetPSUFwInfo(firmware); });
    Slots slots;
    Require(status == StatusOfFirmware(smm_, slots),
            "a firmware query returns what its answers stand for");
    if (status != 0) {
      slots.clear();
    }
    Require(firmware.size() == 1 + slots.size() && Text(firmware[0]) == Text(before),
            "firmware of the slots that told all is appended");
    std::size_t index = 0;
    for (const std::uint64_t slot : slots) {
      CheckFirmware(firmware[++index], smm_.psuSlotCount);
      Require(firmware[index].slot == std::to_string(slot), "slots come in ascending order");
    }
  }

  void PsuFlags() {
    const PSUStatus before{kBefore, kBefore, kBefore, kBefore};
    std::vector<PSUStatus> psus = {before};
    const int status = OutcomeOf([&] { return inventory_.GetPSUStatus(psus); });
    const int expected = StatusOfTrimmed(smm_, 0x91, {}, 0, 6);
    Require(status == expected, "a flag query returns what its answer stands for");
    if (status != 0 && status != 3) {
      Require(TextOfAll(psus) == Text(before), "flags stay as they were when nothing was sent");
      return;
    }
    Require(psus.size() == smm_.psuSlotCount, "every slot has its flags");
    for (const PSUStatus& psu : psus) {
      if (status == 0) {
        CheckPsuStatus(psu);
      } else {
        Require(Text(psu) == Text(PSUStatus{}), "flags without an answer are empty");
      }
    }
  }

  void Register(std::size_t operation) {
    if constexpr (std::is_same_v<Inventory, Implementation>) {
      if (operation == 13) {
        RegisterOf(&SMMInventoryImpl::GetPSUVersion, StatusOfVersions);
      } else if (operation == 14) {
        RegisterOf(&SMMInventoryImpl::GetPSUManufacture, StatusOfManufacturers);
      } else {
        RegisterOf(&SMMInventoryImpl::GetPSUPosition, StatusOfPositions);
      }
    }
  }

  void RegisterOf(int (SMMInventoryImpl::*query)(SlotTexts&),
                  int (*expect)(const SmmModel&, ExchangeCursor&, Slots&)) {
    constexpr int kOtherSlot = 99;
    SlotTexts texts = {{kOtherSlot, kBefore}};
    const int status = OutcomeOf([&] { return (inventory_.*query)(texts); });
    Slots slots;
    {
      ExchangeCursor cursor(smm_);
      Require(status == expect(smm_, cursor, slots),
              "a register query returns what its answers stand for");
    }
    Require(texts.size() == 1 + slots.size() && texts.at(kOtherSlot) == kBefore,
            "the slots with good answers get entries");
    for (const std::uint64_t slot : slots) {
      const std::string& text = texts.at(static_cast<int>(slot));
      Require(expect == StatusOfManufacturers ? text.size() == 4 : IsDottedHex(text),
              "a register's text has its form");
    }
  }

  Inventory& inventory_;
  const SmmModel& smm_;
  std::int16_t argument_ = 0;
};

/// What every exchange of the construction gets as answer; nothing when the input makes it up.
std::optional<Bytes> ConstructionAnswer(std::uint8_t choice) {
  constexpr std::uint8_t kOther = 0x11;
  Bytes answer(14, kOther);
  switch (choice % 6) {
    case 0:
      return Bytes{kOther};
    case 1:
      return answer;
    case 2:
    case 3:
    case 4:
      answer[0] = 0xFD;
      answer[13] = static_cast<std::uint8_t>(choice % 6 + 1);
      return answer;
    default:
      return std::nullopt;
  }
}

/// What construction is to find out. Returns what its status read returns, or that it throws.
int ConstructionOutcome(SmmModel& smm) {
  const Conversation& conversation = TheConversation();
  const int kind = conversation.settings.connectionKind;
  smm.admitsExchanges = kind == 1 || kind == 7;
  smm.smmType = conversation.knowsSmmType ? conversation.smmType : 0;
  const int status = StatusOfStatusRead(smm, smm.status);
  if (status == 0) {
    smm.psuSlotCount = static_cast<std::uint64_t>(smm.status.psuSlotCount);
    smm.nodeCount = smm.status.platformId == 253 ? 12 : 4;
  }
  return status;
}

template <typename Inventory>
void RunQueries(Inventory& inventory, const SmmModel& smm) {
  constexpr int kMostQueries = 8;
  Queries<Inventory> queries(inventory, smm);
  FuzzInput& input = TheConversation().input;
  for (int count = 0; count < kMostQueries && (count == 0 || !input.AtEnd()); ++count) {
    const std::size_t operation = input.Byte() % kOperations.size();
    const int low = input.Byte();
    queries.Run(operation, static_cast<std::int16_t>(low + 256 * input.Byte()));
  }
}

/// Members that only the implementation shows; `slotCount` then takes the place of its own.
void CompareMembers(Implementation& inventory, SmmModel& smm,
                    const std::optional<std::uint64_t>& slotCount) {
  Require(inventory.smmType == smm.smmType && inventory.psuSlotCount == smm.psuSlotCount &&
              Text(inventory.smmStatus) == Text(smm.status),
          "construction finds out generation, platform and PSU slots");
  inventory.psuSlotCount = smm.psuSlotCount = slotCount.value_or(smm.psuSlotCount);
}

void CompareMembers(const SMMInventory& /*inventory*/, const SmmModel& /*smm*/,
                    const std::optional<std::uint64_t>& /*slotCount*/) {}

/// Constructs the object, compares what it found out, and calls it.
template <typename Inventory>
void RunObject(const std::optional<std::uint64_t>& slotCount) {
  std::optional<Inventory> inventory;
  const int outcome = OutcomeOf([&] {
    inventory.emplace(TheConversation().settings);
    return 0;
  });
  SmmModel smm;
  const bool throws = ConstructionOutcome(smm) == kRaisesPlatformFault;
  Require(outcome == (throws ? kRaisesPlatformFault : 0),
          "construction throws what the platform throws, and nothing else");
  if (!inventory) {
    return;
  }
  Require(inventory->GetNodeNub() == smm.nodeCount, "construction counts the nodes");
  CompareMembers(*inventory, smm, slotCount);
  TheConversation().fixedAnswer.reset();
  RunQueries(*inventory, smm);
}

TavrinConnection::ConnectionInfo SettingsOfKind(std::int32_t connectionKind) {
  TavrinConnection::ConnectionInfo settings;
  settings.address = "192.0.2.17";
  settings.port = 9623;
  settings.userName = "operator-7";
  settings.password = "correct horse";
  settings.connectionKind = connectionKind;
  return settings;
}

void RunConversation(const FuzzInput& bytes) {
  Conversation& conversation = TheConversation();
  conversation = Conversation{};
  conversation.input = bytes;
  FuzzInput& input = conversation.input;
  conversation.smmType = input.OneOf<std::int32_t>({0, 1, 7, -1});
  conversation.knowsSmmType = conversation.smmType != -1;
  conversation.fixedAnswer = ConstructionAnswer(input.Byte());
  const auto slotCount =
      input.OneOf<std::optional<std::uint64_t>>({std::nullopt, 0, 1, 2, 6, 9, 33});
  conversation.logThreshold = input.OneOf<unsigned int>({4, 0, 1, 2, 3});
  conversation.settings = SettingsOfKind(input.OneOf<std::int32_t>({7, 1, 0, 3, -1}));
  conversation.connectAttempts = input.OneOf<int>({3, 1, 2, 8, 0, -1});
  if (input.Byte() % 2 == 0) {
    RunObject<SMMInventory>(slotCount);
  } else {
    RunObject<Implementation>(slotCount);
  }
}

}  // namespace
}  // namespace Tavrin::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  Tavrin::Fuzz::RunConversation(Tavrin::Fuzz::FuzzInput(bytes, size));
  return 0;
}
