#include "report/Health.h"

#include <gmock/gmock.h>

#include <fstream>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/report/ExampleReading.h"
#include "tests/report/HealthyReading.h"

namespace Tavrin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Names and severities, in order.
std::vector<std::string> Found(const Reading& reading,
                               const std::vector<IgnoredFinding>& ignored = {}) {
  std::vector<std::string> found;
  for (const Finding& finding : FindingsOf(reading, ignored)) {
    found.push_back(NameOf(finding) + ' ' + std::string(SeverityWord(finding.rule->severity)));
  }
  return found;
}

std::string Words(const Reading& reading) { return FindingsText(FindingsOf(reading)); }

PsuFlags& FlagsOf(Reading& reading, std::size_t slot) {
  return reading.psuStatus->value.at(slot - 1);
}

PsuFans& FansOf(Reading& reading, std::size_t slot) { return reading.psuFans->value.at(slot - 1); }

template <typename Type>
Value<Type> ThatIs(Type value) {
  return {value, "", Absence::None};
}

template <typename Type>
Value<Type> Unread(Absence absence = Absence::QueryFailed) {
  return {std::nullopt, "", absence};
}

TEST(Health, EnclosureWithoutAFindingIsWell) {
  EXPECT_THAT(Found(HealthyReading()), IsEmpty());
  EXPECT_EQ(WorstOf({}), Severity::Ok);
  EXPECT_EQ(FindingsText({}), "");
}

TEST(Health, EveryStateOfANodeIsJudgedByWhatItSays) {
  const std::vector<std::pair<const char*, std::vector<std::string>>> table = {
      {"Power ON", {}},
      {"Power OFF", {}},
      {"No Permission", {}},
      {"Power Fault", {"node:2:power-fault CRITICAL"}},
      {"Fault", {"node:2:fault CRITICAL"}},
  };
  for (const auto& [state, found] : table) {
    Reading reading = HealthyReading();
    reading.nodeStatus->at(1) = Good(DecodeNode({state, "Half", "1", 0}));
    EXPECT_EQ(Found(reading), found) << state;
  }
}

TEST(Health, FirstAndLastNodeAreJudgedLikeTheOthers) {
  Reading reading = HealthyReading();
  for (const std::size_t place : {0U, 3U}) {
    reading.nodeStatus->at(place) = Good(DecodeNode({"Power Fault", "Half", "1", 0}));
  }
  EXPECT_THAT(Found(reading),
              ElementsAre("node:1:power-fault CRITICAL", "node:4:power-fault CRITICAL"));
  EXPECT_EQ(Words(reading), "nodes 1, 4 power fault");
}

TEST(Health, FlagsOfAPsuAreJudgedEach) {
  Reading reading = HealthyReading();
  FlagsOf(reading, 1).epow = ThatIs(true);
  FlagsOf(reading, 2).throttle = ThatIs(true);
  FlagsOf(reading, 3).powerGood = ThatIs(false);
  EXPECT_THAT(Found(reading), ElementsAre("psu:3:power-good CRITICAL", "psu:1:epow CRITICAL",
                                          "psu:2:throttle WARNING"));
  EXPECT_EQ(WorstOf(FindingsOf(reading)), Severity::Critical);
}

TEST(Health, EmptySlotIsToldOnceWhateverElseItGives) {
  Reading reading = HealthyReading();
  FlagsOf(reading, 3).present = ThatIs(false);
  FlagsOf(reading, 3).powerGood = ThatIs(false);
  FansOf(reading, 3).status = ThatIs(PsuFanState::NotPresent);
  reading.psuFirmware->value.at(2).version = Unread<std::string>(Absence::SlotUnanswered);
  EXPECT_THAT(Found(reading), ElementsAre("psu:3:presence WARNING"));
  FansOf(reading, 3).status = ThatIs(PsuFanState::Unknown);
  EXPECT_THAT(Found(reading), ElementsAre("psu:3:presence WARNING"));
  FansOf(reading, 3).status = Unread<PsuFanState>();
  EXPECT_THAT(Found(reading), ElementsAre("psu:3:presence WARNING"));
}

TEST(Health, FlagsThatAnEmptySlotGivesAreToldAllTheSame) {
  Reading reading = HealthyReading();
  FlagsOf(reading, 3).present = ThatIs(false);
  FlagsOf(reading, 3).epow = ThatIs(true);
  EXPECT_THAT(Found(reading), ElementsAre("psu:3:epow CRITICAL", "psu:3:presence WARNING"));
}

TEST(Health, FanIsJudgedByItsState) {
  Reading reading = HealthyReading();
  FansOf(reading, 1).status = ThatIs(PsuFanState::Abnormal);
  FansOf(reading, 2).status = ThatIs(PsuFanState::NotPresent);
  FansOf(reading, 3).status = ThatIs(PsuFanState::Unknown);
  EXPECT_THAT(Found(reading), ElementsAre("psu:1:fan WARNING", "psu:2:fan-presence WARNING",
                                          "psu:3:fan-status UNKNOWN"));
}

TEST(Health, FirmwareThatAPresentPsuDoesNotTellIsUnknown) {
  Reading reading = HealthyReading();
  reading.psuFirmware->value.at(0).version = Unread<std::string>(Absence::SlotUnanswered);
  reading.psuFirmware->value.at(1).identifier = Unread<std::string>(Absence::SlotUnanswered);
  EXPECT_THAT(Found(reading), ElementsAre("psu:1:firmware UNKNOWN", "psu:2:firmware UNKNOWN"));
  FansOf(reading, 1).status = ThatIs(PsuFanState::NotPresent);
  EXPECT_THAT(Found(reading), ElementsAre("psu:1:fan-presence WARNING", "psu:1:firmware UNKNOWN",
                                          "psu:2:firmware UNKNOWN"));
}

TEST(Health, FirmwareNeedNotBeRead) {
  Reading reading = HealthyReading();
  reading.psuFirmware.reset();
  EXPECT_THAT(Found(reading), IsEmpty());
  reading.psuFirmware = Refused<std::vector<PsuFirmware>>();
  EXPECT_THAT(Found(reading), ElementsAre("psu:*:firmware UNKNOWN"));
}

TEST(Health, FlagsOfANinthPsuAreNeitherWellNorUnknown) {
  const Reading reading = HealthyReadingOfNine();
  EXPECT_FALSE(reading.psuStatus->value.at(8).present.value.has_value());
  EXPECT_THAT(Found(reading), IsEmpty());
}

TEST(Health, NinthPsuWithoutAFanIsToldOnce) {
  Reading reading = HealthyReadingOfNine();
  FansOf(reading, 9).status = ThatIs(PsuFanState::NotPresent);
  reading.psuFirmware->value.at(8).version = Unread<std::string>(Absence::SlotUnanswered);
  EXPECT_THAT(Found(reading), ElementsAre("psu:9:fan-presence WARNING"));
  EXPECT_THAT(Found(reading, {ParseIgnoredFinding("psu:9:fan")}),
              ElementsAre("psu:9:fan-presence WARNING"));
  FansOf(reading, 9).status = ThatIs(PsuFanState::Normal);
  EXPECT_THAT(Found(reading), ElementsAre("psu:9:firmware UNKNOWN"));
}

TEST(Health, WhatWasNotReadIsUnknown) {
  Reading reading = HealthyReading();
  reading.nodeStatus->at(3) = Refused<NodeState>();
  FansOf(reading, 2).status = Unread<PsuFanState>();
  FansOf(reading, 3).status = Unread<PsuFanState>(Absence::SlotUnanswered);
  EXPECT_THAT(Found(reading), ElementsAre("node:4:status UNKNOWN", "psu:2:fan-status UNKNOWN",
                                          "psu:3:fan-status UNKNOWN"));
  EXPECT_EQ(WorstOf(FindingsOf(reading)), Severity::Unknown);
}

TEST(Health, EachFlagThatWasNotReadMakesThePsuUnknown) {
  for (Flag PsuFlags::*const flag :
       {&PsuFlags::epow, &PsuFlags::throttle, &PsuFlags::present, &PsuFlags::powerGood}) {
    for (const Absence absence : {Absence::QueryFailed, Absence::NotReported}) {
      Reading reading = HealthyReading();
      FlagsOf(reading, 2).*flag = Unread<bool>(absence);
      EXPECT_THAT(Found(reading), ElementsAre("psu:2:status UNKNOWN"));
    }
  }
}

TEST(Health, PsuWithoutARecordOfItsStatusIsUnknown) {
  Reading reading = HealthyReading();
  reading.psuStatus->value.pop_back();
  EXPECT_THAT(Found(reading), ElementsAre("psu:3:status UNKNOWN"));
}

TEST(Health, PartThatWasNotReadAtAllIsUnknown) {
  Reading reading = HealthyReading();
  reading.nodeStatus.reset();
  reading.psuFans = Disconnected<std::vector<PsuFans>>();
  reading.psuStatus.reset();
  EXPECT_THAT(Found(reading), ElementsAre("node:*:status UNKNOWN", "psu:*:status UNKNOWN",
                                          "psu:*:fan-status UNKNOWN"));
  EXPECT_EQ(Words(reading), "node status not read; PSU status not read; PSU fan status not known");
  reading.psuStatus = Disconnected<std::vector<PsuFlags>>();
  reading.psuFans.reset();
  reading.nodeStatus.emplace();
  EXPECT_THAT(Found(reading), ElementsAre("node:*:status UNKNOWN", "psu:*:status UNKNOWN",
                                          "psu:*:fan-status UNKNOWN"));
}

TEST(Health, ReadingThatFailedSaysWhyAndNothingElse) {
  EXPECT_THAT(Found(FailedReading()), ElementsAre("enclosure:unread UNKNOWN"));
  EXPECT_EQ(Words(FailedReading()), "not read: no IPMI connection could be opened (no answer)");
}

TEST(Health, FailureThatAllQueriesShareIsToldOnce) {
  EXPECT_THAT(Found(LostReading()), ElementsAre("enclosure:unread UNKNOWN"));
  EXPECT_EQ(Words(LostReading()), Words(FailedReading()));
}

TEST(Health, ReadingThatFailedInDifferentWaysNamesWhatWasNotRead) {
  Reading reading = LostReading();
  reading.psuFans = Refused<std::vector<PsuFans>>();
  EXPECT_EQ(Words(reading),
            "kind of enclosure not known; node status not read; PSU status not read; PSU fan "
            "status not known");
}

TEST(Health, WhatWasReadBeforeAFailureIsJudged) {
  Reading reading = HealthyReading();
  reading.nodeStatus->at(1) = Good(DecodeNode({"Power Fault", "Half", "1", 0}));
  reading.psuFans.reset();
  reading.psuStatus.reset();
  reading.failure = DisconnectedOutcome();
  EXPECT_THAT(Found(reading),
              ElementsAre("node:2:power-fault CRITICAL", "enclosure:unread UNKNOWN"));
}

TEST(Health, ReasonIsToldOfTheWholeAlone) {
  Reading reading = HealthyReading();
  reading.nodeStatus->at(1) = Good(DecodeNode({"Power Fault", "Half", "1", 0}));
  reading.failure = DisconnectedOutcome();
  const std::vector<Finding> findings = FindingsOf(reading);
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0].reason, "");
  EXPECT_EQ(findings[1].reason, "no IPMI connection could be opened (no answer)");
}

TEST(Health, EnclosureOfUnknownKindIsUnknownHoweverWellItLooks) {
  const std::vector<Query<Number> Detection::*> counts = {
      &Detection::platformId, &Detection::psuSlotCount, &Detection::nodeCount};
  for (Query<Number> Detection::*const count : counts) {
    Reading reading = HealthyReading();
    (*reading.detection).*count = Disconnected<Number>();
    EXPECT_THAT(Found(reading), ElementsAre("enclosure:kind UNKNOWN"));
  }
  Reading reading = HealthyReading();
  reading.detection->generation = Good(GenerationOf(static_cast<SMMIype>(7)));
  EXPECT_THAT(Found(reading), ElementsAre("enclosure:kind UNKNOWN"));
  reading.detection->generation = Disconnected<Value<SMMIype>>();
  EXPECT_THAT(Found(reading), ElementsAre("enclosure:kind UNKNOWN"));
  reading.detection->generation = Good(GenerationOf(SMM_FIRST_GENERATION));
  EXPECT_THAT(Found(reading), IsEmpty());
  reading.detection.reset();
  EXPECT_THAT(Found(reading), ElementsAre("enclosure:kind UNKNOWN"));
}

TEST(Health, EveryReadingOfWhichAPartFailedIsNotWell) {
  for (const Reading& reading : {LostReading(), FailedReading(), Reading{}}) {
    EXPECT_EQ(WorstOf(FindingsOf(reading)), Severity::Unknown);
  }
}

TEST(Health, FindingsOfOneRuleAreToldTogether) {
  Reading reading = HealthyReadingOfNine();
  for (const std::size_t slot : {1U, 2U, 4U, 5U, 6U, 8U}) {
    FlagsOf(reading, slot).present = ThatIs(false);
  }
  reading.nodeStatus->at(1) = Good(DecodeNode({"Power Fault", "Half", "1", 0}));
  EXPECT_EQ(Words(reading), "node 2 power fault; PSUs 1, 2, 4-6, 8 missing");
}

TEST(Health, PartsThatItNeedsSayNothingElse) {
  Reading reading = HealthyReading();
  reading.identity.reset();
  reading.chassisPower.reset();
  reading.powerCaps.reset();
  reading.nodePower.reset();
  reading.psuFirmware.reset();
  EXPECT_THAT(Found(reading), IsEmpty());
  EXPECT_THAT(kHealthParts, ElementsAre(Part::NodeStatus, Part::PsuFans, Part::PsuStatus));
}

TEST(HealthIgnored, FindingThatASiteKnowsIsLeftOut) {
  Reading reading = HealthyReading();
  FlagsOf(reading, 2).present = ThatIs(false);
  FlagsOf(reading, 3).present = ThatIs(false);
  EXPECT_THAT(Found(reading, {ParseIgnoredFinding("psu:3:presence")}),
              ElementsAre("psu:2:presence WARNING"));
  EXPECT_THAT(Found(reading, {ParseIgnoredFinding("psu:*:presence")}), IsEmpty());
  for (const char* const other : {"psu:1:presence", "psu:*:epow", "node:*:fault"}) {
    EXPECT_EQ(Found(reading, {ParseIgnoredFinding(other)}).size(), 2) << other;
  }
}

TEST(HealthIgnored, RuleOfTheSameNameOfTheOtherKindStays) {
  Reading reading = HealthyReading();
  reading.nodeStatus->at(1) = Disconnected<NodeState>();
  FlagsOf(reading, 1).epow = Unread<bool>();
  EXPECT_THAT(Found(reading, {ParseIgnoredFinding("node:*:status")}),
              ElementsAre("psu:1:status UNKNOWN"));
  EXPECT_THAT(Found(reading, {ParseIgnoredFinding("psu:*:status")}),
              ElementsAre("node:2:status UNKNOWN"));
}

TEST(HealthIgnored, PresenceStandsForWhatAnEmptySlotGives) {
  Reading reading = HealthyReadingOfNine();
  FansOf(reading, 9).status = ThatIs(PsuFanState::NotPresent);
  reading.psuFirmware->value.at(7).version = Unread<std::string>(Absence::SlotUnanswered);
  FansOf(reading, 8).status = ThatIs(PsuFanState::Abnormal);
  EXPECT_THAT(Found(reading, {ParseIgnoredFinding("psu:*:presence")}),
              ElementsAre("psu:8:fan WARNING"));
}

TEST(HealthIgnored, NameOfAFindingIsWhatIgnoresIt) {
  Reading reading = HealthyReading();
  reading.nodeStatus.reset();
  FlagsOf(reading, 2).throttle = ThatIs(true);
  for (const Finding& finding : FindingsOf(reading)) {
    EXPECT_EQ(Found(reading, {ParseIgnoredFinding(NameOf(finding))}).size(), 1) << NameOf(finding);
  }
}

std::string Refusal(const std::string& text) {
  try {
    ParseIgnoredFinding(text);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "taken";
}

TEST(HealthIgnored, ValueThatNamesNoFindingIsRefusedWithWhatWasExpected) {
  const std::string form = "KIND:NUMBER:RULE with a kind of node or psu, such as psu:9:presence";
  for (const char* const text :
       {"", "psu", "psu:9", "psu:9:presence:", ":9:presence", "PSU:9:presence", "fan:1:fan"}) {
    EXPECT_EQ(Refusal(text),
              "finding to ignore is \"" + std::string(text) + "\"; expected " + form);
  }
  for (const char* const text : {"psu:0:fan", "psu:10:fan", "psu:+1:fan", "psu:01:fan", "psu::fan",
                                 "psu:1x:fan", "psu:**:fan", "psu:99999999999999999999:fan"}) {
    EXPECT_EQ(Refusal(text), "finding to ignore is \"" + std::string(text) +
                                 "\"; expected psu:NUMBER:RULE with a number from 1 to 9, or * "
                                 "for each");
  }
  EXPECT_THAT(Refusal("node:13:fault"), HasSubstr("node:NUMBER:RULE with a number from 1 to 12,"));
  EXPECT_EQ(Refusal("node:1:presence"),
            "finding to ignore is \"node:1:presence\"; expected node:NUMBER:RULE with a rule of "
            "power-fault, fault, status");
  EXPECT_THAT(Refusal("psu:1:"), HasSubstr("with a rule of power-good, epow, presence, throttle"));
  EXPECT_THAT(Refusal("psu:1:\n"), HasSubstr("\"psu:1:\\n\""));
}

TEST(HealthIgnored, EnclosureThatWasNotReadCannotBeIgnored) {
  EXPECT_THAT(Refusal("enclosure:*:unread"), HasSubstr("a kind of node or psu"));
}

TEST(HealthIgnored, HighestNumbersAreTaken) {
  EXPECT_EQ(ParseIgnoredFinding("node:12:fault").number, 12);
  EXPECT_EQ(ParseIgnoredFinding("psu:9:fan").number, 9);
  EXPECT_EQ(ParseIgnoredFinding("psu:*:fan").number, std::nullopt);
}

TEST(HealthRules, EachHasANameOfItsOwnAndStandsBehindThoseThatAreWorse) {
  std::set<std::string> names;
  Severity before = Severity::Critical;
  for (const HealthRule& rule : HealthRules()) {
    EXPECT_TRUE(names.insert(NameOf({&rule, 0, ""})).second) << rule.name;
    EXPECT_NE(rule.severity, Severity::Ok) << rule.name;
    EXPECT_LE(rule.severity, before) << rule.name;
    before = rule.severity;
  }
}

/// The rows of the page's table, as far as they are of rules.
std::vector<std::string> DocumentedRules() {
  std::ifstream page(HEALTH_PAGE);
  std::vector<std::string> rows;
  for (std::string line; std::getline(page, line);) {
    if (line.find(":N:") != std::string::npos || line.rfind("| `enclosure:", 0) == 0) {
      rows.push_back(line);
    }
  }
  return rows;
}

std::string RowOf(const HealthRule& rule) {
  const std::string number = rule.kind == HealthKind::Enclosure ? ":" : ":N:";
  return "| `" + std::string(KindWord(rule.kind)) + number + std::string(rule.name) + "` | " +
         std::string(SeverityWord(rule.severity)) + " | " + std::string(rule.words) + " | " +
         std::string(rule.why) + " |";
}

TEST(HealthRules, AreThoseOfThePageForOperators) {
  std::vector<std::string> rows;
  for (const HealthRule& rule : HealthRules()) {
    rows.push_back(RowOf(rule));
  }
  EXPECT_EQ(DocumentedRules(), rows);
}

}  // namespace
}  // namespace Tavrin
