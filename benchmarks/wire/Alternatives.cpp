#include "benchmarks/wire/Alternatives.h"

#include <freeipmi/freeipmi.h>

#include <array>
#include <memory>
#include <stdexcept>

#include "platform/standalone/HexByte.h"
#include "platform/standalone/ipmi_client/ConnectSettings.h"
#include "tests/support/Child.h"

namespace Tavrin {
namespace {

/// What the library passes to its client.
constexpr unsigned long kCipherSuite = 3;
/// The controller's logical unit, which ipmi-raw wants in front of each request.
constexpr const char* kLun = "0";

using Context = std::unique_ptr<ipmi_ctx, decltype(&ipmi_ctx_destroy)>;
using Standalone::ConnectSettings;

ConnectSettings ClientSettings(const TavrinConnection::ConnectionInfo& info) {
  ConnectSettings settings;
  if (Standalone::ReadConnectSettings(std::to_string(info.port), kCipherSuite, settings)) {
    throw std::runtime_error("the configuration is out of range");
  }
  return settings;
}

/// With which the client begins, too.
unsigned int FirstIntervalMs(const ConnectSettings& settings) {
  return static_cast<unsigned int>(Standalone::RepetitionInterval(settings, 0).count());
}

std::string HostAndPort(const TavrinConnection::ConnectionInfo& info) {
  return info.address + ":" + std::to_string(info.port);
}

std::string IpmiRawConfiguration(const TavrinConnection::ConnectionInfo& info,
                                 const Patience& patience) {
  const ConnectSettings settings = ClientSettings(info);
  return "driver-type LAN_2_0\nusername " + info.userName + "\npassword " + info.password +
         "\ncipher-suite-id " + std::to_string(settings.cipherSuite) +
         "\nprivilege-level ADMIN\nworkaround-flags opensesspriv\nsession-timeout " +
         std::to_string(patience.sessionTimeout.count()) + "\nretransmission-timeout " +
         std::to_string(patience.retransmissionTimeout.count()) + "\n";
}

/// A request as both tools take it.
std::vector<std::string> BytesOf(const IPMICOMMAND& request) {
  std::vector<std::string> bytes = {Standalone::HexByte(request.netFn),
                                    Standalone::HexByte(request.cmd)};
  for (const std::uint8_t byte : request.data) {
    bytes.push_back(Standalone::HexByte(byte));
  }
  return bytes;
}

}  // namespace

void BareExchange(const TavrinConnection::ConnectionInfo& info, const IPMICOMMAND& request) {
  static const ConnectSettings settings = ClientSettings(info);
  const std::string host = HostAndPort(info);
  std::vector<std::uint8_t> sent = {request.cmd};
  sent.insert(sent.end(), request.data.begin(), request.data.end());
  std::array<std::uint8_t, 1024> answer{};
  const Context context(ipmi_ctx_create(), &ipmi_ctx_destroy);
  if (ipmi_ctx_open_outofband_2_0(
          context.get(), host.c_str(), info.userName.c_str(), info.password.c_str(), nullptr, 0,
          settings.privilegeLevel, settings.cipherSuite, settings.sessionTimeoutMs,
          FirstIntervalMs(settings), settings.workaroundFlags, IPMI_FLAGS_DEFAULT) != 0 ||
      ipmi_cmd_raw(context.get(), IPMI_BMC_IPMB_LUN_BMC, request.netFn, sent.data(),
                   static_cast<unsigned int>(sent.size()), answer.data(), answer.size()) < 2 ||
      answer[1] != 0 || ipmi_ctx_close(context.get()) != 0) {
    throw std::runtime_error(std::string("a bare exchange failed: ") +
                             ipmi_ctx_errormsg(context.get()));
  }
}

std::string IpmiRawFile(const std::vector<IPMICOMMAND>& requests) {
  std::string content;
  for (const IPMICOMMAND& request : requests) {
    content += kLun;
    for (const std::string& byte : BytesOf(request)) {
      content += " " + byte;
    }
    content += "\n";
  }
  return content;
}

Patience PatienceOfTheClient(const TavrinConnection::ConnectionInfo& info) {
  const ConnectSettings settings = ClientSettings(info);
  return {std::chrono::milliseconds(settings.sessionTimeoutMs),
          std::chrono::milliseconds(FirstIntervalMs(settings))};
}

CommandLines::CommandLines(const TavrinConnection::ConnectionInfo& settings,
                           const Patience& patience)
    : settings_(settings),
      ipmiRawConfiguration_(IpmiRawConfiguration(settings, patience)),
      ipmitoolPassword_(settings.password + "\n") {}

std::vector<std::string> CommandLines::IpmiRaw(const IPMICOMMAND& request) const {
  return Joined({"ipmi-raw", "--config-file", ipmiRawConfiguration_.Path(), "-h",
                 HostAndPort(settings_), kLun},
                BytesOf(request));
}

std::vector<std::string> CommandLines::IpmiRaw(const TemporaryFile& requests) const {
  return {"ipmi-raw", "--config-file",        ipmiRawConfiguration_.Path(),
          "-h",       HostAndPort(settings_), "--file=" + requests.Path()};
}

// Without a cipher suite on its command line ipmitool would ask for those that the controller has.
std::vector<std::string> CommandLines::Ipmitool(const IPMICOMMAND& request) const {
  return Joined(
      {"ipmitool", "-I", "lanplus", "-H", settings_.address, "-p", std::to_string(settings_.port),
       "-U", settings_.userName, "-f", ipmitoolPassword_.Path(), "-C", std::to_string(kCipherSuite),
       "-L", "ADMINISTRATOR", "raw"},
      BytesOf(request));
}

}  // namespace Tavrin
