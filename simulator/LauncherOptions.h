#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "simulator/EnclosureKind.h"

namespace Tavrin::Simulator {

/// What the command line asks for, checked.
struct LauncherOptions {
  EnclosureKind kind{};
  std::string address;   ///< A loopback address in numbers, IPv4 or IPv6.
  std::uint16_t port{};  ///< 0: a free one.
  std::string userName;
  std::string password;
  std::string scenario;  ///< Content of the scenario file, already found valid; empty for none.
};

/// A command line that cannot be followed; what() is one sentence.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Thrown when the command line asks for the help text, which is what() returns.
class HelpWanted : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

LauncherOptions ParseLauncherOptions(int argc, const char* const* argv);

}  // namespace Tavrin::Simulator
