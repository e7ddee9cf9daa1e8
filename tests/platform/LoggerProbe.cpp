// Prints the threshold that the environment gives, asked for twice, and writes one line.
#include <iostream>

#include "platform/Log.h"

int main() {
  std::cout << "threshold " << Tavrin::Log::GetMinLogLevel() << '\n'
            << "again " << Tavrin::Log::GetMinLogLevel() << '\n'
            << std::flush;
  Tavrin::Log(2, "somewhere/Source", 12).Stream() << "red \x1b[31mtext\nforged";
  return 0;
}
