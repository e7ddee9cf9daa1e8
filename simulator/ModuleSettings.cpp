#include "simulator/ModuleSettings.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <vector>

namespace Tavrin::Simulator {
namespace {

// As numbers, since names and passwords are bytes and need not be UTF-8.
std::vector<unsigned char> ToNumbers(const std::string& bytes) {
  return {bytes.begin(), bytes.end()};
}

std::string FromNumbers(const nlohmann::json& numbers) {
  const auto values = numbers.get<std::vector<unsigned char>>();
  return {values.begin(), values.end()};
}

}  // namespace

std::string WriteModuleSettings(const ModuleSettings& settings) {
  const nlohmann::json document = {
      {"kind", KindName(settings.kind)},
      {"userName", ToNumbers(settings.userName)},
      {"password", ToNumbers(settings.password)},
      {"scenario", ToNumbers(settings.scenario)},
  };
  return document.dump();
}

ModuleSettings ReadModuleSettings(const std::string& path) {
  std::ifstream file(path);
  const nlohmann::json document = nlohmann::json::parse(file);
  const auto kind = KindFromName(document.at("kind").get<std::string>());
  if (!kind) {
    throw std::runtime_error(path + " names no known kind of enclosure");
  }
  return {*kind, FromNumbers(document.at("userName")), FromNumbers(document.at("password")),
          FromNumbers(document.at("scenario"))};
}

}  // namespace Tavrin::Simulator
