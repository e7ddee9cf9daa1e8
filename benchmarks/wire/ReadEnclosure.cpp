// Reads everything of a simulated enclosure once, without waiting in the pauses.
//
// usage: read_enclosure PORT

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include "benchmarks/support/WholeInventory.h"
#include "benchmarks/wire/LargestEnclosure.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: read_enclosure PORT\n";
    return 2;
  }
  try {
    Tavrin::ConfigureForSimulator();
    Tavrin::ReadWholeInventory(
        Tavrin::SettingsFor(static_cast<std::uint16_t>(std::stoul(argv[1]))));
  } catch (const std::exception& exception) {
    std::cerr << "read_enclosure: " << exception.what() << "\n";
    return EXIT_FAILURE;
  }
}
