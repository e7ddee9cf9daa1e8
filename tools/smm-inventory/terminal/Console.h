#pragma once

#include <cstddef>
#include <ostream>
#include <string>

namespace Tavrin {

/// Writes lines for people, and one status that changes in place on a terminal. Elsewhere each
/// status is a line of its own. The texts are shown as they are: what came from a controller is to
/// be escaped before.
class Console {
 public:
  /// `out` outlives the console. `terminal` is the descriptor behind it where its width is to be
  /// looked at; a negative one stands for none.
  Console(std::ostream& out, bool isTerminal, int terminal = -1)
      : out_(out), isTerminal_(isTerminal), terminal_(terminal) {}

  void ShowLine(const std::string& text);

  /// Replaces the status before. On a terminal a status is cut to one row.
  void ShowStatus(const std::string& text);
  void EndStatus();

 private:
  [[nodiscard]] std::size_t RowLength() const;
  [[nodiscard]] std::string VisibleStatus() const;
  void Erase();

  std::ostream& out_;
  bool isTerminal_;
  int terminal_;
  std::string status_;
};

}  // namespace Tavrin
