#include "report/HtmlTables.h"

#include <fmt/format.h>

#include <optional>
#include <utility>
#include <vector>

#include "report/Describe.h"
#include "report/Escape.h"
#include "report/FailureWords.h"
#include "report/HtmlText.h"
#include "report/Table.h"

namespace Tavrin {
namespace {

/// The first cell says what the row is of.
std::string HtmlRow(const std::vector<std::string>& texts) {
  std::string cells = "<th scope=\"row\">" + HtmlShown(texts.front()) + "</th>";
  for (std::size_t column = 1; column < texts.size(); ++column) {
    cells += "<td>" + HtmlShown(texts[column]) + "</td>";
  }
  return HtmlElement("tr", cells);
}

std::string HtmlHeading(const std::vector<std::string>& texts) {
  std::string cells;
  for (const std::string& text : texts) {
    cells += "<th scope=\"col\">" + HtmlShown(text) + "</th>";
  }
  return texts.empty() ? "" : HtmlElement("tr", cells);
}

std::string HtmlTable(const Section& section) {
  const Table table = TableOf(section);
  if (table.rows.empty()) {
    return HtmlElement("p", kNotRead);
  }
  std::string rows = HtmlHeading(table.heading);
  for (const std::vector<std::string>& row : table.rows) {
    rows += HtmlRow(row);
  }
  return HtmlElement("div class=\"scroll\"", HtmlElement("table", '\n' + rows));
}

std::string NameWithNumber(const Answer& answer) {
  return answer.shape == Answer::Shape::RecordOfNode
             ? fmt::format("{} of node {}", answer.name, answer.rows.front().number)
             : answer.name;
}

/// What failed for one reason.
struct UnreadQueries {
  std::string reason;
  std::vector<std::string> names;
};

/// Queries in a row that failed alike are told together.
std::vector<UnreadQueries> UnreadOf(const Section& section) {
  std::vector<UnreadQueries> unread;
  for (const Answer& answer : section.answers) {
    if (!answer.outcome.Succeeded()) {
      std::string reason = PlainText(FailureReason(answer.outcome.status, answer.outcome.cause));
      if (unread.empty() || unread.back().reason != reason) {
        unread.push_back({std::move(reason), {}});
      }
      unread.back().names.push_back(NameWithNumber(answer));
    }
  }
  return unread;
}

std::string HtmlRemarks(const Section& section) {
  std::string remarks;
  for (const Answer& answer : section.answers) {
    remarks += answer.note.empty() ? "" : HtmlElement("p", HtmlText(answer.note));
  }
  for (const UnreadQueries& queries : UnreadOf(section)) {
    const std::string names = fmt::format("{}", fmt::join(queries.names, ", "));
    remarks += HtmlElement("p", HtmlShown(names + " not read: " + queries.reason));
  }
  return remarks;
}

}  // namespace

std::string HtmlTables(const Reading& reading) {
  std::string tables;
  for (const Part part : kEveryPart) {
    if (const std::optional<Section> section = Describe(reading, part)) {
      tables +=
          HtmlElement("section class=\"part\"", '\n' + HtmlElement("h3", HtmlText(section->title)) +
                                                    HtmlTable(*section) + HtmlRemarks(*section));
    }
  }
  return tables.empty() ? "" : HtmlElement("div class=\"parts\"", '\n' + tables);
}

}  // namespace Tavrin
