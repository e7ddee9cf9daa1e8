#include <gmock/gmock.h>

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "report/Format.h"
#include "tests/report/ExampleReading.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(Formats, TextIsTheDefault) { EXPECT_EQ(Formats().front().name, "text"); }

TEST(Formats, ThoseThatCameFirstStandFirst) {
  EXPECT_EQ(Formats().at(1).name, "json");
  EXPECT_EQ(Formats().at(2).name, "csv");
  EXPECT_EQ(Formats().at(3).name, "jsonl");
  EXPECT_EQ(Formats().at(4).name, "html");
}

TEST(Formats, EachHasANameOfItsOwnAndASummaryOfOneLine) {
  std::set<std::string> names;
  for (const Format& format : Formats()) {
    EXPECT_TRUE(names.emplace(format.name).second) << format.name;
    EXPECT_FALSE(format.summary.empty());
    EXPECT_EQ(format.summary.find('\n'), std::string::npos);
  }
}

TEST(Formats, NameIsTakenInItsSpellingOnly) {
  for (const Format& format : Formats()) {
    EXPECT_EQ(FindFormat(format.name), &format);
  }
  for (const char* const name : {"", "JSON", "json ", "tex", "xml"}) {
    EXPECT_EQ(FindFormat(name), nullptr) << name;
  }
}

std::string Whole(const Format& format, const Reading& reading) {
  return format.document({reading, 0, "", ""}, {"0.1.0"});
}

TEST(Formats, PassThatCameToNoQueryIsAFrameThatTellsSo) {
  EXPECT_EQ(Whole(*FindFormat("text"), FailedReading()), "smm1:623\n\nnothing read\n");
  EXPECT_EQ(Whole(*FindFormat("csv"), FailedReading()),
            "enclosure,query,number,field,value,text,reason\r\n"
            "smm1:623,,,,,,no IPMI connection could be opened (no answer)\r\n");
}

TEST(Formats, PassWithQueriesIsNoFailure) {
  for (const Reading& reading : {ExampleReading(), LostReading()}) {
    EXPECT_THAT(Whole(*FindFormat("text"), reading), Not(HasSubstr("nothing read")));
    EXPECT_THAT(Whole(*FindFormat("csv"), reading), Not(HasSubstr("smm1:623,,")));
  }
}

/// As several enclosures are written that end one after the other, in the order given.
std::string WholeOfSeveral(const Format& format, const std::vector<EnclosureReading>& enclosures) {
  std::string pieces(format.several.begin);
  for (const EnclosureReading& enclosure : enclosures) {
    pieces += format.several.enclosure(enclosure, {"0.1.0"});
  }
  return pieces + format.several.end(enclosures, {"0.1.0"});
}

TEST(Formats, SeveralEnclosuresAreWrittenInTheOrderOfTheFormat) {
  const std::map<std::string_view, Order> table = {{"text", Order::AsAsked},
                                                   {"json", Order::AsEnded},
                                                   {"csv", Order::AsAsked},
                                                   {"jsonl", Order::AsEnded},
                                                   {"html", Order::AllTogether}};
  EXPECT_EQ(Formats().size(), table.size());
  for (const Format& format : Formats()) {
    EXPECT_EQ(format.several.order, table.at(format.name)) << format.name;
  }
}

TEST(Formats, EndOfSeveralLooksAtThemOnlyWhereTheyAreWrittenAllTogether) {
  for (const Format& format : Formats()) {
    const bool isTogether = format.several.order == Order::AllTogether;
    EXPECT_EQ(format.several.enclosure({ExampleReading(), 0, "", ""}, {"0.1.0"}).empty(),
              isTogether)
        << format.name;
    if (!isTogether) {
      EXPECT_EQ(format.several.end({{ExampleReading(), 0, "", ""}}, {"0.1.0"}), "") << format.name;
    }
  }
}

TEST(Formats, TextOfSeveralIsThatOfEachWithABlankLineBetween) {
  const Format& text = *FindFormat("text");
  EXPECT_EQ(WholeOfSeveral(text, {{ExampleReading(), 0, "", ""}, {FailedReading(), 1, "", ""}}),
            Whole(text, ExampleReading()) + '\n' + Whole(text, FailedReading()));
}

TEST(Formats, CsvOfSeveralHasOneHeader) {
  const Format& csv = *FindFormat("csv");
  const std::string_view header = csv.several.begin;
  EXPECT_EQ(WholeOfSeveral(csv, {{ExampleReading(), 0, "", ""}, {FailedReading(), 1, "", ""}}),
            Whole(csv, ExampleReading()) + Whole(csv, FailedReading()).substr(header.size()));
}

TEST(Formats, JsonOfSeveralIsJsonLines) {
  const std::vector<EnclosureReading> enclosures = {{ExampleReading(), 7, "", ""},
                                                    {FailedReading(), 3, "", ""}};
  EXPECT_EQ(WholeOfSeveral(*FindFormat("json"), enclosures),
            WholeOfSeveral(*FindFormat("jsonl"), enclosures));
}

TEST(Formats, EveryReadingIsWrittenAlikeHoweverOften) {
  for (const Format& format : Formats()) {
    for (const Reading& reading : {ExampleReading(), LostReading(), FailedReading()}) {
      EXPECT_EQ(Whole(format, reading), Whole(format, reading)) << format.name;
      EXPECT_THAT(Whole(format, reading), HasSubstr("smm1:623")) << format.name;
      const std::string several = WholeOfSeveral(format, {{reading, 0, "", ""}});
      EXPECT_EQ(several, WholeOfSeveral(format, {{reading, 0, "", ""}})) << format.name;
      EXPECT_THAT(several, HasSubstr("smm1:623")) << format.name;
    }
  }
}

TEST(Formats, NoByteOfTheControllerReachesTheOutputAsAControlByte) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) {
    bytes.push_back(static_cast<char>(byte));
  }
  Reading reading = ExampleReading();
  reading.identity->serialNumber = Good(TextOf(bytes));
  for (const Format& format : Formats()) {
    const std::vector<EnclosureReading> several = {{reading, 0, bytes, bytes},
                                                   {reading, 1, bytes, ""}};
    for (const char c : Whole(format, reading) + WholeOfSeveral(format, several)) {
      EXPECT_TRUE(c == '\n' || c == '\r' || (c >= ' ' && c <= '~')) << static_cast<int>(c);
    }
  }
}

TEST(Formats, PartThatWasNotReadIsNotWritten) {
  for (const char* const name : {"text", "csv", "json", "jsonl"}) {
    const Format& format = *FindFormat(name);
    EXPECT_THAT(Whole(format, FailedReading()), Not(HasSubstr("serial"))) << name;
    EXPECT_THAT(Whole(format, ExampleReading()), Not(HasSubstr("election"))) << name;
  }
}

}  // namespace
}  // namespace Tavrin
