// Prints the threshold that the environment gives, asked for twice, and writes one line. With an
// argument, a handler that asks for the threshold takes that line, and nothing was asked before.
#include <iostream>

#include "platform/Log.h"
#include "platform/standalone/logger/LogControl.h"

int main(int argc, char** /*argv*/) {
  if (argc > 1) {
    Tavrin::Standalone::SetLogLineHandler([](const Tavrin::Standalone::LogLine& line) {
      std::cout << Tavrin::Log::GetMinLogLevel() << ": " << line.text << '\n';
    });
    Tavrin::Log(2, "somewhere/Source", 12).Stream() << "handled";
    return 0;
  }
  std::cout << "threshold " << Tavrin::Log::GetMinLogLevel() << '\n'
            << "again " << Tavrin::Log::GetMinLogLevel() << '\n'
            << std::flush;
  Tavrin::Log(2, "somewhere/Source", 12).Stream() << "red \x1b[31mtext\nforged";
  return 0;
}
