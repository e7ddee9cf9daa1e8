#include "report/HtmlFormat.h"

#include <fmt/format.h>

#include <string>
#include <vector>

#include "report/HealthLines.h"
#include "report/HtmlSchematic.h"
#include "report/HtmlStyle.h"
#include "report/HtmlTables.h"
#include "report/HtmlText.h"
#include "report/HtmlWall.h"
#include "report/Pieces.h"
#include "report/UtcTime.h"

namespace Tavrin {
namespace {

std::string HtmlHead(const std::string& title) {
  return HtmlElement("head",
                     "\n<meta charset=\"utf-8\"/>\n"
                     "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n" +
                         HtmlElement("title", title) + HtmlElement("style", kHtmlStyle));
}

/// The findings in words, behind how bad they are.
std::string HtmlVerdict(const std::vector<Finding>& findings) {
  const Severity severity = WorstOf(findings);
  return HtmlElement("p", fmt::format("<span class=\"badge {}\">{}</span> {}", HtmlClass(severity),
                                      HtmlMark(severity), HtmlShown(FindingsText(findings))));
}

/// Where and when it was read; where, unless its heading says so already.
std::string HtmlOrigin(const EnclosureReading& enclosure) {
  const Reading& reading = enclosure.reading;
  const std::string place = enclosure.name.empty() ? "" : HtmlText(reading.address) + ", ";
  return HtmlElement("p", fmt::format("{}read at {} in {:.1f} s", place, UtcTime(reading.readAt),
                                      static_cast<double>(reading.duration.count()) / 1000));
}

std::string HtmlEnclosure(const EnclosureReading& enclosure, const ReportContext& context,
                          const std::string& heading) {
  const std::vector<Finding> findings = FindingsOf(enclosure.reading, context.ignored);
  return HtmlElement(fmt::format("article id=\"{}\"", HtmlAnchor(enclosure)),
                     '\n' + HtmlElement(heading, HtmlShown(ShownName(enclosure))) +
                         HtmlVerdict(findings) + HtmlOrigin(enclosure) +
                         HtmlSchematic(enclosure.reading, findings) +
                         HtmlTables(enclosure.reading));
}

std::string HtmlPage(const std::string& title, const std::string& content,
                     const ReportContext& context) {
  const std::string footer =
      HtmlElement("footer", "smm-inventory " + HtmlText(context.toolVersion));
  return "<!DOCTYPE html>\n" +
         HtmlElement("html lang=\"en\"",
                     '\n' + HtmlHead(title) + HtmlElement("body", '\n' + content + footer));
}

std::string PageOfEnclosure(const EnclosureReading& enclosure, const ReportContext& context) {
  return HtmlPage("Enclosure " + HtmlShown(ShownName(enclosure)),
                  HtmlEnclosure(enclosure, context, "h1"), context);
}

std::string PageOfSeveral(const std::vector<EnclosureReading>& enclosures,
                          const ReportContext& context) {
  const std::string title = fmt::format("{} enclosures", enclosures.size());
  std::string content =
      HtmlElement("h1", title) + HtmlWall(WorstFirst(enclosures, context.ignored));
  for (const EnclosureReading& enclosure : enclosures) {
    content += HtmlEnclosure(enclosure, context, "h2");
  }
  return HtmlPage(title, content, context);
}

}  // namespace

Format HtmlFormat() {
  return {"html",
          "One page to look at, also on a phone and on paper",
          PageOfEnclosure,
          {Order::AllTogether, "", NoEnclosure, PageOfSeveral}};
}

}  // namespace Tavrin
