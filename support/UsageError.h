#pragma once

#include <stdexcept>

namespace Tavrin {

/// What a user gave cannot be used: the command line, the environment, a hosts file or the source
/// of a password. what() is one sentence that names the thing, the value and what was expected, and
/// in a file the line; it never holds a password.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace Tavrin
