#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/IpmiClient.h"
#include "platform/SMMInfo.h"
#include "tests/doubles/RecordText.h"

namespace Tavrin::Double {

/// What an operation fills; a selection fills nothing.
using Output = std::variant<std::monostate, std::string, ChassisPowerCon, ChassisPowerCap,
                            std::vector<PSUFanSpeed>, std::vector<PSUFwInfo>,
                            std::vector<PSUStatus>, NodeStatus, SMMStatus>;

/// See RecordText.h.
std::string Text(const Output& output);

/// The same with every text "before" and every number -1, but for those in lists.
Output Marked(Output output);

/// What the number means that an operation is called with.
enum class Argument { None, Node, Psu };

/// An answer to the first of the requests that an operation sends: as a healthy controller gives
/// it, with texts that fill their fields.
struct SampleAnswer {
  SMMIype generation;
  std::uint8_t command;
  std::optional<std::uint8_t>
      lastByte;  ///< Of the request's data, where that tells it from others.
  std::vector<std::uint8_t> data;
};
using SampleAnswers = std::vector<SampleAnswer>;

/// How many requests an operation sends that gets the sample answers.
struct Exchanges {
  std::size_t ofTwoPsus;
  std::size_t ofNinePsus;
  bool untilAcknowledged = false;  ///< It sends again what was not acknowledged.
};

/// One operation that sends.
template <typename Inventory>
struct Operation {
  const char* name;  ///< That of SMMInventory's function.
  Argument argument;
  Output fresh;  ///< What to call it with: its kind of output, as a caller declares it.
  std::function<int(Inventory&, int argument, Output&)> call;
  Exchanges exchanges;
  SampleAnswers answers;
  int alsoWritesOn = StatusCode::Success;  ///< The failure, if any, on which it fills the output.
};

template <typename Inventory, typename Owner, typename Record>
Operation<Inventory> Asks(const char* name, int (Owner::*query)(Record&), Exchanges exchanges,
                          SampleAnswers answers, int alsoWritesOn = StatusCode::Success) {
  const auto call = [query](Inventory& inventory, int /*argument*/, Output& output) {
    return (inventory.*query)(std::get<Record>(output));
  };
  return {name, Argument::None, Record(), call, exchanges, std::move(answers), alsoWritesOn};
}

template <typename Inventory, typename Owner, typename Record>
Operation<Inventory> Asks(const char* name, int (Owner::*query)(unsigned long, Record&),
                          Exchanges exchanges, SampleAnswers answers) {
  const auto call = [query](Inventory& inventory, int argument, Output& output) {
    return (inventory.*query)(static_cast<unsigned long>(argument), std::get<Record>(output));
  };
  return {name, Argument::Node, Record(), call, exchanges, std::move(answers)};
}

template <typename Inventory, typename Owner>
Operation<Inventory> Asks(const char* name, int (Owner::*query)(int), Exchanges exchanges,
                          SampleAnswers answers) {
  const auto call = [query](Inventory& inventory, int argument, Output& /*output*/) {
    return (inventory.*query)(argument);
  };
  return {name, Argument::Psu, {}, call, exchanges, std::move(answers)};
}

inline std::vector<std::uint8_t> BytesOf(const std::string& text) {
  return {text.begin(), text.end()};
}

/// A register of 32 bytes, of which the first two are looked at.
inline std::vector<std::uint8_t> SamplePosition() {
  std::vector<std::uint8_t> position(32);
  std::iota(position.begin(), position.end(), std::uint8_t{0xC0});
  position[0] = 0x0A;
  position[1] = 0x01;
  return position;
}

/// Every operation that sends, of SMMInventory or of what has the same functions. The first sample
/// answer that fits a request answers it, so that a row which names the last byte of the request
/// stands before one that sends the same command without. The samples are those of platform 254 in
/// the first generation (2 PSU slots, 4 nodes), and of platform 253 in the second (9 slots, 12
/// nodes).
template <typename Inventory>
const std::vector<Operation<Inventory>>& Operations() {
  constexpr SMMIype kFirst = SMM_FIRST_GENERATION;
  constexpr SMMIype kSecond = SMM_SECOND_GENERATION;
  static const SampleAnswers status = {
      {kFirst,
       0xA8,
       {},
       {0x01, 0x05, 0xA1, 0xA2, 0xA3, 'F', 'G', 'E', 'N', '7', '0', 0, 0, 0, 0, 0}},
      {kSecond,
       0xA8,
       {},
       {0xFD, 0x02, 0x1A, 0xB1, 0xB2, 0xB3, 'S', 'G', 'E', 'N', '3', '0', 0, 0x03, 0, 0}}};
  static const std::vector<Operation<Inventory>> operations = {
      Asks<Inventory>("GetSmmMT", &Inventory::GetSmmMT, {1, 1},
                      {{kFirst, 0xB0, 0x00, {'1', 'Q', 'A', '4', 0, 0, 0, 0}},
                       {kSecond, 0xB0, 0x00, {0x05, 0x00, '2', 'Q', 'C', '9', 0, 0, 0, 0}}}),
      Asks<Inventory>("GetSmmSN", &Inventory::GetSmmSN, {1, 1},
                      {{kFirst, 0xB0, 0x01, BytesOf("  SIM100010001  ")},
                       {kSecond, 0xB0, 0x01, BytesOf("\x05\x01  SIM253012530  ")}}),
      Asks<Inventory>("GetSmmVersion", &Inventory::GetSmmVersion, {1, 1}, status),
      Asks<Inventory>("GetSmmName", &Inventory::GetSmmName, {1, 1},
                      {{kFirst, 0xB0, 0x0B, BytesOf("first rack, enclosure 17")},
                       {kSecond, 0xB0, 0x0B, BytesOf("\x05\x0Bsecond rack, enclosure 4")}}),
      Asks<Inventory>("GetChassisPowerConsumption", &Inventory::GetChassisPowerConsumption, {1, 1},
                      {{kFirst, 0x98, 0x05, {0x71, 0x02, 0x4A, 0x06, 0xE6, 0x0A}},
                       {kSecond, 0x98, 0x0D, {0x0D, 0x51, 0x08, 0x92, 0x13, 0x26, 0x21}}}),
      Asks<Inventory>(
          "GetChassisPowerCap", &Inventory::GetChassisPowerCap, {1, 1},
          {{kFirst, 0x9D, {}, {0x62, 0x02, 0x48, 0x0D, 0x86, 0x0B, 0x34, 0x08, 0xC4, 0x09}},
           {kSecond,
            0x9D,
            {},
            {0x0D, 0xA2, 0x08, 0xE4, 0x25, 0x8C, 0x23, 0xB0, 0x1D, 0x6C, 0x20}}}),
      Asks<Inventory>("GetNodePowerConsumption", &Inventory::GetNodePowerConsumption, {1, 1},
                      {{kFirst, 0x98, {}, {0x77, 0x00, 0x55, 0x01, 0x65, 0x02}},
                       {kSecond, 0x98, {}, {0x01, 0x78, 0x00, 0x56, 0x01, 0x66, 0x02}}}),
      Asks<Inventory>("GetPSUFanSpeed", &Inventory::GetPSUFanSpeed, {2, 9},
                      {{kFirst, 0xA5, {}, {0x72, 0x15, 0x3D, 0x02}},
                       {kSecond, 0xA5, {}, {0x01, 0x9A, 0x15, 0x3D, 0x7F, 0x21, 0x51, 0x02}}},
                      StatusCode::NotConnected),
      Asks<Inventory>("GetPSUFwInfo", &Inventory::GetPSUFwInfo, {6, 27},
                      {{kFirst, 0x52, 0xFC, {0x08, 0x01}},
                       {kFirst, 0x52, 0x99, {0x04, 'P', 'A', 'S', '1'}},
                       {kFirst, 0x52, 0xF0, SamplePosition()},
                       {kSecond, 0x92, 0xFC, {0x09, 0x01}},
                       {kSecond, 0x92, 0x99, {'P', 'B', 'S', '1', 0x00}},
                       {kSecond, 0x92, 0xF0, SamplePosition()}}),
      Asks<Inventory>(
          "GetPSUStatus", &Inventory::GetPSUStatus, {1, 1},
          {{kFirst, 0x91, {}, {0x00, 0x00, 0x03, 0x03, 0xA5, 0x5A}},
           {kSecond, 0x91, {}, {0x00, 0x00, 0xA5, 0x5A, 0x00, 0x00, 0xFF, 0x01, 0xFF, 0x01}}},
          StatusCode::UnusableAnswer),
      Asks<Inventory>("SelectPSU", &Inventory::SelectPSU, {1, 1, true},
                      {{kFirst, 0xF4, {}, {0x01}}, {kSecond, 0xF4, {}, {0x01}}}),
      Asks<Inventory>("GetNodeStatus", &Inventory::GetNodeStatus, {1, 1},
                      {{kFirst, 0xA7, {}, {0x80, 0x01, 0x02, 0x11}},
                       {kSecond, 0xA7, {}, {0x01, 0x80, 0x01, 0x02, 0x11}}}),
      Asks<Inventory>("GetSMMStatus", &Inventory::GetSMMStatus, {6, 6, true}, status,
                      StatusCode::NoUsableResult),
  };
  return operations;
}

/// Throws std::out_of_range when there is none of the name.
template <typename Inventory>
const Operation<Inventory>& OperationNamed(const std::string& name) {
  for (const Operation<Inventory>& operation : Operations<Inventory>()) {
    if (operation.name == name) {
      return operation;
    }
  }
  throw std::out_of_range("no operation has the name " + name);
}

/// The names of all.
std::vector<std::string> OperationNames();

/// The first operation whose sample answers of the generation are for such requests. Throws
/// std::logic_error when there is none.
const Operation<SMMInventory>& OperationThatSends(const IPMICOMMAND& request, SMMIype generation);

/// Gives an SMM's sample answer to each request. Throws std::logic_error for a request that none is
/// there for.
std::function<const std::vector<std::uint8_t>&(const IPMICOMMAND&)> SampleAnswersOf(
    SMMIype generation);

}  // namespace Tavrin::Double
