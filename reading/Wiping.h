#pragma once

#include <cstring>
#include <string>

namespace Tavrin {

/// Overwrites the text's bytes, those behind its end included, and empties it.
inline void WipeText(std::string& text) {
  text.resize(text.capacity());
  explicit_bzero(text.data(), text.size());
  text.clear();
}

/// Wipes the text when it is destroyed, on whichever way the scope ends.
class WipedAtEnd {
 public:
  explicit WipedAtEnd(std::string& text) : text_(text) {}
  ~WipedAtEnd() { WipeText(text_); }
  WipedAtEnd(const WipedAtEnd&) = delete;
  WipedAtEnd& operator=(const WipedAtEnd&) = delete;

 private:
  std::string& text_;
};

}  // namespace Tavrin
