#include "report/TextFormat.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "report/Describe.h"
#include "support/EscapeControlBytes.h"

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
  return EscapeControlBytes(*field.text);
}

bool IsNumbered(const Answer& answer) {
  return answer.shape == Answer::Shape::RecordOfNode ||
         answer.shape == Answer::Shape::RecordPerSlot;
}

/// One line a field: its label and its text.
std::vector<Cells> FieldLines(const std::vector<Answer>& answers) {
  std::vector<Cells> lines;
  for (const Answer& answer : answers) {
    for (const Field& field : answer.rows.front().fields) {
      lines.push_back({field.label, ShownText(field)});
    }
  }
  return lines;
}

/// A heading and one line a row; nothing where there are no rows.
std::vector<Cells> TableLines(const std::vector<Answer>& answers) {
  std::vector<Cells> lines;
  for (const Answer& answer : answers) {
    for (const Row& row : answer.rows) {
      Cells labels = {answer.shape == Answer::Shape::RecordOfNode ? "node" : "slot"};
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

/// The last cell of a line needs no blanks after it.
std::string Aligned(const Cells& cells, const std::vector<std::size_t>& widths) {
  std::string line;
  for (std::size_t column = 0; column + 1 < cells.size(); ++column) {
    line += fmt::format("{}{:<{}}", kColumnGap, cells[column], widths[column]);
  }
  return line + kColumnGap + cells.back() + '\n';
}

std::string SectionText(const Section& section) {
  const bool isTable = !section.answers.empty() && IsNumbered(section.answers.front());
  std::vector<Cells> lines = isTable ? TableLines(section.answers) : FieldLines(section.answers);
  if (lines.empty()) {
    lines = {{kNotRead}};
  }
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

std::string Begin(const std::string& address) { return address + '\n'; }

std::string PartText(const Reading& soFar, Part part) {
  const std::optional<Section> section = Describe(soFar, part);
  return section ? SectionText(*section) : "";
}

std::string End(const Reading& reading, const ReportContext& /*context*/) {
  return reading.failure ? "\nnothing read\n" : "";
}

}  // namespace

Format TextFormat() { return {"text", "Tables for people", Begin, PartText, End}; }

}  // namespace Tavrin
