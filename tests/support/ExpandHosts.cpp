// Prints, for each line of standard input, the hosts that it names with blanks between them, or
// "refused".

#include <iostream>
#include <string>

#include "support/HostRange.h"
#include "support/UsageError.h"

namespace {

std::string Expansion(const std::string& text) {
  std::string hosts;
  try {
    for (const Tavrin::HostAndPort& place : Tavrin::ExpandHosts(text)) {
      hosts += hosts.empty() ? "" : " ";
      hosts += place.port ? Tavrin::AddressText(place.host, *place.port) : place.host;
    }
  } catch (const Tavrin::UsageError&) {
    return "refused";
  }
  return hosts;
}

}  // namespace

int main() {
  for (std::string line; std::getline(std::cin, line);) {
    std::cout << Expansion(line) << '\n';
  }
}
