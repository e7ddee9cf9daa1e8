#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace Tavrin::Fuzz {

/// Ends the fuzzer, which then keeps the input, when something does not hold that the code under
/// test promises. `promise` says what should have been.
inline void Require(bool holds, const char* promise) {
  if (!holds) {
    static_cast<void>(std::fprintf(stderr, "Broken promise: %s\n", promise));
    std::abort();
  }
}

/// Reads a datagram as every answer that the IPMI client can wait for. The first byte chooses the
/// cipher suite; the client waits for the number and the session that the datagram names.
void CheckDatagram(const std::string& input);

}  // namespace Tavrin::Fuzz
