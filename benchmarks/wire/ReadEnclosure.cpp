// Reads everything of a simulated enclosure once, without waiting in the pauses.
// usage: read_enclosure PORT PASSWORD-FILE

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>

#include "benchmarks/wire/WholeInventory.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: read_enclosure PORT PASSWORD-FILE\n";
    return 2;
  }
  try {
    std::string password;
    std::ifstream file(argv[2]);
    std::getline(file, password);
    Tavrin::ConfigureForSimulator();
    Tavrin::ReadWholeInventory(
        Tavrin::SettingsFor(static_cast<std::uint16_t>(std::stoul(argv[1])), password));
  } catch (const std::exception& exception) {
    std::cerr << "read_enclosure: " << exception.what() << "\n";
    return EXIT_FAILURE;
  }
}
