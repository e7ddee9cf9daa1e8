#include "simulator/AnswerEncoders.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "simulator/PsuRegisters.h"

namespace Tavrin::Simulator {
namespace {

// The OEM commands. Those that other sources know, too, are in Message.h.
constexpr std::uint8_t kReadPsuRegister = 0x92;
constexpr std::uint8_t kGetPower = 0x98;
constexpr std::uint8_t kGetCaps = 0x9D;
constexpr std::uint8_t kGetPsuFans = 0xA5;
constexpr std::uint8_t kGetNodeStatus = 0xA7;
constexpr std::uint8_t kGetStatus = 0xA8;
constexpr std::uint8_t kGetIdentity = 0xB0;

constexpr std::size_t kStatusLength = 16;
constexpr std::size_t kEnclosureTypePosition = 13;
constexpr const char* kBlanks = "  ";
constexpr std::size_t kSerialNumberLength = kMaxSerialNumber + 4;

constexpr std::uint8_t kIdentityGroup = 0x05;
constexpr std::uint8_t kMachineTypeItem = 0x00;
constexpr std::uint8_t kSerialNumberItem = 0x01;
constexpr std::uint8_t kNameItem = 0x0B;

constexpr std::uint8_t kPlatform253 = 0xFD;
constexpr std::uint8_t kWholeEnclosure = 0x05;
constexpr std::uint8_t kWholeEnclosureOf253 = 0x0D;

constexpr std::uint8_t kBusOfSlot1 = 0x0F;
constexpr std::uint8_t kBusOfOtherSlots = 0x0D;
constexpr std::uint8_t kPsuAddress = 0xD0;

/// In the answer with the PSUs' flags; no reader uses it.
constexpr std::uint8_t kReservedLow = 0xA5;
constexpr std::uint8_t kReservedHigh = 0x5A;

Answer Refusal(std::uint8_t completionCode) { return {completionCode, {}}; }

void Append(Bytes& bytes, const std::string& text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
}

/// The text filled up with 0x00 to `length`.
Bytes ZeroPadded(const std::string& text, std::size_t length) {
  Bytes bytes;
  Append(bytes, text);
  bytes.resize(length);
  return bytes;
}

void AppendWord(Bytes& bytes, std::uint16_t value) {
  constexpr int kByteBits = 8;
  bytes.push_back(static_cast<std::uint8_t>(value & 0xFF));
  bytes.push_back(static_cast<std::uint8_t>(value >> kByteBits));
}

/// The bytes in front of an answer: on a second-generation controller those of the request.
Bytes Front(const EnclosureState& enclosure, const Bytes& requestData) {
  return enclosure.secondGeneration ? requestData : Bytes{};
}

std::uint8_t WholeEnclosure(const EnclosureState& enclosure) {
  return enclosure.platformId == kPlatform253 ? kWholeEnclosureOf253 : kWholeEnclosure;
}

/// The element of that number, counted from 1, or null when there is none.
template <typename Element>
const Element* Find(const std::vector<Element>& elements, std::uint8_t number) {
  return number >= 1 && number <= elements.size() ? &elements[number - 1U] : nullptr;
}

Answer FirstBytes(Bytes bytes, std::uint8_t count) {
  if (count == 0 || count > bytes.size()) {
    return Refusal(CompletionCode::kCannotReturnThatMany);
  }
  bytes.resize(count);
  return {CompletionCode::kNormal, bytes};
}

/// The flag of every PSU, the lowest bit for slot 1.
std::uint16_t FlagBits(const EnclosureState& enclosure, bool Psu::*flag) {
  unsigned int bits = 0;
  for (std::size_t index = 0; index < enclosure.psus.size(); ++index) {
    bits |= (enclosure.psus[index].*flag ? 1U : 0U) << index;
  }
  return static_cast<std::uint16_t>(bits);
}

// One function per command: the enclosure and the request's data bytes, of a length that the
// command takes, in; the answer out. Bytes that a second-generation controller puts in front are
// part of the answer.

/// 0x32/0xA8, no data: revision and firmware build name. On a second-generation controller byte 0
/// is the platform id and byte 13 the enclosure type, which falls into the padding behind the build
/// name; that is why build names have at most 6 characters.
Answer EncodeStatus(const EnclosureState& enclosure, const Bytes& /*requestData*/) {
  Bytes data;
  if (enclosure.secondGeneration) {
    data.push_back(enclosure.platformId);
  }
  data.push_back(enclosure.majorRevision);
  data.push_back(enclosure.minorRevision);
  data.insert(data.end(), enclosure.revisionTail.begin(), enclosure.revisionTail.end());
  Append(data, enclosure.buildName);
  data.resize(kStatusLength);
  if (enclosure.secondGeneration) {
    data[kEnclosureTypePosition] = enclosure.enclosureType;
  }
  return {CompletionCode::kNormal, data};
}

/// 0x32/0xB0, data 05 and an item selector: 00 machine type, 01 serial number, 0B name. A
/// second-generation controller repeats the two request bytes in front of the text.
Answer EncodeIdentity(const EnclosureState& enclosure, const Bytes& requestData) {
  if (requestData[0] != kIdentityGroup) {
    return Refusal(CompletionCode::kInvalidDataField);
  }
  Bytes text;
  switch (requestData[1]) {
    case kMachineTypeItem:
      text = ZeroPadded(enclosure.machineType, kMaxMachineType);
      break;
    case kSerialNumberItem:
      // Stored as a field of blanks with the number in it, as inventory storage often is.
      text = ZeroPadded(kBlanks + enclosure.serialNumber + kBlanks, kSerialNumberLength);
      break;
    case kNameItem:
      text = ZeroPadded(enclosure.name, kMaxName);
      break;
    default:
      return Refusal(CompletionCode::kParameterOutOfRange);
  }
  Bytes data = Front(enclosure, requestData);
  data.insert(data.end(), text.begin(), text.end());
  return {CompletionCode::kNormal, data};
}

/// 0x32/0x98: minimum, average and maximum power, each of 16 bits, low byte first. The data byte is
/// a node number, or 05 for the whole enclosure (0D on platform 253, which has a node 5). A
/// second-generation controller repeats it in front.
Answer EncodePower(const EnclosureState& enclosure, const Bytes& requestData) {
  const Node* const node = Find(enclosure.nodes, requestData[0]);
  if (node == nullptr && requestData[0] != WholeEnclosure(enclosure)) {
    return Refusal(CompletionCode::kParameterOutOfRange);
  }
  const PowerReadings& power = node == nullptr ? enclosure.power : node->power;
  Bytes data = Front(enclosure, requestData);
  AppendWord(data, power.minimum);
  AppendWord(data, power.average);
  AppendWord(data, power.maximum);
  return {CompletionCode::kNormal, data};
}

/// 0x32/0x9D, data 05 (0D on platform 253): the five caps, each of 16 bits, low byte first. A
/// second-generation controller repeats the data byte in front.
Answer EncodeCaps(const EnclosureState& enclosure, const Bytes& requestData) {
  if (requestData[0] != WholeEnclosure(enclosure)) {
    return Refusal(CompletionCode::kParameterOutOfRange);
  }
  Bytes data = Front(enclosure, requestData);
  AppendWord(data, enclosure.caps.minimum);
  AppendWord(data, enclosure.caps.maximum);
  AppendWord(data, enclosure.caps.protective);
  AppendWord(data, enclosure.caps.user);
  AppendWord(data, enclosure.caps.thermal);
  return {CompletionCode::kNormal, data};
}

/// 0x32/0xA7, data a node number: power state, width, height and permission. A second-generation
/// controller repeats the node number in front.
Answer EncodeNodeStatus(const EnclosureState& enclosure, const Bytes& requestData) {
  const Node* const node = Find(enclosure.nodes, requestData[0]);
  if (node == nullptr) {
    return Refusal(CompletionCode::kParameterOutOfRange);
  }
  Bytes data = Front(enclosure, requestData);
  data.insert(data.end(), {node->powerState, node->width, node->height, node->permission});
  return {CompletionCode::kNormal, data};
}

/// 0x32/0xA5, data a PSU slot: the fan's speed of 16 bits, low byte first, and Pat value, then the
/// fan status. A second-generation controller repeats the slot in front and tells of two fans.
Answer EncodePsuFans(const EnclosureState& enclosure, const Bytes& requestData) {
  const Psu* const psu = Find(enclosure.psus, requestData[0]);
  if (psu == nullptr) {
    return Refusal(CompletionCode::kParameterOutOfRange);
  }
  Bytes data = Front(enclosure, requestData);
  AppendWord(data, psu->fanA.speed);
  data.push_back(psu->fanA.pat);
  if (enclosure.secondGeneration) {
    AppendWord(data, psu->fanB.speed);
    data.push_back(psu->fanB.pat);
  }
  data.push_back(psu->fanStatus);
  return {CompletionCode::kNormal, data};
}

/// 0x32/0x91, no data: the PSUs' flags, the lowest bit for slot 1. One byte a flag on a
/// first-generation controller, 16 bits on a second-generation one.
Answer EncodePsuFlags(const EnclosureState& enclosure, const Bytes& /*requestData*/) {
  const std::uint16_t epow = FlagBits(enclosure, &Psu::earlyPowerOffWarning);
  const std::uint16_t throttle = FlagBits(enclosure, &Psu::throttle);
  const std::uint16_t present = FlagBits(enclosure, &Psu::present);
  const std::uint16_t powerGood = FlagBits(enclosure, &Psu::powerGood);
  Bytes data;
  if (!enclosure.secondGeneration) {
    for (const std::uint16_t bits : {epow, throttle, present, powerGood}) {
      data.push_back(static_cast<std::uint8_t>(bits));
    }
    data.insert(data.end(), {kReservedLow, kReservedHigh});
    return {CompletionCode::kNormal, data};
  }
  AppendWord(data, epow);
  data.insert(data.end(), {kReservedLow, kReservedHigh});
  for (const std::uint16_t bits : {throttle, powerGood, present}) {
    AppendWord(data, bits);
  }
  return {CompletionCode::kNormal, data};
}

/// 0x32/0x92, data slot, read count and register: a PSU's register through a second-generation
/// controller, which leaves out the length in front of a block.
Answer EncodePsuRegister(const EnclosureState& enclosure, const Bytes& requestData) {
  const Psu* const psu = Find(enclosure.psus, requestData[0]);
  if (psu == nullptr) {
    return Refusal(CompletionCode::kParameterOutOfRange);
  }
  if (!psu->present) {
    return Refusal(CompletionCode::kNotPresent);
  }
  const Bytes bytes = RegisterBytes(enclosure, *psu, requestData[2]);
  return bytes.empty() ? Refusal(CompletionCode::kParameterOutOfRange)
                       : FirstBytes(bytes, requestData[1]);
}

/// 0x06/0x52, data bus, address, read count and register: Master Write-Read, by which a PSU's
/// register is read through a first-generation controller.
Answer EncodeMasterWriteRead(const EnclosureState& enclosure, const Bytes& requestData) {
  const std::uint8_t bus = requestData[0];
  if (bus != kBusOfSlot1 && bus != kBusOfOtherSlots) {
    return Refusal(CompletionCode::kParameterOutOfRange);
  }
  // The enclosure has two slots, so that the second bus leads to one PSU.
  const Psu& psu = enclosure.psus.at(bus == kBusOfSlot1 ? 0 : 1);
  const Bytes bytes = RegisterBytes(enclosure, psu, requestData[3]);
  if (requestData[1] != kPsuAddress || !psu.present || bytes.empty()) {
    return Refusal(CompletionCode::kNakOnWrite);
  }
  return FirstBytes(bytes, requestData[2]);
}

/// 0x32/0xF4, data 00 and a PSU to select: the PSU that is selected then. Without a PSU in the
/// request the selection stays.
Answer EncodePsuSelection(const EnclosureState& enclosure, const Bytes& requestData) {
  if (requestData[0] != 0) {
    return Refusal(CompletionCode::kInvalidDataField);
  }
  return {CompletionCode::kNormal,
          {requestData.size() == 2 ? requestData[1] : enclosure.selectedPsu}};
}

enum class Generations { Both, First, Second };

struct Command {
  std::uint8_t netFn;
  std::uint8_t command;
  Generations servedBy;
  std::size_t fewestBytes;
  std::size_t mostBytes;
  Answer (*encode)(const EnclosureState& enclosure, const Bytes& requestData);
};

constexpr std::array kCommands = {
    Command{kNetFnOem, kGetStatus, Generations::Both, 0, 0, EncodeStatus},
    Command{kNetFnOem, kGetIdentity, Generations::Both, 2, 2, EncodeIdentity},
    Command{kNetFnOem, kGetPower, Generations::Both, 1, 1, EncodePower},
    Command{kNetFnOem, kGetCaps, Generations::Both, 1, 1, EncodeCaps},
    Command{kNetFnOem, kGetNodeStatus, Generations::Both, 1, 1, EncodeNodeStatus},
    Command{kNetFnOem, kGetPsuFans, Generations::Both, 1, 1, EncodePsuFans},
    Command{kNetFnOem, kGetPsuFlags, Generations::Both, 0, 0, EncodePsuFlags},
    Command{kNetFnOem, kReadPsuRegister, Generations::Second, 3, 3, EncodePsuRegister},
    Command{kNetFnOem, kSelectPsu, Generations::Both, 1, 2, EncodePsuSelection},
    Command{kNetFnApplication, kMasterWriteRead, Generations::First, 4, 4, EncodeMasterWriteRead},
};

bool Serves(const EnclosureState& enclosure, const Command& command) {
  return command.servedBy == Generations::Both ||
         (command.servedBy == Generations::Second) == enclosure.secondGeneration;
}

}  // namespace

Answer EncodeAnswer(const EnclosureState& enclosure, const Request& request) {
  for (const Command& command : kCommands) {
    if (command.netFn != request.netFn || command.command != request.command ||
        !Serves(enclosure, command)) {
      continue;
    }
    const std::size_t length = request.data.size();
    return length < command.fewestBytes || length > command.mostBytes
               ? Refusal(CompletionCode::kInvalidDataLength)
               : command.encode(enclosure, request.data);
  }
  return Refusal(CompletionCode::kInvalidCommand);
}

}  // namespace Tavrin::Simulator
