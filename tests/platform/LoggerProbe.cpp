// Prints the threshold that the environment gives, asked for twice, and writes one line. With the
// argument "handler", a handler that asks for the threshold takes that line, and nothing was asked
// before; with "thread", one of the thread's own does; with "set", the threshold is set to 3 first.
#include <iostream>
#include <string>

#include "platform/Log.h"
#include "platform/standalone/logger/LogControl.h"
#include "platform/standalone/logger/ThreadLog.h"

namespace {

void Print(const Tavrin::Standalone::LogLine& line) {
  std::cout << Tavrin::Log::GetMinLogLevel() << ": " << line.text << '\n';
}

void WriteHandledLine() { Tavrin::Log(2, "somewhere/Source", 12).Stream() << "handled"; }

}  // namespace

int main(int argc, char** argv) {
  const std::string taker = argc > 1 ? argv[1] : "";
  if (taker == "handler") {
    Tavrin::Standalone::SetLogLineHandler(Print);
    WriteHandledLine();
    return 0;
  }
  if (taker == "thread") {
    const Tavrin::Standalone::ThreadLog own(3, Print);
    WriteHandledLine();
    return 0;
  }
  if (taker == "set") {
    Tavrin::Standalone::SetMinLogLevel(3);
  }
  std::cout << "threshold " << Tavrin::Log::GetMinLogLevel() << '\n'
            << "again " << Tavrin::Log::GetMinLogLevel() << '\n'
            << std::flush;
  Tavrin::Log(2, "somewhere/Source", 12).Stream() << "red \x1b[31mtext\nforged";
  return 0;
}
