#include "tests/simulator/RawSession.h"

#include <freeipmi/freeipmi.h>

#include <array>
#include <stdexcept>

namespace Tavrin::Simulator {
namespace {

void CloseAndDestroy(ipmi_ctx_t context) {
  ipmi_ctx_close(context);
  ipmi_ctx_destroy(context);
}

}  // namespace

RawSession::RawSession(const std::string& address, const std::string& user,
                       const std::string& password, std::chrono::milliseconds timeout)
    : context_(ipmi_ctx_create(), CloseAndDestroy) {
  constexpr std::uint8_t kCipherSuite = 3;
  constexpr unsigned int kRetransmissionTimeoutMs = 500;
  if (ipmi_ctx_open_outofband_2_0(
          context_.get(), address.c_str(), user.c_str(), password.c_str(), nullptr, 0,
          IPMI_PRIVILEGE_LEVEL_ADMIN, kCipherSuite, static_cast<unsigned int>(timeout.count()),
          kRetransmissionTimeoutMs, IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_OPEN_SESSION_PRIVILEGE,
          IPMI_FLAGS_DEFAULT) != 0) {
    throw std::runtime_error(ipmi_ctx_errormsg(context_.get()));
  }
}

Bytes RawSession::Send(std::uint8_t netFn, std::uint8_t command, const Bytes& data) {
  Bytes request = {command};
  request.insert(request.end(), data.begin(), data.end());
  std::array<std::uint8_t, 1024> response{};
  const int length =
      ipmi_cmd_raw(context_.get(), 0, netFn, request.data(),
                   static_cast<unsigned int>(request.size()), response.data(), response.size());
  // The command code stands in front of the completion code.
  return length < 1 ? Bytes{} : Bytes(response.begin() + 1, response.begin() + length);
}

}  // namespace Tavrin::Simulator
