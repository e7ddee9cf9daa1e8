#include "tools/smm-inventory/FailureWords.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "tools/smm-inventory/QueryResult.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

struct StatusWords {
  int status;
  const char* name;
  const char* meaning;
  const char* nextStep;
};

constexpr std::array<StatusWords, 6> kStatusWords = {{
    {StatusCode::Success, "Success", "the query succeeded", "nothing"},
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
}};

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

struct RefusalWords {
  std::uint8_t completionCode;
  const char* meaning;
  const char* nextStep;
};

constexpr const char* kRunAgainLater = "run again in a minute";

constexpr std::array kRefusalWords = {
    RefusalWords{0xC0, "busy", kRunAgainLater},
    RefusalWords{0xC1, "command not known to the device", "check that the device is an SMM"},
    RefusalWords{0xC3, "timeout within the device", kRunAgainLater},
    RefusalWords{0xD2, "firmware starting or being updated", "run again when that is done"},
    RefusalWords{0xD4, "insufficient privilege", "try a higher -L, or a user who has one"},
    RefusalWords{0xD5, "not possible in the device's present state", kRunAgainLater},
};

template <typename Table, typename Predicate>
auto FindRow(const Table& table, Predicate matches) {
  const auto* const row = std::find_if(table.begin(), table.end(), matches);
  return row == table.end() ? nullptr : row;
}

const StatusWords& WordsOf(int status) {
  const StatusWords* const words = FindRow(
      kStatusWords, [status](const StatusWords& candidate) { return candidate.status == status; });
  return words == nullptr ? kStatusWords.back() : *words;
}

const RefusalWords* RefusalOf(const Cause& cause) {
  return FindRow(kRefusalWords, [&cause](const RefusalWords& candidate) {
    return candidate.completionCode == cause.completionCode;
  });
}

/// The status tells where a query failed, the cause more exactly why.
std::string MeaningOf(int status, const Cause& cause) {
  if (cause.completionCode != 0) {
    return "the SMM refused the request";
  }
  if (cause.kind != FailureCause::None && status != StatusCode::NotConnected) {
    return "the SMM gave no answer";
  }
  return WordsOf(status).meaning;
}

std::string CauseText(const Cause& cause) {
  if (cause.completionCode == 0) {
    return cause.words;
  }
  const RefusalWords* const words = RefusalOf(cause);
  return fmt::format("completion code 0x{:02X}{}{}", cause.completionCode,
                     words == nullptr ? "" : ": ", words == nullptr ? "" : words->meaning);
}

}  // namespace

std::string StatusName(int status) { return WordsOf(status).name; }

std::string FailureReason(int status, const Cause& cause) {
  const std::string text = CauseText(cause);
  return (cause.missing.empty() ? ""
                                : fmt::format("the SMM's {} is not known, since ", cause.missing)) +
         MeaningOf(status, cause) + (text.empty() ? "" : fmt::format(" ({})", text));
}

std::string NextStep(int status, const Cause& cause) {
  const CauseStep* const step = FindRow(
      kCauseSteps, [&cause](const CauseStep& candidate) { return candidate.kind == cause.kind; });
  if (step != nullptr) {
    return step->nextStep;
  }
  const RefusalWords* const refusal = RefusalOf(cause);
  return refusal == nullptr ? WordsOf(status).nextStep : refusal->nextStep;
}

}  // namespace Tavrin
