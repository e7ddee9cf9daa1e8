#include "module/smm/smm_inventory/impl/SmmIdentity.h"

#include <algorithm>

#include "module/smm/smm_inventory/impl/ByteReader.h"
#include "module/smm/smm_inventory/impl/ByteText.h"

namespace Tavrin {
namespace {

// Own ranges, since the C library's classes follow the process's locale.
bool IsAlphanumericAscii(char character) {
  return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
         (character >= '0' && character <= '9');
}

// The blank is the only white space that a printable run can hold.
std::string WithoutOuterBlanks(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  text.erase(0, text.find_first_not_of(' '));
  return text;
}

}  // namespace

std::string DecodeMachineType(const std::vector<std::uint8_t>& answer) {
  return ByteReader(answer).Characters(kMachineTypeLength);
}

bool IsAlphanumeric(const std::string& text) {
  return std::all_of(text.begin(), text.end(), IsAlphanumericAscii);
}

std::string DecodeSerialNumber(const std::vector<std::uint8_t>& answer) {
  return WithoutOuterBlanks(ByteReader(answer).PrintableRun());
}

std::string DecodeVersion(const std::vector<std::uint8_t>& answer) {
  ByteReader reader(answer);
  const std::uint8_t major = reader.Byte();
  const std::uint8_t minor = reader.Byte();
  reader.Skip(3);
  return reader.PrintableRun() + "-" + DottedHex(major, minor);
}

std::string DecodeName(const std::vector<std::uint8_t>& answer) {
  return ByteReader(answer).PrintableRun();
}

}  // namespace Tavrin
