#include "simulator/ModuleSettings.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace Tavrin::Simulator {
namespace {

/// Ends every field but the last, the scenario, which is the only one that may hold it.
constexpr char kEndOfField = '\0';

}  // namespace

std::string WriteModuleSettings(const ModuleSettings& settings) {
  std::string content;
  for (const std::string& field : {KindName(settings.kind), settings.userName, settings.password}) {
    content += field + kEndOfField;
  }
  return content + settings.scenario;
}

ModuleSettings ReadModuleSettings(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string kindName;
  ModuleSettings settings;
  std::getline(file, kindName, kEndOfField);
  std::getline(file, settings.userName, kEndOfField);
  std::getline(file, settings.password, kEndOfField);
  settings.scenario.assign(std::istreambuf_iterator<char>(file), {});
  const auto kind = KindFromName(kindName);
  if (!kind) {
    throw std::runtime_error(path + " names no known kind of enclosure");
  }
  settings.kind = *kind;
  return settings;
}

}  // namespace Tavrin::Simulator
