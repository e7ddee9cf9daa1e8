#include "tools/smm-inventory/TextReport.h"

#include <gmock/gmock.h>

#include <sstream>

#include "tests/cli/Results.h"
#include "tools/smm-inventory/Describe.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string Printed(const Section& section) {
  std::ostringstream out;
  PrintSection(out, section);
  return out.str();
}

/// Counts how often what was written is passed on.
class FlushCount : public std::stringbuf {
 public:
  int Value() const { return value_; }

 private:
  int sync() override {
    ++value_;
    return 0;
  }
  int value_ = 0;
};

TEST(TextReport, SectionIsPassedOnBeforeTheNextIsRead) {
  FlushCount flushes;
  std::ostream out(&flushes);
  PrintSection(out, DescribeIdentity(FullIdentity()));
  EXPECT_EQ(flushes.Value(), 1);
}

TEST(TextReport, DetectionIsShownLineByLine) {
  EXPECT_EQ(Printed(DescribeDetection(FullDetection())),
            "\n"
            "enclosure\n"
            "  generation   second\n"
            "  platform id  253\n"
            "  PSU slots    9\n"
            "  nodes        12\n");
}

TEST(TextReport, GenerationIsNamedWhereItIsKnown) {
  Detection detection = FullDetection();
  detection.generation.value = SMM_FIRST_GENERATION;
  EXPECT_THAT(Printed(DescribeDetection(detection)), HasSubstr("generation   first\n"));
  detection.generation.value = static_cast<SMMIype>(7);
  EXPECT_THAT(Printed(DescribeDetection(detection)), HasSubstr("generation   unknown (type 7)\n"));
}

TEST(TextReport, IdentityIsShownLineByLine) {
  EXPECT_EQ(Printed(DescribeIdentity(FullIdentity())),
            "\n"
            "identity\n"
            "  machine type      1234\n"
            "  serial number     J1 23\n"
            "  firmware version  ABC-1a.05\n"
            "  name              (empty)\n");
}

TEST(TextReport, ControlBytesOfTheControllerAreEscaped) {
  Identity identity = FullIdentity();
  identity.serialNumber.value = "\x1b[2J";
  EXPECT_THAT(Printed(DescribeIdentity(identity)), HasSubstr("serial number     \\x1b[2J\n"));
}

TEST(TextReport, FailedQueryIsShownAsNotReadBesideTheOthers) {
  Identity identity = FullIdentity();
  identity.machineType = Refused<std::string>();
  EXPECT_THAT(Printed(DescribeIdentity(identity)), HasSubstr("  machine type      not read\n"
                                                             "  serial number     J1 23\n"));
}

TEST(TextReport, ChassisPowerIsShownLineByLine) {
  EXPECT_EQ(Printed(DescribeChassisPower(Good(ChassisPowerCon{"0", "350", "65535"}))),
            "\n"
            "chassis power\n"
            "  minimum  0\n"
            "  average  350\n"
            "  maximum  65535\n");
}

TEST(TextReport, PowerCapsAreShownLineByLine) {
  EXPECT_EQ(Printed(DescribePowerCaps(Good(ChassisPowerCap{"1", "2", "N/A", "4", "5"}))),
            "\n"
            "power caps\n"
            "  range minimum   1\n"
            "  range maximum   2\n"
            "  protective cap  N/A\n"
            "  user cap        4\n"
            "  thermal cap     5\n");
}

TEST(TextReport, RefusedRecordHasAllItsFieldsNotRead) {
  EXPECT_EQ(Printed(DescribeChassisPower(Refused<ChassisPowerCon>())),
            "\n"
            "chassis power\n"
            "  minimum  not read\n"
            "  average  not read\n"
            "  maximum  not read\n");
}

TEST(TextReport, NodeStatusIsATable) {
  EXPECT_EQ(Printed(DescribeNodeStatus({Good(NodeStatus{"Power ON", "Half", "1", 0}),
                                        Refused<NodeStatus>(),
                                        Good(NodeStatus{"No Permission", "3", "N/A", 255})})),
            "\n"
            "node status\n"
            "  node  power state    width     height    permission\n"
            "  1     Power ON       Half      1         0\n"
            "  2     not read       not read  not read  not read\n"
            "  3     No Permission  3         N/A       255\n");
}

TEST(TextReport, NodePowerIsATable) {
  EXPECT_EQ(Printed(DescribeNodePower({Good(ChassisPowerCon{"120", "N/A", "410"})})),
            "\n"
            "node power\n"
            "  node  minimum  average  maximum\n"
            "  1     120      N/A      410\n");
}

TEST(TextReport, FansAreATableWithADashWhereAFanIsNone) {
  EXPECT_EQ(Printed(DescribePsuFans(Good(FansOfBothGenerations()), 2)),
            "\n"
            "PSU fans\n"
            "  slot  name  speed A  Pat A  speed B  Pat B  status\n"
            "  1     PSU1  1000     N/A    -        -      Abnormal\n"
            "  2     PSU2  10000    50     N/A      7      Normal\n");
}

TEST(TextReport, SlotsWithoutARecordAreShownInTheirPlace) {
  const std::string text =
      Printed(DescribePsuFans(Good<std::vector<PSUFanSpeed>>({FansOfBothGenerations()[1]}), 3));
  EXPECT_THAT(text, HasSubstr("  1     not read  not read"));
  EXPECT_THAT(text, HasSubstr("\n  2     PSU2"));
  EXPECT_THAT(text, HasSubstr("\n  3     not read"));
}

TEST(TextReport, CountedSlotsAreShownAlsoWithoutAnyRecord) {
  const std::string text = Printed(DescribePsuFans(Refused<std::vector<PSUFanSpeed>>(), 2));
  EXPECT_THAT(text, HasSubstr("\n  1     not read"));
  EXPECT_THAT(text, HasSubstr("\n  2     not read"));
}

TEST(TextReport, RecordsAreShownAlsoWhereTheSlotsWereNotCounted) {
  EXPECT_THAT(Printed(DescribePsuFans(Refused(FansOfBothGenerations()), 0)),
              HasSubstr("\n  2     PSU2"));
}

TEST(TextReport, RawBytesOfTheFirmwareIdentifierAreEscaped) {
  EXPECT_EQ(Printed(DescribePsuFirmware(Good<std::vector<PSUFwInfo>>({FirmwareOfRawBytes()}), 1)),
            "\n"
            "PSU firmware\n"
            "  slot  name  identifier            version  description\n"
            "  1     PSU1  PSU\\xff\\x00\\x1bDa.01  1.0a     Power Supply 1\n");
}

TEST(TextReport, PsuFlagsAreATable) {
  EXPECT_EQ(Printed(DescribePsuStatus(Good<std::vector<PSUStatus>>(
                {{"trigger", "not trigger", "present", "power good"},
                 {"not trigger", "trigger", "not present", "not power good"}}))),
            "\n"
            "PSU status\n"
            "  slot  EPOW         throttle     presence     power good\n"
            "  1     trigger      not trigger  present      power good\n"
            "  2     not trigger  trigger      not present  not power good\n");
}

TEST(TextReport, SlotsBeyondTheFlagsHaveADashAndANoteBelowTheTable) {
  const auto printed = [](std::size_t slotCount) {
    const PSUStatus flags{"not trigger", "not trigger", "not present", "not power good"};
    return Printed(DescribePsuStatus(Good(std::vector<PSUStatus>(slotCount, flags))));
  };
  EXPECT_THAT(printed(9),
              testing::EndsWith("\n  8     not trigger  not trigger  not present  not power good\n"
                                "  9     -            -            -            -\n"
                                "  The SMM's answer holds the flags of 8 PSUs only; those of any "
                                "later slot are not told.\n"));
  EXPECT_THAT(printed(8), Not(HasSubstr("The SMM")));
}

TEST(TextReport, RefusedFlagsOfManySlotsNeedNoExplanation) {
  EXPECT_THAT(Printed(DescribePsuStatus(Refused(std::vector<PSUStatus>(9)))),
              Not(HasSubstr("The SMM")));
}

TEST(TextReport, RefusedPsuFlagsAreNotReadInEverySlot) {
  const std::string text =
      Printed(DescribePsuStatus(Refused(std::vector<PSUStatus>(2, PSUStatus{}))));
  EXPECT_THAT(text, HasSubstr("\n  1     not read"));
  EXPECT_THAT(text, HasSubstr("\n  2     not read"));
  EXPECT_THAT(text, Not(HasSubstr("(empty)")));
}

TEST(TextReport, TableWithoutRowsIsNotRead) {
  EXPECT_EQ(Printed(DescribePsuStatus({{}, StatusCode::NotConnected, {}})),
            "\n"
            "PSU status\n"
            "  not read\n");
}

TEST(TextReport, SelectionTellsWhatWasSentAndAcknowledged) {
  EXPECT_EQ(Printed(DescribePsuSelection(Good(PsuSelection{7, true, 3, "clamped"}))),
            "\n"
            "PSU selection\n"
            "  asked for        7\n"
            "  sent             3\n"
            "  remark           clamped\n"
            "  acknowledgement  received\n");
}

TEST(TextReport, SelectionWithoutNumberAndAcknowledgementSaysSo) {
  EXPECT_EQ(Printed(DescribePsuSelection(Refused(PsuSelection{7, true, {}, "left out"}))),
            "\n"
            "PSU selection\n"
            "  asked for        7\n"
            "  sent             none\n"
            "  remark           left out\n"
            "  acknowledgement  missing\n");
}

TEST(TextReport, SelectionThatWasNotSentHasADash) {
  EXPECT_THAT(Printed(DescribePsuSelection(Refused(PsuSelection{7, false, {}, "nothing"}))),
              HasSubstr("  sent             -\n"));
}

TEST(TextReport, RunWithoutAnyQuerySaysSo) {
  std::ostringstream out;
  PrintNoSections(out);
  EXPECT_EQ(out.str(), "\nnothing read\n");
}

}  // namespace
}  // namespace Tavrin
