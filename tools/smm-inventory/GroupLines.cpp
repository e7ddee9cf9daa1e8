#include "tools/smm-inventory/GroupLines.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

#include "report/Describe.h"
#include "report/Table.h"
#include "support/HostAndPort.h"
#include "support/HostRange.h"

namespace Tavrin {
namespace {

struct Group {
  std::string value;
  std::vector<HostAndPort> hosts;
  bool isRead = false;
};

/// The field, as people are shown it; empty where it was not read.
std::string ValueOf(std::string_view field, const Reading& reading) {
  for (const Answer& answer : AllAnswers(reading)) {
    if (answer.key == field && answer.outcome.Succeeded()) {
      return ShownText(answer.rows.front().fields.front());
    }
  }
  return "";
}

std::vector<Group> GroupsOf(std::string_view field, const std::vector<EnclosureReading>& enclosures,
                            const std::vector<Target>& targets) {
  std::map<std::string, std::vector<HostAndPort>> hosts;
  for (const EnclosureReading& enclosure : enclosures) {
    hosts[ValueOf(field, enclosure.reading)].push_back(PlaceOf(targets[enclosure.index]));
  }
  std::vector<Group> groups;
  groups.reserve(hosts.size());
  for (auto& [value, those] : hosts) {
    groups.push_back({value.empty() ? "not read" : value, std::move(those), !value.empty()});
  }
  std::stable_sort(groups.begin(), groups.end(), [](const Group& one, const Group& other) {
    return std::make_pair(!one.isRead, other.hosts.size()) <
           std::make_pair(!other.isRead, one.hosts.size());
  });
  return groups;
}

}  // namespace

const std::vector<std::string_view>& GroupFields() {
  static const std::vector<std::string_view> fields = {
      "generation",  "platformId",   "psuSlotCount",    "nodeCount",
      "machineType", "serialNumber", "firmwareVersion", "name"};
  return fields;
}

std::string GroupLines(std::string_view field, const std::vector<EnclosureReading>& enclosures,
                       const std::vector<Target>& targets) {
  const std::vector<Group> groups = GroupsOf(field, enclosures, targets);
  std::size_t width = 0;
  for (const Group& group : groups) {
    width = std::max(width, group.value.size());
  }
  std::string lines;
  for (const Group& group : groups) {
    lines += fmt::format("{:<{}}  {:>4}: {}\n", group.value, width, group.hosts.size(),
                         FoldHosts(group.hosts));
  }
  return lines;
}

}  // namespace Tavrin
