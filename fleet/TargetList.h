#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fleet/HostsFile.h"
#include "fleet/Target.h"

namespace Tavrin {

/// Which enclosures are to be asked, as a user says it.
struct TargetRequest {
  /// Lists as ExpandHosts() takes them, in which `@group` stands for all that is under that heading
  /// of the hosts file and `@all` for all of it.
  std::vector<std::string> hosts;
  std::vector<std::string> excludes;

  std::optional<HostsFile> file;

  /// For hosts that say none, beside them or on their line; without it that is kDefaultPort.
  std::optional<std::uint16_t> port;
};

/// The enclosures that are asked, and what a user should know about that, a sentence each.
struct TargetList {
  std::vector<Target> targets;
  std::vector<std::string> notes;
};

/// The enclosures that the request names, at least one and at most kMostHosts, in its order: those
/// of `hosts`, or the whole hosts file where that is empty. A host that the hosts file names, too,
/// has its group and settings from there; without a port it stands for all ports that the file
/// gives it. What `excludes` names is left out, with every port unless one is written. The same
/// address and port stands there once, as where it was named first, and a note says so; names are
/// the same whatever their case, addresses however they are written.
///
/// Throws UsageError for a list that is none, a group that the hosts file does not have, a port
/// beside a host of `hosts` that is not the request's, too many enclosures, and none.
TargetList MakeTargetList(const TargetRequest& request);

}  // namespace Tavrin
