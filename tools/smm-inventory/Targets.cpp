#include "tools/smm-inventory/Targets.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

#include "fleet/HostsFile.h"
#include "fleet/Settings.h"
#include "fleet/TargetList.h"
#include "support/EscapeControlBytes.h"
#include "support/HostAndPort.h"
#include "support/HostRange.h"
#include "support/UsageError.h"
#include "tools/smm-inventory/Options.h"
#include "tools/smm-inventory/RawOptions.h"

namespace Tavrin {
namespace {

TargetSettings SettingsOf(const RawOptions& raw) {
  TargetSettings settings;
  if (!raw.userName.empty()) {
    settings.userName = ParseUserName(raw.userName);
  }
  settings.passwordFile = raw.passwordFile;
  if (raw.cipherSuite) {
    settings.cipherSuite = ParseCipherSuite(*raw.cipherSuite);
  }
  if (raw.privilegeLevel) {
    settings.privilegeLevel = ParsePrivilege(*raw.privilegeLevel);
  }
  if (!raw.workarounds.empty()) {
    settings.workaroundFlags = ParseWorkarounds(raw.workarounds);
  }
  if (raw.attempts) {
    settings.attempts = ParseAttempts(*raw.attempts);
  }
  if (raw.sessionTimeout) {
    settings.sessionTimeoutMs = ParseSessionTimeout(*raw.sessionTimeout);
  }
  return settings;
}

TargetRequest RequestOf(const RawOptions& raw) {
  TargetRequest request;
  request.hosts = raw.hosts;
  request.excludes = raw.excludes;
  if (raw.port) {
    request.port = ParsePort(*raw.port);
  }
  if (raw.hostsFile) {
    request.file = ReadHostsFile(*raw.hostsFile);
  }
  return request;
}

void RequireOneUseOfStandardInput(const RawOptions& raw) {
  if (raw.hostsFile == "-" && raw.passwordFile == "-") {
    throw UsageError(
        "--hosts-file is \"-\" and --password-file is \"-\"; expected standard input for one of "
        "them");
  }
}

[[noreturn]] void RefuseAllButOne(const RawOptions& raw) {
  constexpr const char* expected =
      "expected exactly one for a command that changes something, and neither a range nor a group";
  if (raw.hosts.empty()) {
    throw UsageError(fmt::format("no host is named with --host; {}", expected));
  }
  throw UsageError(fmt::format("host is \"{}\"; {}",
                               EscapeControlBytes(fmt::format("{}", fmt::join(raw.hosts, ","))),
                               expected));
}

/// What changes something is for an enclosure that is named by itself: a range or a group could
/// hold more than was meant.
void RequireOneHost(const RawOptions& raw) {
  const bool isOne =
      raw.hosts.size() == 1 && !IsHostRange(raw.hosts.front()) && raw.hosts.front().front() != '@';
  if (!isOne) {
    RefuseAllButOne(raw);
  }
}

void RequireUser(const Target& target) {
  if (!target.settings.userName) {
    throw UsageError(
        fmt::format("no user name given for {}; expected --user with an IPMI user name, or user= "
                    "on its line of a hosts file",
                    AddressText(target.host, target.port)));
  }
}

}  // namespace

void RequireHosts(const RawOptions& raw) {
  const bool isAnyEmpty =
      std::find(raw.hosts.begin(), raw.hosts.end(), std::string()) != raw.hosts.end();
  if (isAnyEmpty || (raw.hosts.empty() && !raw.hostsFile)) {
    throw UsageError(
        "no host given; expected --host with a host name, an address or a range, or --hosts-file");
  }
}

void TakeTargets(const RawOptions& raw, Options& options) {
  const Command& command = *options.task.command;
  const TargetSettings settings = SettingsOf(raw);
  RequireOneUseOfStandardInput(raw);
  if (command.isForOne) {
    RequireOneHost(raw);
  }
  TargetList list = MakeTargetList(RequestOf(raw));
  if (command.isForOne && list.targets.size() != 1) {
    RefuseAllButOne(raw);
  }
  for (Target& target : list.targets) {
    Complete(target.settings, settings);
    if (!command.AsksNobody()) {
      RequireUser(target);
    }
  }
  options.targets = std::move(list.targets);
  options.notes = std::move(list.notes);
}

}  // namespace Tavrin
