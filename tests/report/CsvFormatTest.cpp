#include "report/CsvFormat.h"

#include <gmock/gmock.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "report/Describe.h"
#include "tests/report/ExampleReading.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;

/// The rows of a part.
std::string Rows(const Reading& reading, Part part) {
  const Section section = Describe(reading, part).value();
  std::set<std::string> keys;
  for (const Answer& answer : section.answers) {
    keys.insert(answer.key);
  }
  std::istringstream lines(CsvFormat().document({reading, 0, "", ""}, {"0.1.0"}));
  std::string rows;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t key = line.find(',') + 1;
    rows += keys.count(line.substr(key, line.find(',', key) - key)) != 0 ? line + '\n' : "";
  }
  return rows;
}

TEST(CsvFormat, SummarySaysWhatARowIsAndWhoReadsThem) {
  EXPECT_EQ(CsvFormat().summary, "One row a value, for spreadsheets");
}

TEST(CsvFormat, EachValueIsARow) {
  EXPECT_EQ(Rows(ExampleReading(), Part::Detection),
            "smm1:623,generation,,generation,second,second,\r\n"
            "smm1:623,platformId,,platformId,254,254,\r\n"
            "smm1:623,psuSlotCount,,psuSlotCount,2,2,\r\n"
            "smm1:623,nodeCount,,nodeCount,4,4,\r\n");
  EXPECT_EQ(Rows(ExampleReading(), Part::ChassisPower),
            "smm1:623,chassisPower,,minPower,0,0,\r\n"
            "smm1:623,chassisPower,,avgPower,350,350,\r\n"
            "smm1:623,chassisPower,,maxPower,65535,65535,\r\n");
}

TEST(CsvFormat, NodesAndSlotsHaveTheirNumber) {
  EXPECT_THAT(Rows(ExampleReading(), Part::NodePower),
              HasSubstr("\r\nsmm1:623,nodePower,2,avgPower,210,210,\r\n"));
  EXPECT_THAT(Rows(ExampleReading(), Part::PsuFans),
              HasSubstr("\r\nsmm1:623,psuFans,2,speedA,10000,10000,\r\n"));
}

TEST(CsvFormat, StatesAreWordsAndFlagsAreTrueOrFalse) {
  EXPECT_THAT(Rows(ExampleReading(), Part::NodeStatus),
              HasSubstr("\r\nsmm1:623,nodeStatus,3,powerState,noPermission,No Permission,\r\n"));
  EXPECT_THAT(Rows(ExampleReading(), Part::PsuStatus),
              HasSubstr("smm1:623,psuStatus,1,epow,true,trigger,\r\n"
                        "smm1:623,psuStatus,1,throttle,false,not trigger,\r\n"));
}

TEST(CsvFormat, AbsentValueHasAReason) {
  EXPECT_THAT(Rows(ExampleReading(), Part::PowerCaps),
              HasSubstr("\r\nsmm1:623,powerCaps,,protectiveCap,,N/A,not reported by the SMM\r\n"));
  EXPECT_THAT(Rows(ExampleReading(), Part::PsuFans),
              HasSubstr("\r\nsmm1:623,psuFans,1,speedB,,,a first-generation SMM reports one fan a "
                        "PSU\r\n"));
}

TEST(CsvFormat, BytesThatAreNotPrintableAreEscaped) {
  EXPECT_THAT(Rows(ExampleReading(), Part::PsuFirmware),
              HasSubstr("\r\nsmm1:623,psuFirmware,1,identifier,PSU\\xff\\x00\\x1bDa.01,"
                        "PSU\\xff\\x00\\x1bDa.01,\r\n"));
}

TEST(CsvFormat, CommasAndQuotesAreQuoted) {
  Reading reading = ExampleReading();
  reading.identity->name = Good(TextOf("a,b"));
  reading.identity->machineType = Good(TextOf("\"1\" a"));
  EXPECT_THAT(Rows(reading, Part::Identity),
              HasSubstr("smm1:623,machineType,,machineType,\"\"\"1\"\" a\",\"\"\"1\"\" a\",\r\n"));
  EXPECT_THAT(Rows(reading, Part::Identity),
              HasSubstr("\r\nsmm1:623,name,,name,\"a,b\",\"a,b\",\r\n"));
}

TEST(CsvFormat, TextLikeAFormulaStaysAsItIs) {
  Reading reading = ExampleReading();
  for (const char* const text : {"=1+1", "+1", "-1", "@a"}) {
    reading.identity->name = Good(TextOf(text));
    EXPECT_THAT(Rows(reading, Part::Identity),
                HasSubstr("name,,name," + std::string(text) + "," + text + ",\r\n"));
  }
}

TEST(CsvFormat, FailedQuerySaysWhyForEachOfItsValues) {
  Reading reading = ExampleReading();
  reading.chassisPower = Refused<PowerReadings>();
  const std::string reason = std::string(kRefusal) + "\r\n";
  EXPECT_EQ(Rows(reading, Part::ChassisPower), "smm1:623,chassisPower,,minPower,,," + reason +
                                                   "smm1:623,chassisPower,,avgPower,,," + reason +
                                                   "smm1:623,chassisPower,,maxPower,,," + reason);
}

TEST(CsvFormat, FailedQueryOfUncountedSlotsIsOneRow) {
  EXPECT_EQ(Rows(LostReading(), Part::PsuFans),
            "smm1:623,psuFans,,,,,no IPMI connection could be opened (no answer)\r\n");
}

TEST(CsvFormat, SelectionIsOfNoNodeAndNoSlot) {
  EXPECT_EQ(Rows(SelectionReading({7, true, NumberOf(3), "highest"}, SucceededOutcome()),
                 Part::PsuSelection),
            "smm1:623,psuSelection,,asked,7,7,\r\n"
            "smm1:623,psuSelection,,sent,3,3,\r\n"
            "smm1:623,psuSelection,,remark,highest,highest,\r\n"
            "smm1:623,psuSelection,,acknowledgement,received,received,\r\n");
}

TEST(CsvFormat, QueryThatFoundNoSlotsHasNoRow) {
  Reading reading = ExampleReading();
  reading.psuFans = Good(std::vector<PsuFans>());
  EXPECT_EQ(Rows(reading, Part::PsuFans), "");
}

}  // namespace
}  // namespace Tavrin
