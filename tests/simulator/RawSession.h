#pragma once

#include <memory>
#include <string>

#include "simulator/Message.h"

namespace Tavrin::Simulator {

/// An IPMI 2.0 session that sends raw requests.
class RawSession {
 public:
  /// Opens a session at `address` ("127.0.0.1:623"). Throws std::runtime_error with the cause when
  /// it is refused.
  RawSession(const std::string& address, const std::string& user, const std::string& password,
             unsigned int cipherSuite = 3);
  ~RawSession();

  /// The completion code followed by the data; empty when no answer came within the time-out of 1.2
  /// seconds (requests are repeated every 0.5).
  Bytes Send(std::uint8_t netFn, std::uint8_t command, const Bytes& data = {});

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Tavrin::Simulator
