#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "simulator/Message.h"

struct ipmi_ctx;

namespace Tavrin::Simulator {

/// An IPMI 2.0 session that sends raw requests.
class RawSession {
 public:
  /// Opens a session at `address` ("127.0.0.1:623"), as a simulated SMM takes it unless it is told
  /// otherwise. Throws std::runtime_error with the cause when it is refused. `timeout` is how long
  /// an answer may take, and how long the session may rest before FreeIPMI takes it for gone;
  /// requests are repeated every 0.5 seconds.
  explicit RawSession(const std::string& address, const std::string& user = "admin",
                      const std::string& password = "sesame",
                      std::chrono::milliseconds timeout = std::chrono::milliseconds(1200));

  /// The completion code followed by the data; empty when no answer came within the time-out.
  Bytes Send(std::uint8_t netFn, std::uint8_t command, const Bytes& data = {});

 private:
  std::unique_ptr<ipmi_ctx, void (*)(ipmi_ctx*)> context_;
};

}  // namespace Tavrin::Simulator
