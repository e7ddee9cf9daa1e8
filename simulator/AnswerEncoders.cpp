#include "simulator/AnswerEncoders.h"

#include <array>
#include <cstddef>
#include <string>

namespace Tavrin::Simulator {
namespace {

constexpr std::size_t kStatusLength = 16;
constexpr std::size_t kEnclosureTypePosition = 13;
constexpr std::size_t kMachineTypeLength = 8;
constexpr std::size_t kSerialNumberLength = 16;
constexpr std::size_t kNameLength = 24;

constexpr std::uint8_t kIdentityGroup = 0x05;
constexpr std::uint8_t kMachineTypeItem = 0x00;
constexpr std::uint8_t kSerialNumberItem = 0x01;
constexpr std::uint8_t kNameItem = 0x0B;

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

}  // namespace

Answer EncodeStatus(const Enclosure& enclosure, const Bytes& requestData) {
  if (!requestData.empty()) {
    return Refusal(CompletionCode::kInvalidDataLength);
  }
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

Answer EncodeIdentity(const Enclosure& enclosure, const Bytes& requestData) {
  if (requestData.size() != 2) {
    return Refusal(CompletionCode::kInvalidDataLength);
  }
  if (requestData[0] != kIdentityGroup) {
    return Refusal(CompletionCode::kInvalidDataField);
  }
  Bytes text;
  switch (requestData[1]) {
    case kMachineTypeItem:
      text = ZeroPadded(enclosure.machineType, kMachineTypeLength);
      break;
    case kSerialNumberItem:
      // Stored as a field of blanks with the number in it, as inventory storage often is.
      text = ZeroPadded("  " + enclosure.serialNumber + "  ", kSerialNumberLength);
      break;
    case kNameItem:
      text = ZeroPadded(enclosure.name, kNameLength);
      break;
    default:
      return Refusal(CompletionCode::kParameterOutOfRange);
  }
  if (enclosure.secondGeneration) {
    text.insert(text.begin(), requestData.begin(), requestData.end());
  }
  return {CompletionCode::kNormal, text};
}

Answer EncodeAnswer(const Enclosure& enclosure, const Request& request) {
  struct Entry {
    std::uint8_t netFn;
    std::uint8_t command;
    Answer (*encode)(const Enclosure&, const Bytes&);
  };
  static constexpr std::array<Entry, 2> kEntries = {{
      {kNetFnOem, 0xA8, EncodeStatus},
      {kNetFnOem, 0xB0, EncodeIdentity},
  }};
  for (const Entry& entry : kEntries) {
    if (entry.netFn == request.netFn && entry.command == request.command) {
      return entry.encode(enclosure, request.data);
    }
  }
  return Refusal(CompletionCode::kInvalidCommand);
}

}  // namespace Tavrin::Simulator
