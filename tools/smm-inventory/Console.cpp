#include "tools/smm-inventory/Console.h"

namespace Tavrin {

void Console::ShowLine(const std::string& text) {
  Erase();
  out_ << text << '\n' << status_ << std::flush;
}

void Console::ShowStatus(const std::string& text) {
  if (!isTerminal_) {
    ShowLine(text);
    return;
  }
  Erase();
  status_ = text;
  out_ << status_ << std::flush;
}

void Console::EndStatus() {
  Erase();
  out_ << std::flush;
  status_.clear();
}

void Console::Erase() {
  if (!status_.empty()) {
    out_ << "\r\x1b[K";
  }
}

}  // namespace Tavrin
