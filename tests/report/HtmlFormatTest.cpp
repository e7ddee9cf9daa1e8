#include "report/HtmlFormat.h"

#include <gmock/gmock.h>
#include <regex.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "report/HtmlSchematic.h"
#include "report/HtmlTables.h"
#include "report/HtmlText.h"
#include "tests/report/ExampleReading.h"
#include "tests/report/HealthyReading.h"
#include "tests/report/XmlErrors.h"

namespace Tavrin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string PageOf(const Reading& reading, const ReportContext& context = {"0.1.0"}) {
  return HtmlFormat().document({reading, 0, "", ""}, context);
}

std::string WallOf(const std::vector<EnclosureReading>& enclosures) {
  return HtmlFormat().several.end(enclosures, {"0.1.0"});
}

/// The page without its style, which names colours for every class.
std::string BodyOf(const std::string& page) { return page.substr(page.find("<body>")); }

/// What each match of the extended regular expression holds in its first brackets. By the C
/// library, because the headers of C++'s take seconds to compile and their matches seconds to find.
std::vector<std::string> Matches(const std::string& text, const char* pattern) {
  regex_t compiled = {};
  if (regcomp(&compiled, pattern, REG_EXTENDED) != 0) {
    throw std::invalid_argument(pattern);
  }
  const std::unique_ptr<regex_t, decltype(&regfree)> expression(&compiled, &regfree);
  std::vector<std::string> found;
  std::array<regmatch_t, 2> match = {};
  const char* rest = text.c_str();
  for (; regexec(expression.get(), rest, match.size(), match.data(), 0) == 0;
       rest += match[0].rm_eo) {
    found.emplace_back(rest + match[1].rm_so, rest + match[1].rm_eo);
  }
  return found;
}

Reading NodeFaultReading() {
  Reading reading = HealthyReading();
  reading.nodeStatus->at(1) = Good(DecodeNode({"Power Fault", "Half", "1", 0}));
  return reading;
}

Reading PsuMissingReading() {
  Reading reading = HealthyReading();
  reading.psuStatus->value.at(2).present = {false, "not present", Absence::None};
  return reading;
}

/// A text of every byte, and of what HTML would take for its own.
std::string HostileText() {
  std::string text = "</title></style></text><script>alert(1)</script>]]>&lt;\"'--><!--";
  for (int byte = 0; byte < 256; ++byte) {
    text.push_back(static_cast<char>(byte));
  }
  return text;
}

Reading HostileReading() {
  Reading reading = ExampleReading();
  const Text text = TextOf(HostileText());
  reading.address = HostileText();
  reading.identity = {Good(text), Good(text), Good(text), Good(text)};
  reading.psuFirmware->value.at(0).identifier = text;
  reading.psuFans->value.at(0).status.text = HostileText();
  reading.psuStatus->value.at(0).present.text = HostileText();
  reading.nodeStatus->at(0).value.powerState.text = HostileText();
  reading.nodePower->at(0) = Refused<PowerReadings>();
  reading.nodePower->at(0).cause.words = HostileText();
  return reading;
}

Reading HostileFailure() {
  Reading reading = FailedReading();
  reading.failure->cause.words = HostileText();
  return reading;
}

std::vector<std::string> PagesOfAllKinds() {
  const PsuSelection selection = {7, true, NumberOf(3), "highest"};
  std::vector<EnclosureReading> fleet = {{HostileReading(), 0, HostileText(), HostileText()},
                                         {HostileFailure(), 1, "", ""},
                                         {HealthyReadingOfNine(), 2, "rack07", "row 1"}};
  return {PageOf(ExampleReading()),
          PageOf(LostReading()),
          PageOf(FailedReading()),
          PageOf(SelectionReading(selection, SucceededOutcome())),
          PageOf(HealthyReading()),
          PageOf(HealthyReadingOfNine()),
          PageOf(HostileReading()),
          PageOf(HostileFailure()),
          PageOf(ExampleReading(), {HostileText()}),
          WallOf(fleet),
          WallOf({fleet.front()}),
          WallOf({})};
}

TEST(HtmlFormat, SummarySaysThatItIsOnePage) {
  EXPECT_EQ(HtmlFormat().summary, "One page to look at, also on a phone and on paper");
}

TEST(HtmlFormat, EveryPageIsWellFormedXml) {
  for (const std::string& page : PagesOfAllKinds()) {
    EXPECT_EQ(XmlErrors(page), "") << page;
  }
}

TEST(HtmlFormat, PageThatIsNotWellFormedIsToldApart) {
  std::string page = PageOf(ExampleReading());
  page.erase(page.find("</figure>"), 9);
  EXPECT_THAT(XmlErrors(page), HasSubstr("figure"));
}

TEST(HtmlFormat, NoPageRunsOrLoadsAnything) {
  for (const std::string& page : PagesOfAllKinds()) {
    for (const char* const door : {"<script", "http:", "https:", "url(", "@import", "src=", "<link",
                                   "<img", "<iframe", "<object", "onload=", "xlink"}) {
      EXPECT_THAT(page, Not(HasSubstr(door)));
    }
    for (const std::string& target : Matches(page, "href=\"([^\"]*)\"")) {
      EXPECT_EQ(target.front(), '#');
    }
  }
}

TEST(HtmlFormat, BytesOfTheControllerAreEscapedInTablesTitlesAndReasons) {
  const std::string page = PageOf(HostileReading());
  EXPECT_EQ(Matches(page, "(&lt;script&gt;alert\\(1\\)&lt;/script&gt;)").size(),
            // The address as title and heading; four texts of the identity; an identifier, a fan's
            // status, a flag and a power state in table and title, the latter two drawn as well;
            // and a reason.
            2U + 4U + 4U * 2U + 2U + 1U);
  EXPECT_THAT(page, HasSubstr("&quot;&#39;--&gt;&lt;!--\\x00\\x01"));
  EXPECT_THAT(page, HasSubstr("\\x1b"));
}

TEST(HtmlFormat, StyleIsForPhonePaperAndDark) {
  const std::string page = PageOf(ExampleReading());
  EXPECT_THAT(page, HasSubstr("width=device-width"));
  EXPECT_THAT(page, HasSubstr("@media print"));
  EXPECT_THAT(page, HasSubstr("@media (prefers-color-scheme: dark)"));
}

/// x, y and width of each node's box.
std::vector<std::string> NodeBoxes(const std::string& page) {
  const std::string nodes = page.substr(page.find("<svg class=\"nodes\""));
  return Matches(nodes.substr(0, nodes.find("</svg>")),
                 "<rect (x=\"[0-9]+\" y=\"[0-9]+\" width=\"[0-9]+\")");
}

TEST(HtmlSchematic, HalfWidthTakesOneColumnAndFullWidthTwo) {
  Reading reading = HealthyReading();
  EXPECT_THAT(NodeBoxes(PageOf(reading)),
              ElementsAre("x=\"1\" y=\"1\" width=\"210\"", "x=\"219\" y=\"1\" width=\"210\"",
                          "x=\"1\" y=\"57\" width=\"210\"", "x=\"219\" y=\"57\" width=\"210\""));
  reading.nodeStatus->at(1) = Good(DecodeNode({"Power ON", "Full", "1", 0}));
  EXPECT_THAT(NodeBoxes(PageOf(reading)),
              ElementsAre("x=\"1\" y=\"1\" width=\"210\"", "x=\"1\" y=\"57\" width=\"428\"",
                          "x=\"1\" y=\"113\" width=\"210\"", "x=\"219\" y=\"113\" width=\"210\""));
  EXPECT_THAT(PageOf(reading), HasSubstr("viewBox=\"0 0 430 162\""));
}

TEST(HtmlSchematic, DrawingIsAsHighAsItsRows) {
  Reading reading = HealthyReading();
  EXPECT_THAT(PageOf(reading), HasSubstr("viewBox=\"0 0 430 106\""));
  reading.nodeStatus->resize(1);
  reading.nodePower->resize(1);
  EXPECT_THAT(PageOf(reading), HasSubstr("viewBox=\"0 0 430 50\""));
}

TEST(HtmlSchematic, EveryPsuIsDrawnWithItsState) {
  const std::string page = PageOf(HealthyReadingOfNine());
  EXPECT_EQ(Matches(page, "(<svg class=\"psu\")").size(), 9);
  EXPECT_EQ(Matches(page, "<text [^>]*>(present)</text>").size(), 8);
  EXPECT_EQ(Matches(page, "<text [^>]*>(not told)</text>").size(), 1);
}

TEST(HtmlSchematic, StateThatWasNotReadSaysSo) {
  Reading reading = HealthyReading();
  reading.nodeStatus->at(1) = Refused<NodeState>();
  EXPECT_EQ(Matches(PageOf(reading), "<text [^>]*>(not read)</text>").size(), 1);
}

TEST(HtmlSchematic, TitleOfEachHasAllThatWasReadOfIt) {
  const std::string page = PageOf(ExampleReading());
  EXPECT_THAT(page, HasSubstr("<title>node 2. node status: power state Power OFF, width Full, "
                              "height 2, permission 17; node power: minimum 200, average 210, "
                              "maximum 220</title>"));
  EXPECT_THAT(page, HasSubstr("<title>PSU 1. PSU fans: name PSU1, speed A 1000, Pat A N/A, speed B "
                              "-, Pat B -, status Abnormal; PSU firmware: name PSU1, identifier "
                              "PSU\\xff\\x00\\x1bDa.01, version 1.0a, description Power Supply 1; "
                              "PSU status: EPOW trigger, throttle not trigger, presence present, "
                              "power good power good</title>"));
}

/// A node that takes both columns, two beside each other below it, of which the second has a fault,
/// and three PSUs, of which the last is missing.
std::string DrawingOfFaults() {
  Reading reading = PsuMissingReading();
  reading.nodeStatus->resize(3);
  reading.nodePower->resize(3);
  reading.nodeStatus->at(0) = Good(DecodeNode({"Power ON", "Full", "1", 0}));
  reading.nodeStatus->at(2) = Good(DecodeNode({"Power Fault", "Half", "1", 0}));
  reading.psuStatus->value.at(2).present.text = "not present";
  return HtmlSchematic(reading, FindingsOf(reading));
}

TEST(HtmlSchematic, NodeHasNameStateAndMarkWithinItsBox) {
  const std::string drawn = DrawingOfFaults();
  EXPECT_THAT(drawn, HasSubstr("<g class=\"ok\">\n<title>node 1. "));
  EXPECT_THAT(drawn, HasSubstr("<rect x=\"1\" y=\"1\" width=\"428\" height=\"48\" rx=\"5\"/>\n"
                               "<text x=\"9\" y=\"20\" class=\"name\">node 1</text>\n"
                               "<text x=\"9\" y=\"39\">Power ON</text>\n</g>\n"));
  EXPECT_THAT(drawn, HasSubstr("<g class=\"critical\">\n<title>node 3. "));
  EXPECT_THAT(drawn, HasSubstr("<rect x=\"219\" y=\"57\" width=\"210\" height=\"48\" rx=\"5\"/>\n"
                               "<text x=\"227\" y=\"76\" class=\"name\">node 3</text>\n"
                               "<text x=\"421\" y=\"76\" class=\"mark\">&#10005; CRITICAL</text>\n"
                               "<text x=\"227\" y=\"95\">Power Fault</text>\n</g>\n"));
}

TEST(HtmlSchematic, PsuHasNameStateAndMarkInADrawingOfItsOwn) {
  const std::string drawn = DrawingOfFaults();
  EXPECT_THAT(drawn, HasSubstr("</svg>\n<div class=\"psus\">\n"
                               "<svg class=\"psu\" width=\"104\" height=\"66\" "
                               "viewBox=\"0 0 104 66\">\n<g class=\"ok\">\n<title>PSU 1. "));
  EXPECT_THAT(drawn, HasSubstr("<text x=\"8\" y=\"38\">present</text>\n</g>\n</svg>\n"));
  EXPECT_THAT(drawn, HasSubstr("<g class=\"warning\">\n<title>PSU 3. "));
  EXPECT_THAT(drawn, HasSubstr("<rect x=\"1\" y=\"1\" width=\"102\" height=\"64\" rx=\"5\"/>\n"
                               "<text x=\"8\" y=\"19\" class=\"name\">PSU 3</text>\n"
                               "<text x=\"8\" y=\"38\">not present</text>\n"
                               "<text x=\"8\" y=\"57\">! WARNING</text>\n</g>\n</svg>\n"));
}

TEST(HtmlSchematic, SaysThatPositionsAreNotStated) {
  EXPECT_THAT(PageOf(ExampleReading()),
              HasSubstr("<figcaption>Schematic: the SMM does not state positions.</figcaption>"));
}

TEST(HtmlSchematic, EnclosureOfWhichNothingCanBeDrawnHasNone) {
  EXPECT_EQ(HtmlSchematic(FailedReading(), {}), "");
  EXPECT_THAT(BodyOf(PageOf(FailedReading())), Not(HasSubstr("<figure")));
  Reading reading = HealthyReading();
  reading.psuFans.reset();
  reading.psuFirmware.reset();
  reading.psuStatus.reset();
  EXPECT_THAT(BodyOf(PageOf(reading)), HasSubstr("<svg class=\"nodes\""));
  EXPECT_THAT(BodyOf(PageOf(reading)), Not(HasSubstr("class=\"psus\"")));
}

TEST(HtmlFormat, WhatIsWellHasNoColour) {
  const std::string body = BodyOf(PageOf(HealthyReading()));
  EXPECT_THAT(Matches(body, "class=\"[^\"]*(critical|warning|unknown)"), IsEmpty());
  EXPECT_THAT(body, HasSubstr("<span class=\"badge ok\">&#10003; OK</span>"));
}

TEST(HtmlFormat, EveryColourHasAMarkAndAWordBesideIt) {
  const std::string body = BodyOf(PageOf(NodeFaultReading()));
  EXPECT_THAT(Matches(body, "class=\"([^\"]*critical)\""),
              ElementsAre("badge critical", "critical"));
  EXPECT_EQ(Matches(body, "(&#10005; CRITICAL)").size(), 2);
  EXPECT_THAT(body,
              HasSubstr("<span class=\"badge critical\">&#10005; CRITICAL</span> node 2 power "
                        "fault</p>"));
  const std::string missing = BodyOf(PageOf(PsuMissingReading()));
  EXPECT_THAT(Matches(missing, "class=\"([^\"]*warning)\""),
              ElementsAre("badge warning", "warning"));
  EXPECT_EQ(Matches(missing, "(! WARNING)").size(), 2);
  Reading unread = HealthyReading();
  unread.nodeStatus->at(2) = Refused<NodeState>();
  EXPECT_EQ(Matches(BodyOf(PageOf(unread)), "([?] UNKNOWN)").size(), 2);
}

TEST(HtmlFormat, WhatASiteIgnoresHasNoColour) {
  const std::string page =
      PageOf(PsuMissingReading(), {"0.1.0", {ParseIgnoredFinding("psu:3:presence")}});
  EXPECT_THAT(Matches(BodyOf(page), "class=\"[^\"]*(critical|warning|unknown)"), IsEmpty());
}

TEST(HtmlFormat, TablesHaveEveryPartThatWasRead) {
  EXPECT_THAT(Matches(PageOf(ExampleReading()), "<h3>([^<]*)</h3>"),
              ElementsAre("enclosure", "identity", "chassis power", "power caps", "node status",
                          "node power", "PSU fans", "PSU firmware", "PSU status"));
  EXPECT_THAT(Matches(PageOf(FailedReading()), "<h3>([^<]*)</h3>"), IsEmpty());
}

TEST(HtmlFormat, TablesHaveHeadingsAndRows) {
  const std::string page = PageOf(ExampleReading());
  EXPECT_THAT(page, HasSubstr("<tr><th scope=\"row\">serial number</th><td>J1 23</td></tr>"));
  EXPECT_THAT(page,
              HasSubstr("<tr><th scope=\"col\">node</th><th scope=\"col\">minimum</th>"
                        "<th scope=\"col\">average</th><th scope=\"col\">maximum</th></tr>\n"
                        "<tr><th scope=\"row\">1</th><td>120</td><td>130</td><td>140</td></tr>"));
}

TEST(HtmlFormat, PageIsBuiltAsHtmlWantsIt) {
  const std::string page = PageOf(ExampleReading());
  EXPECT_THAT(page, HasSubstr("<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\"/>\n<meta "));
  EXPECT_THAT(page, HasSubstr("</title>\n<style>"));
  EXPECT_THAT(page, HasSubstr("<div class=\"parts\">\n<section class=\"part\">\n<h3>"));
  EXPECT_THAT(page, HasSubstr("</h3>\n<div class=\"scroll\"><table>\n<tr><th scope=\"row\">"));
  EXPECT_THAT(page, HasSubstr("</table>\n</div>\n</section>\n<section"));
  EXPECT_THAT(page, Not(HasSubstr("<p></p>")));
  EXPECT_THAT(page, HasSubstr("<article id=\"enclosure-0\">"));
  EXPECT_EQ(EnclosureReading().index, 0U);
  EXPECT_EQ(HtmlTables(FailedReading()), "");
}

TEST(HtmlFormat, WhatHtmlTakesForItsOwnIsEscaped) {
  EXPECT_EQ(HtmlShown("a&b<c>d\"e'f"), "a&amp;b&lt;c&gt;d&quot;e&#39;f");
}

TEST(HtmlFormat, SecondsAreThoseThatTheReadingTook) {
  Reading reading = ExampleReading();
  reading.duration = std::chrono::milliseconds(5000000);
  EXPECT_THAT(PageOf(reading), HasSubstr(" in 5000.0 s</p>"));
}

TEST(HtmlFormat, QueriesThatFailedInAnotherWayAreToldApart) {
  Reading reading = ExampleReading();
  reading.nodeStatus->at(1) = Refused<NodeState>();
  reading.nodeStatus->at(2) = Disconnected<NodeState>();
  EXPECT_THAT(PageOf(reading), HasSubstr("<p>node status of node 2 not read: "));
  EXPECT_THAT(PageOf(reading), HasSubstr("<p>node status of node 3 not read: "));
  reading.chassisPower = Refused<PowerReadings>();
  EXPECT_THAT(PageOf(reading), HasSubstr("<p>chassis power not read: "));
}

TEST(HtmlFormat, WhyAQueryFailedStandsBelowItsTable) {
  Reading reading = ExampleReading();
  reading.nodeStatus->at(1) = Refused<NodeState>();
  reading.nodeStatus->at(2) = Refused<NodeState>();
  EXPECT_THAT(PageOf(reading), HasSubstr("<p>node status of node 2, node status of node 3 not "
                                         "read: " +
                                         std::string(kRefusal) + "</p>"));
  EXPECT_THAT(PageOf(LostReading()), HasSubstr("<p>not read</p>"));
  EXPECT_THAT(PageOf(FailedReading()),
              HasSubstr("? UNKNOWN</span> not read: no IPMI connection could be opened (no "
                        "answer)</p>"));
}

TEST(HtmlFormat, NoteOfAPartStandsBelowItsTable) {
  EXPECT_THAT(PageOf(HealthyReadingOfNine()),
              HasSubstr("<p>The SMM&#39;s answer holds the flags of 8 PSUs only; "));
}

TEST(HtmlFormat, PageSaysWhatWasReadWhenAndByWhom) {
  const std::string page = PageOf(ExampleReading());
  EXPECT_THAT(page, HasSubstr("<title>Enclosure smm1:623</title>"));
  EXPECT_THAT(page, HasSubstr("<h1>smm1:623</h1>"));
  EXPECT_THAT(page, HasSubstr("<p>read at 2026-11-21T18:24:05.678Z in 21.0 s</p>"));
  EXPECT_THAT(page, HasSubstr("<footer>smm-inventory 0.1.0</footer>"));
}

std::vector<EnclosureReading> Fleet() {
  Reading other = PsuMissingReading();
  other.identity->firmwareVersion = Good(TextOf("ABC-1a.06"));
  return {{HealthyReading(), 0, "rack01", "row 1"},
          {HealthyReading(), 1, "rack02", "row 2"},
          {other, 2, "rack03", "row 1"},
          {FailedReading(), 3, "rack04", "row 1"},
          {NodeFaultReading(), 4, "rack05", "row 2"},
          {HealthyReading(), 5, "rack06", ""}};
}

TEST(HtmlWall, TilesComeByGroupWorstFirst) {
  const std::string page = WallOf(Fleet());
  const std::string wall = page.substr(0, page.find("</nav>"));
  EXPECT_THAT(
      Matches(wall, "<[hb]2?>([^<]*)<"),
      ElementsAre("row 2", "rack05", "rack02", "row 1", "rack03", "rack04", "rack01", "rack06"));
  EXPECT_THAT(Matches(wall, "class=\"tile ([a-z]*)\""),
              ElementsAre("critical", "ok", "warning", "unknown", "ok", "ok"));
}

TEST(HtmlWall, TileHasMarkWordAndFindings) {
  EXPECT_THAT(WallOf(Fleet()),
              HasSubstr("<a class=\"tile warning\" href=\"#enclosure-2\">\n<b>rack03</b>\n"
                        "<span class=\"mark\">! WARNING</span>\n<small>PSU 3 missing</small>\n"
                        "</a>"));
}

TEST(HtmlWall, TilesLeadToTheEnclosuresWhichComeAsGiven) {
  const std::string page = WallOf(Fleet());
  std::vector<std::string> targets = Matches(page, "href=\"#([^\"]*)\"");
  const std::vector<std::string> places = Matches(page, "<article id=\"([^\"]*)\"");
  EXPECT_THAT(places, ElementsAre("enclosure-0", "enclosure-1", "enclosure-2", "enclosure-3",
                                  "enclosure-4", "enclosure-5"));
  std::sort(targets.begin(), targets.end());
  EXPECT_EQ(targets, places);
}

TEST(HtmlWall, SeverityAndFirmwareAreCounted) {
  const std::string page = WallOf(Fleet());
  EXPECT_THAT(page, HasSubstr("<span class=\"badge critical\">1 &#10005; CRITICAL</span> "
                              "<span class=\"badge warning\">1 ! WARNING</span> "
                              "<span class=\"badge unknown\">1 ? UNKNOWN</span> "
                              "<span class=\"badge ok\">3 &#10003; OK</span>"));
  EXPECT_THAT(page, HasSubstr("<tr><th scope=\"row\">ABC-1a.05</th><td>4</td></tr>\n"
                              "<tr><th scope=\"row\">ABC-1a.06</th><td>1</td></tr>\n"
                              "<tr><th scope=\"row\">not read</th><td>1</td></tr>"));
}

TEST(HtmlWall, StandsBelowTheNumberOfEnclosuresWithWhatIsCounted) {
  const std::string page = WallOf(Fleet());
  EXPECT_THAT(page, HasSubstr("<h1>6 enclosures</h1>\n<nav>\n<p class=\"counts\">"));
  EXPECT_THAT(page, HasSubstr("<table>\n<tr><th scope=\"col\">firmware version</th>"));
  EXPECT_THAT(page, HasSubstr("</table>\n<h2>row 2</h2>\n<div class=\"wall\">\n"));
  EXPECT_THAT(page, HasSubstr("</a>\n</div>\n<div class=\"wall\">\n"));
}

TEST(HtmlWall, FirmwareOfMostEnclosuresComesFirst) {
  Reading other = HealthyReading();
  other.identity->firmwareVersion = Good(TextOf("AAA-1a.01"));
  Reading unread = HealthyReading();
  unread.identity->firmwareVersion = Refused<Text>();
  const std::string page = WallOf({{other, 0, "a", ""},
                                   {unread, 1, "b", ""},
                                   {HealthyReading(), 2, "c", ""},
                                   {HealthyReading(), 3, "d", ""}});
  EXPECT_THAT(Matches(page, "<tr><th scope=\"row\">([^<]*)</th><td>[12]</td></tr>"),
              testing::IsSupersetOf({"ABC-1a.05", "AAA-1a.01", "not read"}));
  EXPECT_LT(page.find("ABC-1a.05</th><td>2"), page.find("AAA-1a.01</th><td>1"));
}

TEST(HtmlWall, EachEnclosureWithANameSaysWhereItWasRead) {
  const std::string page =
      WallOf({{HealthyReading(), 0, "a", ""}, {HealthyReading(), 1, "b", "row 1"}});
  EXPECT_EQ(Matches(page, "<p>(smm1:623), read at").size(), 2);
}

TEST(HtmlWall, WhatThereIsNoneOfHasNoColour) {
  const std::string page =
      WallOf({{HealthyReading(), 0, "a", ""}, {PsuMissingReading(), 1, "b", ""}});
  EXPECT_THAT(page, HasSubstr("<span class=\"badge ok\">0 &#10005; CRITICAL</span> "
                              "<span class=\"badge warning\">1 ! WARNING</span> "
                              "<span class=\"badge ok\">0 ? UNKNOWN</span>"));
}

TEST(HtmlWall, OneEnclosureNeedsNone) {
  EXPECT_THAT(PageOf(ExampleReading()), Not(HasSubstr("<nav>")));
  EXPECT_THAT(HtmlFormat().document(Fleet().front(), {"0.1.0"}),
              HasSubstr("<title>Enclosure rack01</title>"));
  EXPECT_THAT(WallOf(Fleet()), HasSubstr("<title>6 enclosures</title>"));
  EXPECT_THAT(WallOf(Fleet()), HasSubstr("<h2>rack01</h2>"));
  EXPECT_THAT(WallOf(Fleet()), HasSubstr("<p>smm1:623, read at 2026-11-21T18:24:05.678Z in "));
}

}  // namespace
}  // namespace Tavrin
