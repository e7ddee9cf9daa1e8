#pragma once

#include <cstdint>
#include <vector>

namespace Tavrin::Simulator {

using Bytes = std::vector<std::uint8_t>;

/// One IPMI request as it reaches the controller.
struct Request {
  std::uint8_t netFn{};
  std::uint8_t command{};
  Bytes data;
};

/// What the controller answers to one request.
struct Answer {
  std::uint8_t completionCode{};  ///< Normal unless it is set.
  Bytes data;                     ///< Without the completion code.
};

namespace CompletionCode {
constexpr std::uint8_t kNormal = 0x00;
constexpr std::uint8_t kNakOnWrite = 0x83;  ///< Of Master Write-Read: no device took the write.
constexpr std::uint8_t kInvalidCommand = 0xC1;
constexpr std::uint8_t kInvalidDataLength = 0xC7;
constexpr std::uint8_t kParameterOutOfRange = 0xC9;
constexpr std::uint8_t kCannotReturnThatMany = 0xCA;
constexpr std::uint8_t kNotPresent = 0xCB;
constexpr std::uint8_t kInvalidDataField = 0xCC;
}  // namespace CompletionCode

constexpr std::uint8_t kNetFnApplication = 0x06;
constexpr std::uint8_t kMasterWriteRead = 0x52;  ///< The only one under kNetFnApplication.

constexpr std::uint8_t kNetFnOem = 0x32;
constexpr std::uint8_t kGetPsuFlags = 0x91;
constexpr std::uint8_t kSelectPsu = 0xF4;

}  // namespace Tavrin::Simulator
