#include "fleet/TargetList.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

#include "fleet/Settings.h"
#include "support/EscapeControlBytes.h"
#include "support/HostAndPort.h"
#include "support/HostRange.h"
#include "support/UsageError.h"

namespace Tavrin {
namespace {

/// The same text for whatever is the same name or address.
std::string KeyOf(const std::string& host) {
  const std::size_t zone = std::min(host.find('%'), host.size());
  in6_addr address{};
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (inet_pton(AF_INET6, host.substr(0, zone).c_str(), &address) == 1 &&
      inet_ntop(AF_INET6, &address, text.data(), text.size()) != nullptr) {
    return text.data() + host.substr(zone);
  }
  std::string key = host;
  std::transform(key.begin(), key.end(), key.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return key;
}

/// An address and port, such that the same ones are equal.
using Place = std::pair<std::string, std::uint16_t>;

/// A host of the hosts file.
struct FileHost {
  const HostsLine* line;
  const HostAndPort* place;
};

/// The hosts file, to be asked for groups and hosts.
class Directory {
 public:
  explicit Directory(const std::optional<HostsFile>& file) : file_(file) {
    for (const FileHost& host : All()) {
      byHost_.emplace(KeyOf(host.place->host), host);
    }
  }

  /// What `@group` names.
  [[nodiscard]] std::vector<FileHost> Group(const std::string& item) const {
    const std::string name = item.substr(1);
    RequireGroup(item, name);
    std::vector<FileHost> hosts = All();
    const auto isOther = [&](const FileHost& host) {
      return name != "all" && host.line->group != name;
    };
    hosts.erase(std::remove_if(hosts.begin(), hosts.end(), isOther), hosts.end());
    return hosts;
  }

  /// Where the file names that host, in its order.
  [[nodiscard]] std::vector<FileHost> Find(const std::string& host) const {
    std::vector<FileHost> found;
    const auto range = byHost_.equal_range(KeyOf(host));
    std::transform(range.first, range.second, std::back_inserter(found),
                   [](const auto& entry) { return entry.second; });
    return found;
  }

 private:
  [[nodiscard]] std::vector<FileHost> All() const {
    std::vector<FileHost> hosts;
    if (file_) {
      for (const HostsLine& line : file_->lines) {
        std::transform(line.hosts.begin(), line.hosts.end(), std::back_inserter(hosts),
                       [&line](const HostAndPort& place) {
                         return FileHost{&line, &place};
                       });
      }
    }
    return hosts;
  }

  void RequireGroup(const std::string& item, const std::string& name) const {
    if (!file_) {
      throw UsageError(fmt::format("group is \"{}\"; expected a hosts file that has its heading",
                                   EscapeControlBytes(item)));
    }
    const std::vector<std::string>& groups = file_->groups;
    if (name != "all" && std::find(groups.begin(), groups.end(), name) == groups.end()) {
      throw UsageError(fmt::format("group is \"{}\"; expected one of @all{}{}",
                                   EscapeControlBytes(item), groups.empty() ? "" : ", @",
                                   fmt::join(groups, ", @")));
    }
  }

  const std::optional<HostsFile>& file_;
  std::multimap<std::string, FileHost> byHost_;
};

/// What is not to be asked.
class Exclusion {
 public:
  void Add(const HostAndPort& place) {
    if (place.port) {
      places_.emplace(KeyOf(place.host), *place.port);
    } else {
      hosts_.insert(KeyOf(place.host));
    }
  }

  [[nodiscard]] bool Holds(const Place& place) const {
    return hosts_.count(place.first) != 0 || places_.count(place) != 0;
  }

 private:
  std::set<std::string> hosts_;
  std::set<Place> places_;
};

/// Puts the list together.
class TargetCollector {
 public:
  explicit TargetCollector(const TargetRequest& request)
      : port_(request.port), directory_(request.file) {
    ForEachItem(request.excludes, [this](const std::string& item) { Exclude(item); });
    if (request.hosts.empty()) {
      AddAll(directory_.Group("@all"));
    }
    ForEachItem(request.hosts, [this](const std::string& item) { Add(item); });
  }

  [[nodiscard]] TargetList Result() && {
    if (list_.targets.empty()) {
      throw UsageError("no host is left; expected at least one that is named and not excluded");
    }
    if (!repeated_.empty()) {
      list_.notes.push_back("named more than once and asked once: " + FoldHosts(repeated_));
    }
    return std::move(list_);
  }

 private:
  template <typename Take>
  static void ForEachItem(const std::vector<std::string>& lists, Take take) {
    for (const std::string& list : lists) {
      for (const std::string& item : SplitHostList(list)) {
        take(item);
      }
    }
  }

  void Exclude(const std::string& item) {
    if (item.front() != '@') {
      for (const HostAndPort& place : ExpandHosts(item)) {
        exclusion_.Add(place);
      }
      return;
    }
    for (const FileHost& host : directory_.Group(item)) {
      exclusion_.Add({host.place->host, PortOf(*host.place)});
    }
  }

  void Add(const std::string& item) {
    if (item.front() == '@') {
      AddAll(directory_.Group(item));
      return;
    }
    for (const HostAndPort& place : ExpandHosts(item)) {
      AddNamed(place);
    }
  }

  void AddAll(const std::vector<FileHost>& hosts) {
    for (const FileHost& host : hosts) {
      const HostsLine& line = *host.line;
      AddTarget(
          {host.place->host, PortOf(*host.place), line.group, line.settings, line.writtenSettings});
    }
  }

  void AddNamed(const HostAndPort& place) {
    std::vector<FileHost> known = directory_.Find(place.host);
    const auto isOther = [&](const FileHost& host) {
      return place.port && PortOf(*host.place) != *place.port;
    };
    known.erase(std::remove_if(known.begin(), known.end(), isOther), known.end());
    if (known.empty()) {
      AddTarget({place.host, PortOf(place), "", {}, ""});
    }
    AddAll(known);
  }

  /// Whether that host, written alone, would stand for that port.
  [[nodiscard]] bool IsPortPlain(const std::string& host, std::uint16_t port) const {
    const std::vector<FileHost> known = directory_.Find(host);
    return known.empty() ? PortOf({host, std::nullopt}) == port
                         : std::all_of(known.begin(), known.end(), [&](const FileHost& each) {
                             return PortOf(*each.place) == port;
                           });
  }

  void AddTarget(Target target) {
    target.isPortPlain = IsPortPlain(target.host, target.port);
    const Place place = {KeyOf(target.host), target.port};
    if (exclusion_.Holds(place)) {
      return;
    }
    if (!taken_.insert(place).second) {
      NoteRepeated(place, target);
      return;
    }
    list_.targets.push_back(std::move(target));
    if (list_.targets.size() > kMostHosts) {
      throw UsageError(
          fmt::format("more than {} hosts are named; expected at most that many", kMostHosts));
    }
  }

  void NoteRepeated(const Place& place, const Target& target) {
    if (noted_.insert(place).second) {
      repeated_.push_back({target.host, target.port});
    }
  }

  [[nodiscard]] std::uint16_t PortOf(const HostAndPort& place) const {
    return place.port.value_or(port_.value_or(kDefaultPort));
  }

  std::optional<std::uint16_t> port_;
  Directory directory_;
  Exclusion exclusion_;
  std::set<Place> taken_;
  std::set<Place> noted_;
  std::vector<HostAndPort> repeated_;
  TargetList list_;
};

}  // namespace

TargetList MakeTargetList(const TargetRequest& request) {
  return TargetCollector(request).Result();
}

}  // namespace Tavrin
