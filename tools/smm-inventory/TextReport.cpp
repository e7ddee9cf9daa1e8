#include "tools/smm-inventory/TextReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "platform/standalone/logger/LogControl.h"

namespace Tavrin {
namespace {

constexpr const char* kNotRead = "not read";
constexpr const char* kColumnGap = "  ";

using Cells = std::vector<std::string>;

std::string ShownText(const Field& field) {
  if (!field.text) {
    return kNotRead;
  }
  if (field.text->empty()) {
    return field.absence.empty() ? "(empty)" : "-";
  }
  return Standalone::EscapeControlBytes(*field.text);
}

bool IsNumbered(const Query& query) {
  return query.shape == Query::Shape::RecordOfNode || query.shape == Query::Shape::RecordPerSlot;
}

/// One line a field: its label and its text.
std::vector<Cells> FieldLines(const std::vector<Query>& queries) {
  std::vector<Cells> lines;
  for (const Query& query : queries) {
    for (const Field& field : query.rows.front().fields) {
      lines.push_back({field.label, ShownText(field)});
    }
  }
  return lines;
}

/// A heading and one line a row; nothing where there are no rows.
std::vector<Cells> TableLines(const std::vector<Query>& queries) {
  std::vector<Cells> lines;
  for (const Query& query : queries) {
    for (const Row& row : query.rows) {
      Cells labels = {query.shape == Query::Shape::RecordOfNode ? "node" : "slot"};
      Cells texts = {fmt::to_string(row.number)};
      for (const Field& field : row.fields) {
        labels.push_back(field.label);
        texts.push_back(ShownText(field));
      }
      if (lines.empty()) {
        lines.push_back(std::move(labels));
      }
      lines.push_back(std::move(texts));
    }
  }
  return lines;
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

void PrintNote(std::ostream& out, const Query& query) {
  if (!query.note.empty()) {
    out << kColumnGap << query.note << '\n';
  }
}

}  // namespace

void PrintSection(std::ostream& out, const Section& section) {
  const bool isTable = !section.queries.empty() && IsNumbered(section.queries.front());
  std::vector<Cells> lines = isTable ? TableLines(section.queries) : FieldLines(section.queries);
  if (lines.empty()) {
    lines = {{kNotRead}};
  }
  const std::vector<std::size_t> widths = Widths(lines);
  out << '\n' << section.title << '\n';
  for (const Cells& cells : lines) {
    // The last cell of a line needs no blanks after it.
    for (std::size_t column = 0; column + 1 < cells.size(); ++column) {
      out << fmt::format("{}{:<{}}", kColumnGap, cells[column], widths[column]);
    }
    out << kColumnGap << cells.back() << '\n';
  }
  for (const Query& query : section.queries) {
    PrintNote(out, query);
  }
  out << std::flush;
}

void PrintNoSections(std::ostream& out) { out << "\nnothing read\n" << std::flush; }

}  // namespace Tavrin
