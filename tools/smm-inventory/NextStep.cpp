#include "tools/smm-inventory/NextStep.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "reading/Query.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

struct CauseStep {
  FailureCause kind;
  const char* nextStep;
};

constexpr const char* kRunAgain =
    "run again; if it stays so, check the network, and that an SMM is what answers at host and "
    "port";

constexpr std::array kCauseSteps = {
    CauseStep{FailureCause::NoAttempt,
              "give --attempts 3, or set IPMI_CONNECT_RETRY_TIMES to 1 or more"},
    CauseStep{FailureCause::BadSetting, "correct that setting"},
    CauseStep{FailureCause::HostName, "check the host name, or give the address"},
    CauseStep{FailureCause::NameServer, "run again later, or give the address"},
    CauseStep{FailureCause::Unreachable, "check host, port and this machine's network"},
    CauseStep{FailureCause::Forbidden, "check host, port and this machine's firewall"},
    CauseStep{FailureCause::Silence,
              "check host and port, that the SMM has power, and that it allows IPMI over LAN"},
    CauseStep{FailureCause::FellSilent,
              "run again; if it stays so, allow more time with --session-timeout"},
    CauseStep{FailureCause::Late, "allow more time, such as --session-timeout 10"},
    CauseStep{FailureCause::Busy,
              "wait a minute, after which the SMM frees sessions that nobody uses, and run again"},
    CauseStep{FailureCause::TimeOver, "allow more time, such as --timeout 300"},
    CauseStep{FailureCause::Stopped, "run again"},
    CauseStep{FailureCause::SuiteRefused, "try another cipher suite, such as -C 17"},
    CauseStep{FailureCause::Ipmi20Missing,
              "check that the device is an SMM, and that its settings allow IPMI 2.0"},
    CauseStep{FailureCause::KeyMissing, "clear the key K_g on the SMM"},
    CauseStep{FailureCause::UserNameRefused,
              "check the user name, and that the SMM allows this user IPMI over LAN"},
    CauseStep{FailureCause::PasswordRefused,
              "check the password; if it is right, try -W open-session-privilege"},
    CauseStep{FailureCause::PrivilegeRefused,
              "try -L operator, -L user or -W open-session-privilege"},
    CauseStep{FailureCause::DamagedAnswer, kRunAgain},
    CauseStep{FailureCause::OtherAnswer, kRunAgain},
    CauseStep{FailureCause::Memory, "free memory on this machine, and run again"},
    CauseStep{FailureCause::Other, "run again with -v and look at what the log says"},
};

struct RefusalStep {
  std::uint8_t completionCode;
  const char* nextStep;
};

constexpr const char* kRunAgainLater = "run again in a minute";

constexpr std::array kRefusalSteps = {
    RefusalStep{0xC0, kRunAgainLater},
    RefusalStep{0xC1, "check that the device is an SMM"},
    RefusalStep{0xC3, kRunAgainLater},
    RefusalStep{0xD2, "run again when that is done"},
    RefusalStep{0xD4, "try a higher -L, or a user who has one"},
    RefusalStep{0xD5, kRunAgainLater},
};

struct StatusStep {
  int status;
  const char* nextStep;
};

constexpr std::array kStatusSteps = {
    StatusStep{kExceptionStatus, "run again with -vvv and look at the answer"},
    StatusStep{StatusCode::ConnectionKindNotAdmitted, "report this as an error of the tool"},
    StatusStep{StatusCode::NotConnected, "run again with -v and look at what the log says"},
    StatusStep{StatusCode::UnusableAnswer,
               "check that the device is an SMM, and run again with -vvv to see the answer"},
    StatusStep{StatusCode::NoUsableResult,
               "run again; if it stays so, run with -vvv to see the answer"},
};

template <typename Table, typename Predicate>
auto FindRow(const Table& table, Predicate matches) {
  const auto* const row = std::find_if(table.begin(), table.end(), matches);
  return row == table.end() ? nullptr : row;
}

}  // namespace

// The cause tells more exactly than the status what helps.
std::string NextStep(const QueryOutcome& outcome) {
  const Cause& cause = outcome.cause;
  const CauseStep* const causeStep = FindRow(
      kCauseSteps, [&cause](const CauseStep& candidate) { return candidate.kind == cause.kind; });
  if (causeStep != nullptr) {
    return causeStep->nextStep;
  }
  const RefusalStep* const refusal = FindRow(kRefusalSteps, [&cause](const RefusalStep& candidate) {
    return candidate.completionCode == cause.completionCode;
  });
  if (refusal != nullptr) {
    return refusal->nextStep;
  }
  const StatusStep* const step = FindRow(kStatusSteps, [&outcome](const StatusStep& candidate) {
    return candidate.status == outcome.status;
  });
  return step == nullptr ? kStatusSteps.back().nextStep : step->nextStep;
}

}  // namespace Tavrin
