#include "tools/smm-inventory/NextStep.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "reading/Query.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

std::string StepAfter(int status, const Cause& cause) {
  QueryOutcome outcome;
  outcome.status = status;
  outcome.cause = cause;
  return NextStep(outcome);
}

TEST(NextStep, StatusHasOneWhereNoCauseIsKnown) {
  const std::map<int, std::string> table = {
      {kExceptionStatus, "run again with -vvv and look at the answer"},
      {StatusCode::ConnectionKindNotAdmitted, "report this as an error of the tool"},
      {StatusCode::NotConnected, "run again with -v and look at what the log says"},
      {StatusCode::UnusableAnswer,
       "check that the device is an SMM, and run again with -vvv to see the answer"},
      {StatusCode::NoUsableResult, "run again; if it stays so, run with -vvv to see the answer"},
      {5, "run again; if it stays so, run with -vvv to see the answer"},
  };
  for (const auto& [status, step] : table) {
    EXPECT_EQ(StepAfter(status, {}), step);
  }
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
      {FailureCause::TimeOver, "allow more time, such as --timeout 300"},
      {FailureCause::Stopped, "run again"},
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

TEST(NextStep, EachCauseHasOneWhateverTheStatus) {
  for (const CauseRow& row : CauseRows()) {
    for (const int status : {kExceptionStatus, 2, 3, 4}) {
      EXPECT_EQ(StepAfter(status, {"words", row.kind, 0, ""}), row.nextStep);
    }
  }
}

TEST(NextStep, OptionsAreNamedOnlyWhereTheyCanHelp) {
  for (const CauseRow& row : CauseRows()) {
    SCOPED_TRACE(row.nextStep);
    const std::string step = StepAfter(2, {"words", row.kind, 0, ""});
    EXPECT_EQ(step.find("-L ") != std::string::npos, row.kind == FailureCause::PrivilegeRefused);
    EXPECT_EQ(step.find("-C ") != std::string::npos, row.kind == FailureCause::SuiteRefused);
    EXPECT_EQ(step.find("IPMI_") != std::string::npos, row.kind == FailureCause::NoAttempt);
  }
}

TEST(NextStep, CompletionCodeHasOneWhereItSaysWhatHelps) {
  const std::map<std::uint8_t, std::string> table = {
      {0xC0, "run again in a minute"},
      {0xC1, "check that the device is an SMM"},
      {0xC3, "run again in a minute"},
      {0xD2, "run again when that is done"},
      {0xD4, "try a higher -L, or a user who has one"},
      {0xD5, "run again in a minute"},
      {0x01, "check that the device is an SMM, and run again with -vvv to see the answer"},
      {0xFF, "check that the device is an SMM, and run again with -vvv to see the answer"},
  };
  for (const auto& [code, step] : table) {
    EXPECT_EQ(StepAfter(StatusCode::UnusableAnswer,
                        {"its answer is empty", FailureCause::None, code, ""}),
              step);
  }
}

}  // namespace
}  // namespace Tavrin
