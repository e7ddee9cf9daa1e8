#include "report/HtmlSchematic.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <optional>
#include <variant>

#include "report/Describe.h"
#include "report/HtmlText.h"
#include "report/Table.h"

namespace Tavrin {
namespace {

// In units of the drawing, which are those of the screen where it has room.
constexpr int kNodeWidth = 210;
constexpr int kNodeHeight = 48;
constexpr int kNodeGap = 8;
constexpr int kNodeColumns = 2;
constexpr int kPsuWidth = 104;
constexpr int kPsuHeight = 66;
constexpr int kTextInset = 8;
constexpr int kFirstLine = 19;
constexpr int kLineHeight = 19;

/// A node or PSU, and all that was read of it.
struct DrawnUnit {
  /// What its state is called, such as "Power ON"; empty when nothing was asked that tells it.
  std::string state;

  /// Whether it takes both columns.
  bool isWide = false;

  /// A text a section that tells of it.
  std::vector<std::string> told = {};
};

/// By number.
using DrawnUnits = std::map<std::size_t, DrawnUnit>;

bool HasWord(const Field& field, const char* word) {
  const auto* const text = std::get_if<std::string>(&field.value);
  return text != nullptr && *text == word;
}

void AddRow(DrawnUnit& unit, const Section& section, const Row& row, const char* stateKey) {
  std::vector<std::string> texts;
  for (const Field& field : row.fields) {
    texts.push_back(field.label + ' ' + ShownText(field));
    if (field.key == stateKey) {
      unit.state = field.absence.empty() || !field.text ? ShownText(field) : "not told";
    }
    unit.isWide = unit.isWide || (field.key == "width" && HasWord(field, "full"));
  }
  unit.told.push_back(fmt::format("{}: {}", section.title, fmt::join(texts, ", ")));
}

/// Those that the parts tell of; `stateKey` names the field with the state.
DrawnUnits UnitsOf(const Reading& reading, const std::vector<Part>& parts, const char* stateKey) {
  DrawnUnits units;
  for (const Part part : parts) {
    if (const std::optional<Section> section = Describe(reading, part)) {
      for (const Answer& answer : section->answers) {
        for (const Row& row : answer.rows) {
          AddRow(units[row.number], *section, row, stateKey);
        }
      }
    }
  }
  return units;
}

/// How bad what is said of the one with this number is.
Severity SeverityOf(const std::vector<Finding>& findings, HealthKind kind, std::size_t number) {
  std::vector<Finding> own;
  std::copy_if(findings.begin(), findings.end(), std::back_inserter(own),
               [kind, number](const Finding& finding) {
                 return finding.rule->kind == kind && finding.number == number;
               });
  return WorstOf(own);
}

/// Nothing where there is nothing to say.
std::string SvgText(int x, int y, const std::string& place, const std::string& content) {
  return content.empty()
             ? ""
             : HtmlElement(fmt::format(R"(text x="{}" y="{}"{})", x, y, place), content);
}

std::string SvgTitle(const std::string& name, const DrawnUnit& unit) {
  return HtmlElement("title", HtmlShown(fmt::format("{}. {}", name, fmt::join(unit.told, "; "))));
}

std::string SvgBox(int x, int y, int width, int height) {
  return fmt::format("<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" rx=\"5\"/>\n", x, y, width,
                     height);
}

/// What is well has neither mark nor colour.
std::string MarkOfFault(Severity severity) {
  return severity == Severity::Ok ? "" : HtmlMark(severity);
}

std::string SvgNode(std::size_t number, const DrawnUnit& node, Severity severity, int column,
                    int row) {
  const std::string name = fmt::format("node {}", number);
  const int width = node.isWide ? kNodeColumns * kNodeWidth + kNodeGap : kNodeWidth;
  // The outline is within the drawing.
  const int x = 1 + column * (kNodeWidth + kNodeGap);
  const int y = 1 + row * (kNodeHeight + kNodeGap);
  const int line = y + kFirstLine;
  return HtmlElement(
      fmt::format("g class=\"{}\"", HtmlClass(severity)),
      '\n' + SvgTitle(name, node) + SvgBox(x, y, width, kNodeHeight) +
          SvgText(x + kTextInset, line, " class=\"name\"", name) +
          SvgText(x + width - kTextInset, line, " class=\"mark\"", MarkOfFault(severity)) +
          SvgText(x + kTextInset, line + kLineHeight, "", HtmlShown(node.state)));
}

/// Whether a node of this width begins in the column.
bool HasRoom(int column, const DrawnUnit& node) {
  return column + (node.isWide ? kNodeColumns : 1) <= kNodeColumns;
}

std::string SvgNodes(const DrawnUnits& nodes, const std::vector<Finding>& findings) {
  std::string drawn;
  int column = 0;
  int row = 0;
  for (const auto& [number, node] : nodes) {
    if (!HasRoom(column, node)) {
      column = 0;
      ++row;
    }
    drawn += SvgNode(number, node, SeverityOf(findings, HealthKind::Node, number), column, row);
    column += node.isWide ? kNodeColumns : 1;
  }
  const int width = kNodeColumns * (kNodeWidth + kNodeGap) - kNodeGap + 2;
  const int height = (row + 1) * (kNodeHeight + kNodeGap) - kNodeGap + 2;
  const std::string size = fmt::format(
      R"(svg class="nodes" width="{0}" height="{1}" viewBox="0 0 {0} {1}")", width, height);
  return nodes.empty() ? "" : HtmlElement(size, '\n' + drawn);
}

/// A drawing of its own, so that a row that is too long for the screen can be broken.
std::string SvgPsu(std::size_t number, const DrawnUnit& psu, Severity severity) {
  const std::string name = fmt::format("PSU {}", number);
  const std::string size = fmt::format(
      R"(svg class="psu" width="{0}" height="{1}" viewBox="0 0 {0} {1}")", kPsuWidth, kPsuHeight);
  const std::string content =
      SvgTitle(name, psu) + SvgBox(1, 1, kPsuWidth - 2, kPsuHeight - 2) +
      SvgText(kTextInset, kFirstLine, " class=\"name\"", name) +
      SvgText(kTextInset, kFirstLine + kLineHeight, "", HtmlShown(psu.state)) +
      SvgText(kTextInset, kFirstLine + 2 * kLineHeight, "", MarkOfFault(severity));
  return HtmlElement(
      size, '\n' + HtmlElement(fmt::format("g class=\"{}\"", HtmlClass(severity)), '\n' + content));
}

std::string SvgPsus(const DrawnUnits& psus, const std::vector<Finding>& findings) {
  std::string drawn;
  for (const auto& [number, psu] : psus) {
    drawn += SvgPsu(number, psu, SeverityOf(findings, HealthKind::Psu, number));
  }
  return psus.empty() ? "" : HtmlElement("div class=\"psus\"", '\n' + drawn);
}

}  // namespace

std::string HtmlSchematic(const Reading& reading, const std::vector<Finding>& findings) {
  const std::string drawn =
      SvgNodes(UnitsOf(reading, {Part::NodeStatus, Part::NodePower}, "powerState"), findings) +
      SvgPsus(UnitsOf(reading, {Part::PsuFans, Part::PsuFirmware, Part::PsuStatus}, "present"),
              findings);
  return drawn.empty()
             ? ""
             : HtmlElement(
                   "figure",
                   '\n' + drawn +
                       HtmlElement("figcaption", "Schematic: the SMM does not state positions."));
}

}  // namespace Tavrin
