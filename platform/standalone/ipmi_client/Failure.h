#pragma once

#include <string>

namespace Tavrin {
namespace Standalone {

/// Why a step of a conversation failed.
struct Failure {
  int result = 0;     ///< One of ConnectResult.
  std::string cause;  ///< The cause in words, and what to try.
};

/// What FreeIPMI's error number means when a session could not be opened.
Failure OpeningFailure(int errnum);

/// What FreeIPMI's error number means when a request over an open session got no answer.
Failure ExchangeFailure(int errnum);

}  // namespace Standalone
}  // namespace Tavrin
