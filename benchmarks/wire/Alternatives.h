#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "platform/ConnectionInfo.h"
#include "platform/IpmiClient.h"
#include "support/TemporaryFile.h"

namespace Tavrin {

/// Opens a session by FreeIPMI's library, with the settings that the library's client would use,
/// sends the request and closes the session, and does nothing else. Throws std::runtime_error
/// unless an answer comes.
void BareExchange(const TavrinConnection::ConnectionInfo& info, const IPMICOMMAND& request);

/// How long a way waits.
struct Patience {
  std::chrono::milliseconds sessionTimeout;
  std::chrono::milliseconds retransmissionTimeout;
};

/// As long as the library's client does at first.
Patience PatienceOfTheClient(const TavrinConnection::ConnectionInfo& info);

/// The content of a file from which ipmi-raw takes its requests.
std::string IpmiRawFile(const std::vector<IPMICOMMAND>& requests);

/// The command lines of FreeIPMI's ipmi-raw and of ipmitool that send one request each. The
/// password is in files. ipmi-raw takes a range of hosts as an address, too, and asks up to 64 of
/// them at once.
class CommandLines {
 public:
  explicit CommandLines(const TavrinConnection::ConnectionInfo& settings)
      : CommandLines(settings, PatienceOfTheClient(settings)) {}

  /// ipmi-raw waits that long; ipmitool has its own ways.
  CommandLines(const TavrinConnection::ConnectionInfo& settings, const Patience& patience);

  std::vector<std::string> IpmiRaw(const IPMICOMMAND& request) const;
  /// All requests of a file, to each host in one session.
  std::vector<std::string> IpmiRaw(const TemporaryFile& requests) const;
  std::vector<std::string> Ipmitool(const IPMICOMMAND& request) const;

 private:
  TavrinConnection::ConnectionInfo settings_;
  TemporaryFile ipmiRawConfiguration_;
  TemporaryFile ipmitoolPassword_;
};

}  // namespace Tavrin
