#include "report/Table.h"

#include <fmt/format.h>

#include "support/EscapeControlBytes.h"

namespace Tavrin {
namespace {

bool IsNumbered(const Answer& answer) {
  return answer.shape == Answer::Shape::RecordOfNode ||
         answer.shape == Answer::Shape::RecordPerSlot;
}

Table FieldTable(const std::vector<Answer>& answers) {
  Table table;
  for (const Answer& answer : answers) {
    for (const Field& field : answer.rows.front().fields) {
      table.rows.push_back({field.label, ShownText(field)});
    }
  }
  return table;
}

std::vector<std::string> LabelsOf(const Answer& answer) {
  std::vector<std::string> labels = {answer.shape == Answer::Shape::RecordOfNode ? "node" : "slot"};
  for (const Field& field : answer.rows.front().fields) {
    labels.push_back(field.label);
  }
  return labels;
}

std::vector<std::string> TextsOf(const Row& row) {
  std::vector<std::string> texts = {fmt::to_string(row.number)};
  for (const Field& field : row.fields) {
    texts.push_back(ShownText(field));
  }
  return texts;
}

Table RecordTable(const std::vector<Answer>& answers) {
  Table table;
  for (const Answer& answer : answers) {
    if (table.heading.empty() && !answer.rows.empty()) {
      table.heading = LabelsOf(answer);
    }
    for (const Row& row : answer.rows) {
      table.rows.push_back(TextsOf(row));
    }
  }
  return table;
}

}  // namespace

std::string ShownText(const Field& field) {
  if (!field.text) {
    return kNotRead;
  }
  if (field.text->empty()) {
    return field.absence.empty() ? "(empty)" : "-";
  }
  return EscapeControlBytes(*field.text);
}

Table TableOf(const Section& section) {
  const bool isNumbered = !section.answers.empty() && IsNumbered(section.answers.front());
  return isNumbered ? RecordTable(section.answers) : FieldTable(section.answers);
}

}  // namespace Tavrin
