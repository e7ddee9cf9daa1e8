#include "tools/smm-inventory/terminal/Console.h"

#include <sys/ioctl.h>

namespace Tavrin {

void Console::ShowLine(const std::string& text) {
  Erase();
  out_ << text << '\n' << VisibleStatus() << std::flush;
}

void Console::ShowStatus(const std::string& text) {
  if (!isTerminal_) {
    ShowLine(text);
    return;
  }
  if (text == status_) {
    return;
  }
  Erase();
  status_ = text;
  out_ << VisibleStatus() << std::flush;
}

void Console::EndStatus() {
  Erase();
  out_ << std::flush;
  status_.clear();
}

/// How many characters a row holds. Some terminals begin the next row once the last column is
/// taken, so that one stays free. A terminal may say that it has no columns, or be of another width
/// at the next look.
std::size_t Console::RowLength() const {
  winsize size{};
  const bool isKnown = ioctl(terminal_, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col - std::size_t{1} : std::string::npos;
}

std::string Console::VisibleStatus() const { return status_.substr(0, RowLength()); }

void Console::Erase() {
  if (!status_.empty()) {
    out_ << "\r\x1b[K";
  }
}

}  // namespace Tavrin
