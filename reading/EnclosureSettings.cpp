#include "reading/EnclosureSettings.h"

#include <fmt/format.h>

#include "reading/Wiping.h"

namespace Tavrin {

EnclosureSettings::~EnclosureSettings() { WipeText(password); }

std::string AddressText(const std::string& host, std::uint16_t port) {
  const bool needsBrackets = host.find(':') != std::string::npos;
  return needsBrackets ? fmt::format("[{}]:{}", host, port) : fmt::format("{}:{}", host, port);
}

}  // namespace Tavrin
