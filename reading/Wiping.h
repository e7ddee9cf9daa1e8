#pragma once

#include <cstring>
#include <string>

namespace Tavrin {

// For passwords. A program's memory is read by others when it is written to disk or dumped; so what
// need not be there any more is overwritten, in a way that no compiler leaves out.

/// Overwrites the text's bytes, those behind its end included, and empties it. What an earlier
/// growth of the text left behind elsewhere is not reached: reserve before, or assign once. Does
/// not throw.
inline void WipeText(std::string& text) {
  text.resize(text.capacity());
  explicit_bzero(text.data(), text.size());
  text.clear();
}

/// Wipes the text when it is destroyed, on whichever way the scope ends.
class WipedAtEnd {
 public:
  /// The text stays the caller's, and outlives this.
  explicit WipedAtEnd(std::string& text) : text_(text) {}
  ~WipedAtEnd() { WipeText(text_); }
  WipedAtEnd(const WipedAtEnd&) = delete;
  WipedAtEnd& operator=(const WipedAtEnd&) = delete;

 private:
  std::string& text_;
};

}  // namespace Tavrin
