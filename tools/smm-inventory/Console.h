#pragma once

#include <ostream>
#include <string>

namespace Tavrin {

/// Writes lines for people, and one status that changes in place on a terminal. Elsewhere each
/// status is a line of its own. The texts are shown as they are: what came from a controller is to
/// be escaped before.
class Console {
 public:
  /// `out` outlives the console.
  Console(std::ostream& out, bool isTerminal) : out_(out), isTerminal_(isTerminal) {}

  void ShowLine(const std::string& text);

  /// Replaces the status before. A status fits one row of any terminal: at most 79 characters.
  void ShowStatus(const std::string& text);
  void EndStatus();

 private:
  void Erase();

  std::ostream& out_;
  bool isTerminal_;
  std::string status_;
};

}  // namespace Tavrin
