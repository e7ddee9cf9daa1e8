#include "module/smm/smm_inventory/impl/PsuStatus.h"

#include "module/smm/smm_inventory/impl/ByteReader.h"

namespace Tavrin {
namespace {

// The length at which the second generation's flags lie apart from where they usually do.
constexpr std::size_t kWideAnswerLength = 10;

bool IsSet(std::uint8_t flag, std::uint64_t psuIndex) {
  return ((std::uint32_t{flag} >> (psuIndex % 32)) & 1U) != 0;
}

std::string Digit(std::uint8_t flag, std::uint64_t psuIndex) {
  return IsSet(flag, psuIndex) ? "1" : "0";
}

PsuStatusFlags DecodeWideAnswer(const std::vector<std::uint8_t>& answer) {
  ByteReader reader(answer);
  PsuStatusFlags flags;
  flags.epow = reader.Byte();
  reader.Skip(3);
  flags.throttle = reader.Byte();
  reader.Skip(1);
  flags.powerGood = reader.Byte();
  reader.Skip(1);
  flags.present = reader.Byte();
  return flags;
}

}  // namespace

PsuStatusFlags DecodeFirstGenerationPsuStatus(const std::vector<std::uint8_t>& answer) {
  ByteReader reader(answer);
  PsuStatusFlags flags;
  flags.epow = reader.Byte();
  flags.throttle = reader.Byte();
  flags.present = reader.Byte();
  flags.powerGood = reader.Byte();
  return flags;
}

PsuStatusFlags DecodeSecondGenerationPsuStatus(const std::vector<std::uint8_t>& answer) {
  if (answer.size() == kWideAnswerLength) {
    return DecodeWideAnswer(answer);
  }
  ByteReader reader(answer);
  PsuStatusFlags flags;
  flags.epow = reader.Byte();
  reader.Skip(1);
  flags.throttle = reader.Byte();
  reader.Skip(1);
  flags.present = reader.Byte();
  reader.Skip(1);
  flags.powerGood = reader.Byte();
  return flags;
}

PSUStatus ToPsuStatus(const PsuStatusFlags& flags, std::uint64_t psuIndex) {
  return {IsSet(flags.epow, psuIndex) ? "trigger" : "not trigger",
          IsSet(flags.throttle, psuIndex) ? "trigger" : "not trigger",
          IsSet(flags.present, psuIndex) ? "present" : "not present",
          IsSet(flags.powerGood, psuIndex) ? "power good" : "not power good"};
}

std::string PsuStatusFlagsText(const PsuStatusFlags& flags, std::uint64_t psuCount) {
  std::string text;
  for (std::uint64_t index = 0; index < psuCount; ++index) {
    text += "PSU" + std::to_string(index + 1) + ":";
    text += "\n\tPSU EPOW " + Digit(flags.epow, index);
    text += "\n\tPSU THROTTLE " + Digit(flags.throttle, index);
    text += "\n\tPSU PRESENT " + Digit(flags.present, index);
    text += "\n\tPSU PWR GOOD " + Digit(flags.powerGood, index);
  }
  return text;
}

}  // namespace Tavrin
