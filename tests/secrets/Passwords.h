#pragma once

#include <gmock/gmock.h>

#include <string>

#include "tests/secrets/Traces.h"

namespace Tavrin {

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
