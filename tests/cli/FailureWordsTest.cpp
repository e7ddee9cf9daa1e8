#include "tools/smm-inventory/FailureWords.h"

#include <gmock/gmock.h>

#include <vector>

#include "tools/smm-inventory/QueryResult.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;
using testing::HasSubstr;
using testing::Not;

struct StatusRow {
  int status;
  std::string name;
  std::string meaning;
  std::string nextStep;
};

TEST(FailureWords, StatusHasItsNameMeaningAndNextStep) {
  const std::vector<StatusRow> table = {
      {kExceptionStatus, "Exception", "the library gave up with an exception",
       "run again with -vvv and look at the answer"},
      {StatusCode::ConnectionKindNotAdmitted, "ConnectionKindNotAdmitted",
       "the connection kind admits no IPMI exchange", "report this as an error of the tool"},
      {StatusCode::NotConnected, "NotConnected", "no IPMI connection could be opened",
       "run again with -v and look at what the log says"},
      {StatusCode::UnusableAnswer, "UnusableAnswer",
       "the SMM refused the request or gave an answer of unfit length",
       "check that the device is an SMM, and run again with -vvv to see the answer"},
      {StatusCode::NoUsableResult, "NoUsableResult", "the SMM gave no usable answer",
       "run again; if it stays so, run with -vvv to see the answer"},
  };
  for (const StatusRow& row : table) {
    EXPECT_EQ(StatusName(row.status), row.name);
    EXPECT_EQ(FailureReason(row.status, {}), row.meaning);
    EXPECT_EQ(FailureReason(row.status, {"x", FailureCause::None, 0, ""}), row.meaning + " (x)");
    EXPECT_EQ(NextStep(row.status, {}), row.nextStep);
  }
  EXPECT_EQ(StatusName(StatusCode::Success), "Success");
}

struct CauseRow {
  FailureCause kind;
  std::string nextStep;
};

const std::vector<CauseRow>& CauseRows() {
  static const std::vector<CauseRow> table = {
      {FailureCause::NoAttempt, "give --attempts 3, or set IPMI_CONNECT_RETRY_TIMES to 1 or more"},
      {FailureCause::BadSetting, "correct that setting"},
      {FailureCause::HostName, "check the host name, or give the address"},
      {FailureCause::NameServer, "run again later, or give the address"},
      {FailureCause::Unreachable, "check host, port and this machine's network"},
      {FailureCause::Forbidden, "check host, port and this machine's firewall"},
      {FailureCause::Silence,
       "check host and port, that the SMM has power, and that it allows IPMI over LAN"},
      {FailureCause::FellSilent,
       "run again; if it stays so, allow more time with --session-timeout"},
      {FailureCause::Late, "allow more time, such as --session-timeout 10"},
      {FailureCause::Busy,
       "wait a minute, after which the SMM frees sessions that nobody uses, and run again"},
      {FailureCause::SuiteRefused, "try another cipher suite, such as -C 17"},
      {FailureCause::Ipmi20Missing,
       "check that the device is an SMM, and that its settings allow IPMI 2.0"},
      {FailureCause::KeyMissing, "clear the key K_g on the SMM"},
      {FailureCause::UserNameRefused,
       "check the user name, and that the SMM allows this user IPMI over LAN"},
      {FailureCause::PasswordRefused,
       "check the password; if it is right, try -W open-session-privilege"},
      {FailureCause::PrivilegeRefused, "try -L operator, -L user or -W open-session-privilege"},
      {FailureCause::DamagedAnswer,
       "run again; if it stays so, check the network, and that an SMM is what answers at host and "
       "port"},
      {FailureCause::OtherAnswer,
       "run again; if it stays so, check the network, and that an SMM is what answers at host and "
       "port"},
      {FailureCause::Memory, "free memory on this machine, and run again"},
      {FailureCause::Other, "run again with -v and look at what the log says"},
  };
  return table;
}

TEST(FailureWords, EachCauseHasANextStepWhateverTheStatus) {
  for (const CauseRow& row : CauseRows()) {
    for (const int status : {kExceptionStatus, 2, 3, 4}) {
      EXPECT_EQ(NextStep(status, {"words", row.kind, 0, ""}), row.nextStep);
    }
  }
}

TEST(FailureWords, OptionsAreNamedOnlyWhereTheyCanHelp) {
  for (const CauseRow& row : CauseRows()) {
    SCOPED_TRACE(row.nextStep);
    const std::string step = NextStep(2, {"words", row.kind, 0, ""});
    EXPECT_EQ(step.find("-L ") != std::string::npos, row.kind == FailureCause::PrivilegeRefused);
    EXPECT_EQ(step.find("-C ") != std::string::npos, row.kind == FailureCause::SuiteRefused);
    EXPECT_EQ(step.find("IPMI_") != std::string::npos, row.kind == FailureCause::NoAttempt);
  }
}

struct RefusalRow {
  std::uint8_t completionCode;
  std::string reason;
  std::string nextStep;
};

TEST(FailureWords, CompletionCodeTellsReasonAndNextStep) {
  const std::vector<RefusalRow> table = {
      {0xC0, "completion code 0xC0: busy", "run again in a minute"},
      {0xC1, "completion code 0xC1: command not known to the device",
       "check that the device is an SMM"},
      {0xC3, "completion code 0xC3: timeout within the device", "run again in a minute"},
      {0xD2, "completion code 0xD2: firmware starting or being updated",
       "run again when that is done"},
      {0xD4, "completion code 0xD4: insufficient privilege",
       "try a higher -L, or a user who has one"},
      {0xD5, "completion code 0xD5: not possible in the device's present state",
       "run again in a minute"},
      {0x01, "completion code 0x01",
       "check that the device is an SMM, and run again with -vvv to see the answer"},
      {0xFF, "completion code 0xFF",
       "check that the device is an SMM, and run again with -vvv to see the answer"},
  };
  for (const RefusalRow& row : table) {
    const Cause cause{"its answer is empty", FailureCause::None, row.completionCode, ""};
    EXPECT_EQ(FailureReason(StatusCode::UnusableAnswer, cause),
              "the SMM refused the request (" + row.reason + ")");
    EXPECT_EQ(NextStep(StatusCode::UnusableAnswer, cause), row.nextStep);
  }
}

TEST(FailureWords, SilenceAfterTheConnectionIsNoRefusal) {
  const Cause cause{"no answer", FailureCause::FellSilent, 0, ""};
  for (const int status : {kExceptionStatus, 3, 4}) {
    EXPECT_EQ(FailureReason(status, cause), "the SMM gave no answer (no answer)");
  }
  EXPECT_EQ(FailureReason(StatusCode::NotConnected, cause),
            "no IPMI connection could be opened (no answer)");
}

TEST(FailureWords, WhatIsNotKnownStandsBeforeWhy) {
  EXPECT_EQ(FailureReason(StatusCode::NoUsableResult, {"", FailureCause::None, 0xC0, "platform"}),
            "the SMM's platform is not known, since the SMM refused the request (completion code "
            "0xC0: busy)");
}

}  // namespace
}  // namespace Tavrin
