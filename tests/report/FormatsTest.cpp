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

struct Frame {
  std::string name;
  std::string begin;
  std::string end;  ///< After a pass that came to no query.
};

TEST(Formats, PartsStandBetweenABeginningAndAnEndThatTellsOfAFailedPass) {
  const std::vector<Frame> table = {
      {"text", "[::1]:623\n", "\nnothing read\n"},
      {"csv", "enclosure,query,number,field,value,text,reason\r\n",
       "smm1:623,,,,,,no IPMI connection could be opened (no answer)\r\n"},
  };
  for (const Frame& row : table) {
    const Format& format = *FindFormat(row.name);
    EXPECT_EQ(format.begin("[::1]:623"), row.begin);
    EXPECT_EQ(format.end(FailedReading(), {"0.1.0"}), row.end);
    EXPECT_EQ(format.end(ExampleReading(), {"0.1.0"}), "") << row.name;
    EXPECT_EQ(format.end(LostReading(), {"0.1.0"}), "") << row.name;
  }
  EXPECT_EQ(FindFormat("json")->begin("[::1]:623"), "");
}

/// As several enclosures are written that end one after the other, in the order given.
std::string WholeOfSeveral(const Format& format, const std::vector<EnclosureReading>& enclosures) {
  std::string pieces = format.several.begin();
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

std::string Whole(const Format& format, const Reading& reading) {
  std::string pieces = format.begin(reading.address);
  for (const Part part : kEveryPart) {
    pieces += format.part(reading, part);
  }
  return pieces + format.end(reading, {"0.1.0"});
}

TEST(Formats, TextOfSeveralIsThatOfEachWithABlankLineBetween) {
  const Format& text = *FindFormat("text");
  EXPECT_EQ(WholeOfSeveral(text, {{ExampleReading(), 0, "", ""}, {FailedReading(), 1, "", ""}}),
            Whole(text, ExampleReading()) + '\n' + Whole(text, FailedReading()));
}

TEST(Formats, CsvOfSeveralHasOneHeader) {
  const Format& csv = *FindFormat("csv");
  const std::string header = csv.begin("");
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
      EXPECT_THAT(Whole(format, reading), testing::HasSubstr("smm1:623")) << format.name;
      const std::string several = WholeOfSeveral(format, {{reading, 0, "", ""}});
      EXPECT_EQ(several, WholeOfSeveral(format, {{reading, 0, "", ""}})) << format.name;
      EXPECT_THAT(several, testing::HasSubstr("smm1:623")) << format.name;
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
  for (const Format& format : Formats()) {
    EXPECT_EQ(format.part(FailedReading(), Part::Identity), "") << format.name;
    EXPECT_EQ(format.part(ExampleReading(), Part::PsuSelection), "") << format.name;
  }
}

}  // namespace
}  // namespace Tavrin
