#include "report/TextFormat.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "report/Describe.h"
#include "report/Pieces.h"
#include "report/Table.h"

namespace Tavrin {
namespace {

constexpr const char* kColumnGap = "  ";

using Cells = std::vector<std::string>;

/// The heading, where there is one, and the rows.
std::vector<Cells> LinesOf(const Section& section) {
  Table table = TableOf(section);
  std::vector<Cells> lines = std::move(table.rows);
  if (!table.heading.empty()) {
    lines.insert(lines.begin(), std::move(table.heading));
  }
  return lines.empty() ? std::vector<Cells>{{kNotRead}} : lines;
}

/// The widest cell of each column.
std::vector<std::size_t> Widths(const std::vector<Cells>& lines) {
  std::vector<std::size_t> widths;
  for (const Cells& cells : lines) {
    widths.resize(std::max(widths.size(), cells.size()));
    for (std::size_t column = 0; column < cells.size(); ++column) {
      widths[column] = std::max(widths[column], cells[column].size());
    }
  }
  return widths;
}

/// The last cell of a line needs no blanks after it.
std::string Aligned(const Cells& cells, const std::vector<std::size_t>& widths) {
  std::string line;
  for (std::size_t column = 0; column + 1 < cells.size(); ++column) {
    line += fmt::format("{}{:<{}}", kColumnGap, cells[column], widths[column]);
  }
  return line + kColumnGap + cells.back() + '\n';
}

std::string SectionText(const Section& section) {
  const std::vector<Cells> lines = LinesOf(section);
  const std::vector<std::size_t> widths = Widths(lines);
  std::string text = fmt::format("\n{}\n", section.title);
  for (const Cells& cells : lines) {
    text += Aligned(cells, widths);
  }
  for (const Answer& answer : section.answers) {
    text += answer.note.empty() ? "" : kColumnGap + answer.note + '\n';
  }
  return text;
}

std::string PartText(const Reading& reading, Part part) {
  const std::optional<Section> section = Describe(reading, part);
  return section ? SectionText(*section) : "";
}

std::string EnclosureText(const EnclosureReading& enclosure, const ReportContext& /*context*/) {
  const Reading& reading = enclosure.reading;
  return reading.address + '\n' + EachPart(reading, PartText) +
         (reading.failure ? "\nnothing read\n" : "");
}

/// A blank line stands between enclosures.
std::string BlockText(const EnclosureReading& enclosure, const ReportContext& context) {
  return (enclosure.index == 0 ? "" : "\n") + EnclosureText(enclosure, context);
}

}  // namespace

Format TextFormat() {
  return {
      "text", "Tables for people", EnclosureText, {Order::AsAsked, "", BlockText, NoEndOfSeveral}};
}

}  // namespace Tavrin
