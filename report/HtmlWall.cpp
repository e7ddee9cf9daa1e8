#include "report/HtmlWall.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <utility>

#include "report/Escape.h"
#include "report/HtmlText.h"
#include "report/Table.h"

namespace Tavrin {
namespace {

constexpr std::array kWorstToBest = {Severity::Critical, Severity::Warning, Severity::Unknown,
                                     Severity::Ok};

std::string HtmlCounts(const std::vector<JudgedEnclosure>& enclosures) {
  std::vector<std::string> counts;
  for (const Severity severity : kWorstToBest) {
    const auto count = std::count_if(
        enclosures.begin(), enclosures.end(),
        [severity](const JudgedEnclosure& judged) { return judged.severity == severity; });
    // What there is none of has no colour.
    counts.push_back(fmt::format("<span class=\"badge {}\">{} {}</span>",
                                 HtmlClass(count == 0 ? Severity::Ok : severity), count,
                                 HtmlMark(severity)));
  }
  return HtmlElement("p class=\"counts\"", fmt::format("{}", fmt::join(counts, " ")));
}

std::string FirmwareOf(const Reading& reading) {
  const bool isRead = reading.identity && reading.identity->firmwareVersion.value.value;
  return isRead ? PlainText(*reading.identity->firmwareVersion.value.value) : kNotRead;
}

/// How many enclosures have which firmware, the most frequent first.
std::vector<std::pair<std::string, std::size_t>> FirmwareCounts(
    const std::vector<JudgedEnclosure>& enclosures) {
  std::map<std::string, std::size_t> counts;
  for (const JudgedEnclosure& judged : enclosures) {
    ++counts[FirmwareOf(judged.enclosure->reading)];
  }
  std::vector<std::pair<std::string, std::size_t>> sorted(counts.begin(), counts.end());
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const auto& one, const auto& other) { return one.second > other.second; });
  return sorted;
}

std::string HtmlFirmware(const std::vector<JudgedEnclosure>& enclosures) {
  std::string rows =
      HtmlElement("tr", R"(<th scope="col">firmware version</th><th scope="col">enclosures</th>)");
  for (const auto& [version, count] : FirmwareCounts(enclosures)) {
    rows += HtmlElement(
        "tr", fmt::format("<th scope=\"row\">{}</th><td>{}</td>", HtmlShown(version), count));
  }
  return HtmlElement("table", '\n' + rows);
}

std::string HtmlTile(const JudgedEnclosure& judged) {
  const std::string open = fmt::format(R"html(a class="tile {}" href="#{}")html",
                                       HtmlClass(judged.severity), HtmlAnchor(*judged.enclosure));
  std::string content = '\n' + HtmlElement("b", HtmlShown(ShownName(*judged.enclosure))) +
                        HtmlElement("span class=\"mark\"", HtmlMark(judged.severity));
  if (!judged.findings.empty()) {
    content += HtmlElement("small", HtmlShown(FindingsText(judged.findings)));
  }
  return HtmlElement(open, content);
}

/// The group's name and its enclosures, worst first.
using Group = std::pair<std::string, std::vector<JudgedEnclosure>>;

/// A group comes where the first of its enclosures does, which is its worst.
std::vector<Group> GroupsOf(const std::vector<JudgedEnclosure>& worstFirst) {
  std::vector<Group> groups;
  std::map<std::string, std::size_t> places;
  for (const JudgedEnclosure& judged : worstFirst) {
    const std::string& name = judged.enclosure->group;
    const auto [place, isNew] = places.emplace(name, groups.size());
    if (isNew) {
      groups.emplace_back(name, std::vector<JudgedEnclosure>());
    }
    groups[place->second].second.push_back(judged);
  }
  return groups;
}

std::string HtmlGroup(const Group& group) {
  std::string tiles;
  for (const JudgedEnclosure& judged : group.second) {
    tiles += HtmlTile(judged);
  }
  const std::string heading = group.first.empty() ? "" : HtmlElement("h2", HtmlText(group.first));
  return heading + HtmlElement("div class=\"wall\"", '\n' + tiles);
}

}  // namespace

std::string HtmlAnchor(const EnclosureReading& enclosure) {
  return fmt::format("enclosure-{}", enclosure.index);
}

std::string HtmlWall(const std::vector<JudgedEnclosure>& worstFirst) {
  std::string wall = HtmlCounts(worstFirst) + HtmlFirmware(worstFirst);
  for (const Group& group : GroupsOf(worstFirst)) {
    wall += HtmlGroup(group);
  }
  return HtmlElement("nav", '\n' + wall);
}

}  // namespace Tavrin
