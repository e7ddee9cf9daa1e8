// Queries in conversation with an SMM that the input makes up. Its first bytes choose, in this
// order, the SMM's generation, its platform, PSU slots, log threshold, kind of connection, attempts
// to connect, and whether the facade is called or the implementation. Then come the queries: the
// operation by its place in the table (behind its end come three that are the implementation's
// alone), its argument in two bytes, and for each exchange what MakeUpExchange() reads.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <map>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "tests/doubles/Implementation.h"
#include "tests/doubles/Operations.h"
#include "tests/doubles/PlatformDouble.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/fuzz/QueryModel.h"
#include "tests/fuzz/RecordChecks.h"
#include "tests/fuzz/Require.h"

namespace Tavrin::Fuzz {
namespace {

using Double::Implementation;
using Double::Output;
using Double::Text;
using Double::ThePlatform;

using Slots = std::set<std::uint64_t>;
using SlotTexts = std::map<int, std::string>;

const std::string kBefore = "before";

/// The rest of what the fuzzer made up.
FuzzInput theInput;

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
  static constexpr std::size_t kRegisters = 3;

  Queries(Inventory& inventory, const SmmModel& smm) : inventory_(inventory), smm_(smm) {}

  void Run(std::size_t place, std::int16_t argument) {
    using Query = void (Queries::*)();
    static const std::map<std::string, Query> queries = {
        {"GetSmmMT", &Queries::MachineType},
        {"GetSmmSN", &Queries::SerialNumber},
        {"GetSmmVersion", &Queries::Version},
        {"GetSmmName", &Queries::Name},
        {"GetChassisPowerConsumption", &Queries::ChassisPower},
        {"GetChassisPowerCap", &Queries::PowerCap},
        {"GetNodePowerConsumption", &Queries::NodePower},
        {"GetPSUFanSpeed", &Queries::Fans},
        {"GetPSUFwInfo", &Queries::Firmware},
        {"GetPSUStatus", &Queries::PsuFlags},
        {"SelectPSU", &Queries::Selection},
        {"GetNodeStatus", &Queries::NodeState},
        {"GetSMMStatus", &Queries::Status},
    };
    ThePlatform().ForgetWhatHappened();
    argument_ = argument;
    const auto& operations = Double::Operations<Inventory>();
    if (place >= operations.size()) {
      return Register(place - operations.size());
    }
    operation_ = &operations[place];
    (this->*queries.at(operation_->name))();
  }

 private:
  [[nodiscard]] unsigned long Node() const { return static_cast<unsigned long>(argument_); }
  [[nodiscard]] Bytes ChassisSelector() const {
    return {smm_.status.platformId == 253 ? std::uint8_t{0x0D} : std::uint8_t{0x05}};
  }

  int Call(Output& output) {
    return OutcomeOf([&] { return operation_->call(inventory_, argument_, output); });
  }

  /// Runs a query that fills one record on success, and leaves it as it was on everything else.
  template <typename Record, typename Expect>
  void ExpectOne(Expect expect, void (*check)(const Record&)) {
    const Output before = Double::Marked(operation_->fresh);
    Output output = before;
    const int status = Call(output);
    Require(status == expect(), "a query returns what its answer stands for");
    if (status == 0) {
      check(std::get<Record>(output));
    } else {
      Require(Text(output) == Text(before), "a failure leaves the record as it was");
    }
    Require(ThePlatform().openConnections == 0, "no connection stays open");
  }

  /// The same for a query of one exchange whose answer loses its first bytes in the second
  /// generation.
  template <typename Record>
  void ExpectTrimmed(std::uint8_t command, const Bytes& data, std::size_t prefix,
                     std::size_t minimumLength, void (*check)(const Record&)) {
    ExpectOne([&] { return StatusOfTrimmed(smm_, command, data, prefix, minimumLength); }, check);
  }

  void MachineType() {
    ExpectOne<std::string>(
        [&] {
          const int status = StatusOfTrimmed(smm_, 0xB0, {0x05, 0x00}, 2, 4);
          return status == 0 && !HasMachineType() ? 4 : status;
        },
        [](const std::string& text) {
          Require(text.size() == 4 && IsAlphanumericText(text), "a machine type is four of those");
        });
  }

  /// Whether the last answer has four letters or digits where the machine type stands.
  [[nodiscard]] bool HasMachineType() const {
    const Bytes& answer = ThePlatform().exchanges.back().response;
    const auto begin = answer.begin() + (smm_.IsSecondGeneration() ? 2 : 0);
    return IsAlphanumericText(std::string(begin, begin + 4));
  }

  static bool IsAlphanumericText(const std::string& text) {
    return text.find_first_not_of(
               "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
               "0123456789") == std::string::npos;
  }

  void SerialNumber() {
    ExpectTrimmed<std::string>(0xB0, {0x05, 0x01}, 2, 1, [](const std::string& text) {
      Require(IsPrintable(text), "a serial number is printable");
      Require(text.empty() || (text.front() != ' ' && text.back() != ' '),
              "a serial number has no outer blanks");
    });
  }

  void Version() {
    ExpectTrimmed<std::string>(0xA8, {}, 1, 6, [](const std::string& text) {
      Require(IsSmmVersion(text), "a version has its form");
    });
  }

  void Name() {
    ExpectTrimmed<std::string>(0xB0, {0x05, 0x0B}, 2, 1, [](const std::string& text) {
      Require(IsPrintable(text), "a name is printable");
    });
  }

  void ChassisPower() { ExpectTrimmed(0x98, ChassisSelector(), 1, 6, CheckChassisPower); }

  void PowerCap() { ExpectTrimmed(0x9D, ChassisSelector(), 1, 10, CheckPowerCap); }

  void NodePower() {
    ExpectOne([&] { return StatusOfNodeQuery(smm_, 0x98, Node(), 6, 255); }, CheckNodePower);
  }

  void NodeState() {
    const std::size_t most = smm_.IsSecondGeneration() ? 5 : 4;
    ExpectOne([&] { return StatusOfNodeQuery(smm_, 0xA7, Node(), 4, most); }, CheckNodeStatus);
  }

  void Selection() {
    Output nothing;
    const int status = Call(nothing);
    Exchange last;
    int expected = StatusOfRepeated(smm_, 0xF4, SelectionData(smm_, argument_), last);
    if (expected == 0 && (last.completionCode != 0 || last.response.empty())) {
      expected = 4;
    }
    Require(status == expected, "a selection returns what its last answer stands for");
  }

  /// Writes its record on one failure, too, and not on every success.
  void Status() {
    Output record = SMMStatus{-1, -1};
    SMMStatus expected{-1, -1};
    const unsigned long nodes = inventory_.GetNodeNub();
    const int status = Call(record);
    Require(status == StatusOfStatusRead(smm_, expected),
            "a status read returns what its last answer stands for");
    Require(Text(record) == Text(expected), "a status read writes what its last answer says");
    Require(inventory_.GetNodeNub() == nodes && nodes == smm_.nodeCount,
            "the node count stays what it was at construction");
  }

  void Fans() {
    const PSUFanSpeed before{kBefore, kBefore, kBefore, kBefore, kBefore, kBefore};
    Output output = std::vector<PSUFanSpeed>{before};
    const int status = Call(output);
    const auto& fans = std::get<std::vector<PSUFanSpeed>>(output);
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
    Output output = std::vector<PSUFwInfo>{before};
    const int status = Call(output);
    const auto& firmware = std::get<std::vector<PSUFwInfo>>(output);
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
    Output output = std::vector<PSUStatus>{before};
    const int status = Call(output);
    const auto& psus = std::get<std::vector<PSUStatus>>(output);
    const int expected = StatusOfTrimmed(smm_, 0x91, {}, 0, 6);
    Require(status == expected, "a flag query returns what its answer stands for");
    if (status != 0 && status != 3) {
      Require(Text(psus) == Text(before), "flags stay as they were when nothing was sent");
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

  void Register(std::size_t which) {
    if constexpr (std::is_same_v<Inventory, Implementation>) {
      if (which == 0) {
        RegisterOf(&SMMInventoryImpl::GetPSUVersion, StatusOfVersions);
      } else if (which == 1) {
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
  const Double::Operation<Inventory>* operation_ = nullptr;
  std::int16_t argument_ = 0;
};

/// Leaves no more attempts to connect than are configured, and no answer without a connection.
Exchange Attempted(Exchange exchange) {
  const auto attempts = static_cast<std::size_t>(std::max(ThePlatform().connectAttempts, 0));
  if (exchange.connectResults.size() > attempts) {
    exchange.connectResults.resize(attempts);
  }
  if (attempts == 0) {
    exchange.exception = nullptr;
  }
  if (!exchange.Connects()) {
    exchange.response.clear();
    exchange.completionCode = 0xFF;
  }
  return exchange;
}

/// How an exchange goes. The first byte says it of the connection: below 0xC0 it connects at once;
/// below 0xE0 it does after 1 to 8 failures that are worth retrying; below 0xF0 it fails for good;
/// below 0xF8 it connects and no answer comes; below 0xFC connect() throws; from there on send()
/// does. Where an answer comes, its completion code, its length and its bytes follow.
Exchange MakeUpExchange() {
  Exchange exchange;
  const std::uint8_t link = theInput.Byte();
  if (link >= 0xC0 && link < 0xE0) {
    exchange.connectResults.assign(1U + link % 8U, 3);
    exchange.connectResults.push_back(0);
  } else if (link >= 0xE0 && link < 0xF0) {
    const int result = link % 16;
    exchange.connectResults = {result == 0 || result == 3 ? -1 : result};
  } else if (link >= 0xF8 && link < 0xFC) {
    exchange.connectResults = {-1};
    exchange.exception = std::make_exception_ptr(PlatformFault());
  }
  exchange = Attempted(exchange);
  if (exchange.Connects() && link >= 0xFC) {
    exchange.exception = std::make_exception_ptr(PlatformFault());
  }
  if (exchange.Connects() && link < 0xF0) {
    exchange.completionCode = theInput.Byte();
    exchange.response = theInput.Bytes(theInput.Byte());
  } else {
    exchange.completionCode = 0xFF;
    exchange.sendResult = -1;
  }
  return exchange;
}

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
  const int kind = ThePlatform().expectedSettings.connectionKind;
  smm.admitsExchanges = kind == 1 || kind == 7;
  smm.smmType = ThePlatform().smmType.value_or(0);
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
  const std::size_t places = Double::Operations<Inventory>().size() + queries.kRegisters;
  for (int count = 0; count < kMostQueries && (count == 0 || !theInput.AtEnd()); ++count) {
    const std::size_t place = theInput.Byte() % places;
    const int low = theInput.Byte();
    queries.Run(place, static_cast<std::int16_t>(low + 256 * theInput.Byte()));
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
    inventory.emplace(ThePlatform().expectedSettings);
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
  ThePlatform().improvise = MakeUpExchange;
  RunQueries(*inventory, smm);
}

void RunConversation() {
  Double::Platform& platform = ThePlatform();
  platform = {};
  platform.improvise = MakeUpExchange;
  const auto smmType = theInput.OneOf<std::int32_t>({0, 1, 7, -1});
  platform.smmType = smmType == -1 ? std::nullopt : std::optional(smmType);
  platform.smmTypeResult = platform.smmType ? 0 : -1;
  const std::optional<Bytes> constructionAnswer = ConstructionAnswer(theInput.Byte());
  const auto slotCount =
      theInput.OneOf<std::optional<std::uint64_t>>({std::nullopt, 0, 1, 2, 6, 9, 33});
  platform.logThreshold = theInput.OneOf<unsigned int>({4, 0, 1, 2, 3});
  platform.expectedSettings = Double::TestSettings();
  platform.expectedSettings.connectionKind = theInput.OneOf<std::int32_t>({7, 1, 0, 3, -1});
  platform.connectAttempts = theInput.OneOf<int>({3, 1, 2, 8, 0, -1});
  if (constructionAnswer) {
    Exchange every;
    every.response = *constructionAnswer;
    platform.improvise = [every = Attempted(every)] { return every; };
  }
  if (theInput.Byte() % 2 == 0) {
    RunObject<SMMInventory>(slotCount);
  } else {
    RunObject<Implementation>(slotCount);
  }
}

}  // namespace
}  // namespace Tavrin::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  Tavrin::Fuzz::theInput = Tavrin::Fuzz::FuzzInput(bytes, size);
  Tavrin::Fuzz::RunConversation();
  return 0;
}
