#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace Tavrin {

/// What `text` tells of a secret of at least eight letters and digits: which parts of eight bytes
/// it holds, and whether as text, in hexadecimal or in base64. Longer parts are made of these.
/// Blanks, separators and prefixes between the bytes hide nothing, nor does the place that a part
/// has in a longer base64 text.
std::vector<std::string> TracesOf(const std::string& secret, const std::string& text);

// No part of one is a part of another, or of anything else that the programs print.
constexpr const char* kPassword = "Zq7kT2mW9xVb4Hn6pR3s";  ///< Of the simulated enclosure's user.
constexpr const char* kWrongPassword = "Yw8jL5nQ3cFd6Gt1zB4u";
constexpr const char* kOverlongPassword = "Xe9hM4rS7vKa2Dj5yP8gN";

MATCHER(TellsNoPassword, negation ? "tells a password" : "tells no password") {
  for (const char* const password : {kPassword, kWrongPassword, kOverlongPassword}) {
    const std::vector<std::string> traces = TracesOf(password, arg);
    *result_listener << testing::PrintToString(traces) << ' ';
    if (!traces.empty()) {
      return false;
    }
  }
  return true;
}

}  // namespace Tavrin
