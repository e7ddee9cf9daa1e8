#include "report/TextFormat.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "report/Describe.h"
#include "tests/report/ExampleReading.h"

namespace Tavrin {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

/// What stands for a part, from the blank line above its title on.
std::string Printed(const Reading& reading, Part part) {
  const std::string text = TextFormat().document({reading, 0, "", ""}, {"0.1.0"});
  const std::size_t begin = text.find("\n\n" + Describe(reading, part)->title + '\n') + 1;
  return text.substr(begin, text.find("\n\n", begin) - begin + 1);
}

TEST(TextFormat, SummarySaysThatItIsForPeople) {
  EXPECT_EQ(TextFormat().summary, "Tables for people");
}

TEST(TextFormat, DetectionIsShownLineByLine) {
  EXPECT_EQ(Printed(ExampleReading(), Part::Detection),
            "\n"
            "enclosure\n"
            "  generation   second\n"
            "  platform id  254\n"
            "  PSU slots    2\n"
            "  nodes        4\n");
}

TEST(TextFormat, GenerationIsNamedWhereItIsKnown) {
  Reading reading = ExampleReading();
  reading.detection->generation.value.value = SMM_FIRST_GENERATION;
  EXPECT_THAT(Printed(reading, Part::Detection), HasSubstr("generation   first\n"));
  reading.detection->generation.value.value = static_cast<SMMIype>(7);
  EXPECT_THAT(Printed(reading, Part::Detection), HasSubstr("generation   unknown (type 7)\n"));
}

TEST(TextFormat, IdentityIsShownLineByLine) {
  EXPECT_EQ(Printed(ExampleReading(), Part::Identity),
            "\n"
            "identity\n"
            "  machine type      1234\n"
            "  serial number     J1 23\n"
            "  firmware version  ABC-1a.05\n"
            "  name              (empty)\n");
}

TEST(TextFormat, ControlBytesOfTheControllerAreEscaped) {
  Reading reading = ExampleReading();
  reading.identity->serialNumber = Good(TextOf("\x1b[2J"));
  EXPECT_THAT(Printed(reading, Part::Identity), HasSubstr("serial number     \\x1b[2J\n"));
}

TEST(TextFormat, BackslashIsEscapedAlsoWhereItStandsAlone) {
  Reading reading = ExampleReading();
  reading.identity->serialNumber = Good(TextOf("a\\n"));
  EXPECT_THAT(Printed(reading, Part::Identity), HasSubstr("serial number     a\\\\n\n"));
}

TEST(TextFormat, FailedQueryIsShownAsNotReadBesideTheOthers) {
  Reading reading = ExampleReading();
  reading.identity->machineType = Refused<Text>();
  EXPECT_THAT(Printed(reading, Part::Identity), HasSubstr("  machine type      not read\n"
                                                          "  serial number     J1 23\n"));
}

TEST(TextFormat, ChassisPowerIsShownLineByLine) {
  EXPECT_EQ(Printed(ExampleReading(), Part::ChassisPower),
            "\n"
            "chassis power\n"
            "  minimum  0\n"
            "  average  350\n"
            "  maximum  65535\n");
}

TEST(TextFormat, RefusedRecordHasAllItsFieldsNotRead) {
  Reading reading = ExampleReading();
  reading.chassisPower = Refused<PowerReadings>();
  EXPECT_EQ(Printed(reading, Part::ChassisPower),
            "\n"
            "chassis power\n"
            "  minimum  not read\n"
            "  average  not read\n"
            "  maximum  not read\n");
}

TEST(TextFormat, NodeStatusIsATable) {
  Reading reading = ExampleReading();
  reading.nodeStatus->at(1) = Refused<NodeState>();
  EXPECT_EQ(Printed(reading, Part::NodeStatus),
            "\n"
            "node status\n"
            "  node  power state    width     height    permission\n"
            "  1     Power ON       Half      1         0\n"
            "  2     not read       not read  not read  not read\n"
            "  3     No Permission  3         N/A       255\n"
            "  4     Power Fault    N/A       4         19\n");
}

TEST(TextFormat, FansAreATableWithADashWhereAFanIsNone) {
  EXPECT_EQ(Printed(ExampleReading(), Part::PsuFans),
            "\n"
            "PSU fans\n"
            "  slot  name  speed A  Pat A  speed B  Pat B  status\n"
            "  1     PSU1  1000     N/A    -        -      Abnormal\n"
            "  2     PSU2  10000    50     N/A      7      Normal\n");
}

TEST(TextFormat, SlotThatGaveNothingIsShownInItsPlace) {
  Reading reading = ExampleReading();
  reading.psuFans =
      Good(DecodeFans({{"PSU2", "1", "2", "3", "4", "Normal"}}, 3, Absence::SlotUnanswered));
  const std::string text = Printed(reading, Part::PsuFans);
  EXPECT_THAT(text, HasSubstr("  1     not read  not read"));
  EXPECT_THAT(text, HasSubstr("\n  2     PSU2"));
  EXPECT_THAT(text, HasSubstr("\n  3     not read"));
}

TEST(TextFormat, SlotsAreNumberedAsTheReadingCountsThem) {
  Reading reading = ExampleReading();
  reading.psuFans->value.erase(reading.psuFans->value.begin());
  EXPECT_THAT(Printed(reading, Part::PsuFans), HasSubstr("status\n  2     PSU2"));
}

TEST(TextFormat, RawBytesOfTheFirmwareIdentifierAreEscaped) {
  EXPECT_EQ(Printed(ExampleReading(), Part::PsuFirmware),
            "\n"
            "PSU firmware\n"
            "  slot  name  identifier            version  description\n"
            "  1     PSU1  PSU\\xff\\x00\\x1bDa.01  1.0a     Power Supply 1\n"
            "  2     PSU2  PSUPAS2b.02           2.09     Power Supply 2\n");
}

TEST(TextFormat, PsuFlagsAreATable) {
  EXPECT_EQ(Printed(ExampleReading(), Part::PsuStatus),
            "\n"
            "PSU status\n"
            "  slot  EPOW         throttle     presence     power good\n"
            "  1     trigger      not trigger  present      power good\n"
            "  2     not trigger  trigger      not present  not power good\n");
}

TEST(TextFormat, SlotsBeyondTheFlagsHaveADashAndANoteBelowTheTable) {
  Reading reading = ExampleReading();
  reading.psuStatus = ExampleFlags(8);
  EXPECT_THAT(Printed(reading, Part::PsuStatus), Not(HasSubstr("The SMM")));
  reading.psuStatus = ExampleFlags(9);
  EXPECT_THAT(Printed(reading, Part::PsuStatus),
              EndsWith("\n  8     not trigger  trigger      not present  not power good\n"
                       "  9     -            -            -            -\n"
                       "  The SMM's answer holds the flags of 8 PSUs only; those of any "
                       "later slot are not told.\n"));
}

TEST(TextFormat, RefusedPsuFlagsAreNotReadInEverySlotAndNeedNoExplanation) {
  Reading reading = ExampleReading();
  reading.psuStatus = Refused(std::vector<PsuFlags>(2));
  reading.psuStatus->value[0].slot = 1;
  reading.psuStatus->value[1].slot = 2;
  EXPECT_EQ(Printed(reading, Part::PsuStatus),
            "\n"
            "PSU status\n"
            "  slot  EPOW      throttle  presence  power good\n"
            "  1     not read  not read  not read  not read\n"
            "  2     not read  not read  not read  not read\n");
}

TEST(TextFormat, TableWithoutRowsIsNotRead) {
  Reading reading = ExampleReading();
  reading.psuStatus = Disconnected<std::vector<PsuFlags>>();
  EXPECT_EQ(Printed(reading, Part::PsuStatus),
            "\n"
            "PSU status\n"
            "  not read\n");
}

TEST(TextFormat, NodesOfAnEnclosureWithoutAnyAreNotRead) {
  Reading reading = ExampleReading();
  reading.nodeStatus->clear();
  EXPECT_EQ(Printed(reading, Part::NodeStatus),
            "\n"
            "node status\n"
            "  not read\n");
}

std::string Selection(const PsuSelection& selection, const QueryOutcome& outcome) {
  return Printed(SelectionReading(selection, outcome), Part::PsuSelection);
}

TEST(TextFormat, SelectionTellsWhatWasSentAndAcknowledged) {
  EXPECT_EQ(Selection({7, true, NumberOf(3), "clamped"}, SucceededOutcome()),
            "\n"
            "PSU selection\n"
            "  asked for        7\n"
            "  sent             3\n"
            "  remark           clamped\n"
            "  acknowledgement  received\n");
}

TEST(TextFormat, SelectionWithoutNumberAndAcknowledgementSaysSo) {
  EXPECT_EQ(
      Selection({7, true, {std::nullopt, "", Absence::NotReported}, "left out"}, RefusedOutcome()),
      "\n"
      "PSU selection\n"
      "  asked for        7\n"
      "  sent             none\n"
      "  remark           left out\n"
      "  acknowledgement  missing\n");
}

TEST(TextFormat, SelectionThatWasNotSentHasADash) {
  EXPECT_THAT(Selection({7, false, {}, "nothing"}, RefusedOutcome()),
              HasSubstr("  sent             -\n"));
}

}  // namespace
}  // namespace Tavrin
