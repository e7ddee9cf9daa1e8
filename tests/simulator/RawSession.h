#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "simulator/Message.h"

namespace Tavrin::Simulator {

/// An IPMI 2.0 session that sends raw requests.
class RawSession {
 public:
  /// Opens a session at `address` ("127.0.0.1:623"). Throws std::runtime_error with the cause when
  /// it is refused. `timeout` is how long an answer may take, and how long the session may rest
  /// before FreeIPMI takes it for gone; requests are repeated every 0.5 seconds.
  RawSession(const std::string& address, const std::string& user, const std::string& password,
             unsigned int cipherSuite = 3,
             std::chrono::milliseconds timeout = std::chrono::milliseconds(1200));
  ~RawSession();

  /// The completion code followed by the data; empty when no answer came within the time-out.
  Bytes Send(std::uint8_t netFn, std::uint8_t command, const Bytes& data = {});

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Tavrin::Simulator
