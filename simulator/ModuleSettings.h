#pragma once

#include <string>

#include "simulator/EnclosureKind.h"

namespace Tavrin::Simulator {

/// What the launcher tells the module through a private file. User name and password travel here
/// because ipmi_sim's own configuration cannot express every value of the full length.
struct ModuleSettings {
  EnclosureKind kind{};
  std::string userName;  ///< 1 to 16 bytes, none of them 0x00.
  std::string password;  ///< Up to 20 bytes, none of them 0x00.
  std::string scenario;  ///< JSON text of the scenario file; empty for none.
};

/// The settings as file content.
std::string WriteModuleSettings(const ModuleSettings& settings);

/// Reads the file that the launcher wrote. Throws std::runtime_error when it is not one.
ModuleSettings ReadModuleSettings(const std::string& path);

}  // namespace Tavrin::Simulator
