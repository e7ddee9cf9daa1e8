#pragma once

#include <array>

namespace Tavrin::Fuzz {

/// What the query fuzzer can call; its inputs name an operation by its place in this list. The last
/// three are the implementation's alone.
constexpr std::array<const char*, 16> kOperations = {
    "GetSmmMT",
    "GetSmmSN",
    "GetSmmVersion",
    "GetSmmName",
    "GetChassisPowerConsumption",
    "GetChassisPowerCap",
    "GetNodePowerConsumption",
    "GetPSUFanSpeed",
    "GetPSUFwInfo",
    "GetPSUStatus",
    "SelectPSU",
    "GetNodeStatus",
    "GetSMMStatus",
    "GetPSUVersion",
    "GetPSUManufacture",
    "GetPSUPosition",
};

}  // namespace Tavrin::Fuzz
