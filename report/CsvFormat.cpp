#include "report/CsvFormat.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "report/Describe.h"
#include "report/Escape.h"
#include "report/FailureWords.h"
#include "report/Pieces.h"

namespace Tavrin {
namespace {

constexpr const char* kHeader = "enclosure,query,number,field,value,text,reason\r\n";

/// The columns of one row, in the header's order.
using Columns = std::array<std::string, 7>;

std::string ToText(std::monostate /*nothing*/) { return ""; }
std::string ToText(bool flag) { return flag ? "true" : "false"; }
std::string ToText(std::int64_t number) { return fmt::to_string(number); }
std::string ToText(const std::string& text) { return text; }

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    quoted.append(c == '"' ? 2 : 1, c);
  }
  return quoted + '"';
}

std::string Cell(const std::string& content) {
  const std::string text = PlainText(content);
  return text.find_first_of(",\"") == std::string::npos ? text : Quoted(text);
}

std::string Line(Columns columns) {
  std::transform(columns.begin(), columns.end(), columns.begin(), Cell);
  return fmt::format("{}\r\n", fmt::join(columns, ","));
}

std::string Lines(const std::string& address, const Answer& answer, const Row& row) {
  const std::string number = row.number == 0 ? "" : fmt::to_string(row.number);
  std::string lines;
  for (const Field& field : row.fields) {
    const std::string value =
        std::visit([](const auto& content) { return ToText(content); }, field.value);
    lines += Line(
        {address, answer.key, number, field.key, value, field.text.value_or(""), field.absence});
  }
  return lines;
}

std::string Lines(const std::string& address, const Answer& answer) {
  if (answer.rows.empty() && !answer.outcome.Succeeded()) {
    return Line({address, answer.key, "", "", "", "",
                 FailureReason(answer.outcome.status, answer.outcome.cause)});
  }
  std::string lines;
  for (const Row& row : answer.rows) {
    lines += Lines(address, answer, row);
  }
  return lines;
}

std::string LinesOfPart(const Reading& reading, Part part) {
  std::string lines;
  if (const std::optional<Section> section = Describe(reading, part)) {
    for (const Answer& answer : section->answers) {
      lines += Lines(reading.address, answer);
    }
  }
  return lines;
}

std::string LineOfFailure(const Reading& reading) {
  return reading.failure ? Line({reading.address, "", "", "", "", "",
                                 FailureReason(reading.failure->status, reading.failure->cause)})
                         : "";
}

std::string LinesOfEnclosure(const EnclosureReading& enclosure, const ReportContext& /*context*/) {
  return EachPart(enclosure.reading, LinesOfPart) + LineOfFailure(enclosure.reading);
}

std::string HeaderAndLines(const EnclosureReading& enclosure, const ReportContext& context) {
  return kHeader + LinesOfEnclosure(enclosure, context);
}

}  // namespace

Format CsvFormat() {
  return {"csv",
          "One row a value, for spreadsheets",
          HeaderAndLines,
          {Order::AsAsked, kHeader, LinesOfEnclosure, NoEndOfSeveral}};
}

}  // namespace Tavrin
