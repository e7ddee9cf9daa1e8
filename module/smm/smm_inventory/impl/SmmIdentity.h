#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Tavrin {

/// Decoders of the identity answers, without the leading bytes of the second generation.

constexpr std::size_t kMachineTypeLength = 4;
constexpr std::size_t kSerialNumberMinimumLength = 1;
constexpr std::size_t kVersionMinimumLength = 6;
constexpr std::size_t kNameMinimumLength = 1;

/// The first four bytes as they are; empty when there are fewer.
std::string DecodeMachineType(const std::vector<std::uint8_t>& answer);

/// Whether every character is an ASCII letter or an ASCII digit.
bool IsAlphanumeric(const std::string& text);

/// The printable run from the first byte, without blanks at either end.
std::string DecodeSerialNumber(const std::vector<std::uint8_t>& answer);

/// Build name (the printable run from byte 5), "-", and major and minor revision (bytes 0 and 1).
std::string DecodeVersion(const std::vector<std::uint8_t>& answer);

/// The printable run from the first byte, with its blanks.
std::string DecodeName(const std::vector<std::uint8_t>& answer);

}  // namespace Tavrin
