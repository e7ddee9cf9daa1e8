#include "tools/smm-inventory/Ending.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/report/ExampleReading.h"
#include "tools/smm-inventory/ExitCode.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

Reading ThatCameToNothing(FailureCause kind) {
  Reading reading;
  reading.failure.emplace();
  reading.failure->status = StatusCode::NotConnected;
  reading.failure->cause.kind = kind;
  return reading;
}

Reading WithAFailedName(FailureCause kind) {
  Reading reading = ExampleReading();
  reading.identity->name.status = StatusCode::NotConnected;
  reading.identity->name.cause.kind = kind;
  return reading;
}

TEST(Ending, WholeReadingIsRead) { EXPECT_EQ(EndingOf(ExampleReading()), Ending::Read); }

TEST(Ending, SlotThatGaveNothingIsNoFailure) {
  Reading reading = ExampleReading();
  reading.psuFirmware->value[0].version = {std::nullopt, "", Absence::SlotUnanswered};
  EXPECT_EQ(EndingOf(reading), Ending::Read);
}

TEST(Ending, ReadingThatCameToNothingEndsByItsCause) {
  const std::vector<std::pair<FailureCause, Ending>> table = {
      {FailureCause::HostName, Ending::NotReached},
      {FailureCause::NameServer, Ending::NotReached},
      {FailureCause::Unreachable, Ending::NotReached},
      {FailureCause::Forbidden, Ending::NotReached},
      {FailureCause::Silence, Ending::NotReached},
      {FailureCause::UserNameRefused, Ending::UserRefused},
      {FailureCause::PasswordRefused, Ending::PasswordRefused},
      {FailureCause::PrivilegeRefused, Ending::PrivilegeRefused},
      {FailureCause::TimeOver, Ending::TimedOut},
      {FailureCause::Stopped, Ending::Stopped},
      {FailureCause::FellSilent, Ending::NotRead},
      {FailureCause::SuiteRefused, Ending::NotRead},
      {FailureCause::None, Ending::NotRead}};
  for (const auto& [kind, ending] : table) {
    EXPECT_EQ(EndingOf(ThatCameToNothing(kind)), ending) << static_cast<int>(kind);
  }
}

TEST(Ending, ExceptionOutsideTheQueriesIsAnUnexpectedError) {
  Reading reading = ThatCameToNothing(FailureCause::None);
  reading.failure->status = kExceptionStatus;
  EXPECT_EQ(EndingOf(reading), Ending::UnexpectedError);
}

TEST(Ending, DetectionThatThePrivilegeDoesNotAllowIsARefusalOfIt) {
  Reading reading = ThatCameToNothing(FailureCause::None);
  reading.failure->cause.completionCode = 0xD4;
  EXPECT_EQ(EndingOf(reading), Ending::PrivilegeRefused);
  reading.failure->cause.completionCode = 0xD5;
  EXPECT_EQ(EndingOf(reading), Ending::NotRead);
}

TEST(Ending, FailedQueryLeavesAReadingInPart) {
  for (const FailureCause kind : {FailureCause::None, FailureCause::Silence, FailureCause::Other}) {
    EXPECT_EQ(EndingOf(WithAFailedName(kind)), Ending::PartlyRead) << static_cast<int>(kind);
  }
}

TEST(Ending, RefusalTimeOutAndStopInTheMiddleAreTold) {
  EXPECT_EQ(EndingOf(WithAFailedName(FailureCause::PasswordRefused)), Ending::PasswordRefused);
  EXPECT_EQ(EndingOf(WithAFailedName(FailureCause::TimeOver)), Ending::TimedOut);
  EXPECT_EQ(EndingOf(WithAFailedName(FailureCause::Stopped)), Ending::Stopped);
}

TEST(ExitCode, IsZeroWhereEverythingWasRead) {
  EXPECT_EQ(ExitCodeOf({Ending::Read, Ending::Read}), 0);
}

TEST(ExitCode, IsOneWhereSomethingWasNotRead) {
  for (const std::vector<Ending>& endings : {std::vector<Ending>{Ending::PartlyRead},
                                             {Ending::NotRead},
                                             {Ending::TimedOut},
                                             {Ending::Read, Ending::NotReached},
                                             {Ending::Read, Ending::UnexpectedError},
                                             {Ending::NotReached, Ending::PasswordRefused}}) {
    EXPECT_EQ(ExitCodeOf(endings), 1);
  }
}

TEST(ExitCode, IsThreeWhereEachEndedWithAnUnexpectedError) {
  EXPECT_EQ(ExitCodeOf({Ending::UnexpectedError, Ending::UnexpectedError}), 3);
}

TEST(ExitCode, IsFourWhereNobodyWasReached) {
  EXPECT_EQ(ExitCodeOf({Ending::NotReached, Ending::NotReached}), 4);
}

TEST(ExitCode, IsFiveWhereEachRefusedUserPasswordOrPrivilege) {
  EXPECT_EQ(ExitCodeOf({Ending::UserRefused, Ending::PasswordRefused, Ending::PrivilegeRefused}),
            5);
}

TEST(SummaryLine, FoldsThoseThatFailedAndCountsWhy) {
  std::vector<Target> targets(20);
  std::vector<Ending> endings(20, Ending::Read);
  for (std::size_t index = 0; index < targets.size(); ++index) {
    targets[index].host = "rack" + std::string(index < 9 ? "0" : "") + std::to_string(index + 1);
  }
  endings[2] = endings[16] = Ending::NotReached;
  endings[17] = Ending::PasswordRefused;
  targets[16].writtenSettings = "user=ann cipher-suite=17";
  EXPECT_EQ(SummaryLine(targets, endings),
            "failed 3 of 20: rack[03,17-18] (not reached 2, password 1)\n");
  EXPECT_EQ(FailedHosts(targets, endings),
            "rack03:623\nrack17:623 user=ann cipher-suite=17\nrack18:623\n");
}

TEST(SummaryLine, NamesThePortWhereItIsNotTheUsualOne) {
  std::vector<Target> targets(1);
  targets[0].host = "2001:db8::1";
  targets[0].port = 6230;
  EXPECT_EQ(SummaryLine(targets, {Ending::TimedOut}),
            "failed 1 of 1: [2001:db8::1]:6230 (timed out 1)\n");
}

TEST(SummaryLine, IsEmptyWhereAllWereRead) {
  EXPECT_EQ(SummaryLine(std::vector<Target>(2), {Ending::Read, Ending::Read}), "");
  EXPECT_EQ(FailedHosts(std::vector<Target>(2), {Ending::Read, Ending::Read}), "");
}

}  // namespace
}  // namespace Tavrin
