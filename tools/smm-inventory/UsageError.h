#pragma once

#include <stdexcept>

namespace Tavrin {

/// The command line, the environment or the source of the password holds something that the tool
/// cannot use. what() is one sentence that names the thing, the value and what was expected; it
/// never holds a password.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace Tavrin
