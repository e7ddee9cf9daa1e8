#include <gmock/gmock.h>

#include <set>
#include <string>
#include <vector>

#include "report/Format.h"
#include "tests/report/ExampleReading.h"

namespace Tavrin {
namespace {

TEST(Formats, TextIsTheDefault) { EXPECT_EQ(Formats().front().name, "text"); }

TEST(Formats, ThoseThatCameFirstStandFirst) {
  EXPECT_EQ(Formats().at(1).name, "json");
  EXPECT_EQ(Formats().at(2).name, "csv");
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

std::string Whole(const Format& format, const Reading& reading) {
  std::string pieces = format.begin(reading.address);
  for (const Part part : kEveryPart) {
    pieces += format.part(reading, part);
  }
  return pieces + format.end(reading, {"0.1.0"});
}

TEST(Formats, EveryReadingIsWrittenAlikeHoweverOften) {
  for (const Format& format : Formats()) {
    for (const Reading& reading : {ExampleReading(), LostReading(), FailedReading()}) {
      EXPECT_EQ(Whole(format, reading), Whole(format, reading)) << format.name;
      EXPECT_THAT(Whole(format, reading), testing::HasSubstr("smm1:623")) << format.name;
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
    for (const char c : Whole(format, reading)) {
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
