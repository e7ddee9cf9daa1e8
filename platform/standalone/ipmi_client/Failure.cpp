#include "platform/standalone/ipmi_client/Failure.h"

#include <freeipmi/freeipmi.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "platform/standalone/HexByte.h"
#include "platform/standalone/PassingRefusal.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"

namespace Tavrin {
namespace Standalone {
namespace {

struct Row {
  Trouble trouble;
  int result;
  FailureCause cause;
  const char* words;
  const char* advice;
};

constexpr const char* kMoreTime = "connect again, or allow more time (IPMI_SESSION_TIMEOUT_MS)";
constexpr const char* kLowerPrivilege =
    "ask for a lower one (IPMI_PRIVILEGE_LEVEL: 2 user, 3 operator, 4 administrator), or set "
    "IPMI_WORKAROUND_FLAGS to 16 for a controller that takes the level only when the session opens";
constexpr const char* kCheckNetwork =
    "try again, and should it stay so, check the network, and that IPMI 2.0 is what answers at "
    "address and port";

constexpr std::array kRows = {
    Row{Trouble::NoAnswer, ConnectResult::WorthRetrying, FailureCause::Silence,
        "no answer within the session time-out",
        "check address and port, and that IPMI over LAN is switched on, or allow more time "
        "(IPMI_SESSION_TIMEOUT_MS)"},
    Row{Trouble::PortClosed, ConnectResult::WorthRetrying, FailureCause::Unreachable,
        "no answer within the session time-out: nobody listens at the port",
        "check address and port, and that IPMI over LAN is switched on"},
    Row{Trouble::NoRoute, ConnectResult::WorthRetrying, FailureCause::Unreachable,
        "the network does not reach the controller",
        "check the address and this machine's network"},
    Row{Trouble::NotPermitted, ConnectResult::Failed, FailureCause::Forbidden,
        "this machine does not permit sending there", "check the address and the local firewall"},
    Row{Trouble::ResourcesShort, ConnectResult::Failed, FailureCause::Memory,
        "memory or file descriptors are short on this machine", ""},
    Row{Trouble::RequestTooLong, ConnectResult::Failed, FailureCause::Other,
        "the request is too long for one datagram", ""},
    Row{Trouble::SilentWhileOpening, ConnectResult::WorthRetrying, FailureCause::FellSilent,
        "the controller answered at first, then fell silent within the session time-out",
        "try again, or another cipher suite (IPMI_CIPHER_SUITE)"},
    Row{Trouble::SilentWhileChecking, ConnectResult::WorthRetrying, FailureCause::FellSilent,
        "the controller fell silent while user name and password were checked",
        "try again, or check user name and password"},
    Row{Trouble::SilentToRequest, ConnectResult::WorthRetrying, FailureCause::FellSilent,
        "no answer to the request within the session time-out", kMoreTime},
    Row{Trouble::DamagedAnswer, ConnectResult::WorthRetrying, FailureCause::DamagedAnswer,
        "no answer within the session time-out that could be read", kCheckNetwork},
    Row{Trouble::OtherAnswer, ConnectResult::WorthRetrying, FailureCause::OtherAnswer,
        "no answer within the session time-out but another request's", kCheckNetwork},
    Row{Trouble::Busy, ConnectResult::WorthRetrying, FailureCause::Busy, "the controller is busy",
        "try again later"},
    Row{Trouble::NoFreeSession, ConnectResult::WorthRetrying, FailureCause::Busy,
        "the controller has no free session", "try again later"},
    Row{Trouble::SuiteRefused, ConnectResult::WorthRetrying, FailureCause::SuiteRefused,
        "the controller does not allow the cipher suite", "try another (IPMI_CIPHER_SUITE)"},
    Row{Trouble::Ipmi20Missing, ConnectResult::Failed, FailureCause::Ipmi20Missing,
        "the controller does not offer IPMI 2.0", "check its settings or its firmware"},
    Row{Trouble::KeyMissing, ConnectResult::Failed, FailureCause::KeyMissing,
        "the controller asks for a key besides the password (K_g), which this client does not use",
        "clear it on the controller, or set IPMI_WORKAROUND_FLAGS to 1 for a controller that tells "
        "its capabilities wrongly"},
    Row{Trouble::UserNameRefused, ConnectResult::UserNameRefused, FailureCause::UserNameRefused,
        "the controller does not know the user", "check the user name"},
    Row{Trouble::PasswordRefused, ConnectResult::PasswordRefused, FailureCause::PasswordRefused,
        "the password does not match",
        "check it, or set IPMI_WORKAROUND_FLAGS to 16 for a controller that computes its proof "
        "with the level given when the session opens"},
    Row{Trouble::PrivilegeRefused, ConnectResult::PrivilegeRefused, FailureCause::PrivilegeRefused,
        "the controller does not grant the privilege level", kLowerPrivilege},
    Row{Trouble::PrivilegeInsufficient, ConnectResult::PrivilegeRefused,
        FailureCause::PrivilegeRefused,
        "the controller does not grant the privilege level (insufficient privilege)",
        kLowerPrivilege},
    Row{Trouble::CrossedRepetition, ConnectResult::WorthRetrying, FailureCause::OtherAnswer,
        "the controller checked the proof of the password against another random number than the "
        "one that it had sent",
        "try again; should it stay so, ask less often (IPMI_RETRANSMISSION_TIMEOUT_MS), or set "
        "IPMI_WORKAROUND_FLAGS to 16"},
    Row{Trouble::SessionForgotten, ConnectResult::WorthRetrying, FailureCause::Other,
        "the controller forgot the session while it was being opened", "try again"},
    Row{Trouble::NotConnected, ConnectResult::Failed, FailureCause::Other, "no session is open",
        "connect first"},
    Row{Trouble::NotPresent, ConnectResult::WorthRetrying, FailureCause::Silence,
        "no answer within 3 seconds, neither to a ping nor to a request",
        "check address and port, and that IPMI over LAN is switched on"},
    Row{Trouble::NotListening, ConnectResult::WorthRetrying, FailureCause::Unreachable,
        "nobody listens at the port",
        "check address and port, and that IPMI over LAN is switched on"},
    Row{Trouble::TimeOver, ConnectResult::Interrupted, FailureCause::TimeOver,
        "the time given for this enclosure is over", ""},
    Row{Trouble::Stopped, ConnectResult::Interrupted, FailureCause::Stopped, "stopped", ""},
    Row{Trouble::NoAttempt, ConnectResult::WorthRetrying, FailureCause::NoAttempt,
        "no attempt to connect was made", ""},
};

/// Whether the row of each trouble stands at its place, so that none is without one.
constexpr bool HasEachTroubleAtItsPlace() {
  for (std::size_t place = 0; place < kRows.size(); ++place) {
    if (kRows[place].trouble != static_cast<Trouble>(place)) {
      return false;
    }
  }
  return kRows.size() == static_cast<std::size_t>(Trouble::NoAttempt) + 1;
}

static_assert(HasEachTroubleAtItsPlace());

std::string Seconds(std::chrono::milliseconds duration) {
  const auto tenths = (duration.count() + 50) / 100;
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " seconds";
}

struct Status {
  std::uint8_t code;
  Trouble trouble;
};

constexpr std::array kStatuses = {
    Status{RMCPPLUS_STATUS_INSUFFICIENT_RESOURCES_TO_CREATE_A_SESSION, Trouble::NoFreeSession},
    Status{RMCPPLUS_STATUS_INSUFFICIENT_RESOURCES_TO_CREATE_A_SESSION_AT_THE_REQUESTED_TIME,
           Trouble::NoFreeSession},
    Status{RMCPPLUS_STATUS_INVALID_SESSION_ID, Trouble::SessionForgotten},
    Status{RMCPPLUS_STATUS_INACTIVE_SESSION_ID, Trouble::SessionForgotten},
    Status{RMCPPLUS_STATUS_INVALID_INTEGRITY_CHECK_VALUE, Trouble::CrossedRepetition},
    Status{RMCPPLUS_STATUS_INVALID_AUTHENTICATION_ALGORITHM, Trouble::SuiteRefused},
    Status{RMCPPLUS_STATUS_INVALID_INTEGRITY_ALGORITHM, Trouble::SuiteRefused},
    Status{RMCPPLUS_STATUS_NO_MATCHING_AUTHENTICATION_PAYLOAD, Trouble::SuiteRefused},
    Status{RMCPPLUS_STATUS_NO_MATCHING_INTEGRITY_PAYLOAD, Trouble::SuiteRefused},
    Status{RMCPPLUS_STATUS_INVALID_CONFIDENTIALITY_ALGORITHM, Trouble::SuiteRefused},
    Status{RMCPPLUS_STATUS_NO_CIPHER_SUITE_MATCH_WITH_PROPOSED_SECURITY_ALGORITHMS,
           Trouble::SuiteRefused},
    Status{RMCPPLUS_STATUS_INVALID_ROLE, Trouble::PrivilegeRefused},
    Status{RMCPPLUS_STATUS_UNAUTHORIZED_ROLE_OR_PRIVILEGE_LEVEL_REQUESTED,
           Trouble::PrivilegeRefused},
    Status{RMCPPLUS_STATUS_INVALID_NAME_LENGTH, Trouble::UserNameRefused},
    Status{RMCPPLUS_STATUS_UNAUTHORIZED_NAME, Trouble::UserNameRefused},
};

}  // namespace

Failure FailureOf(Trouble trouble) {
  const Row& row = kRows.at(static_cast<std::size_t>(trouble));
  return {row.result, row.cause, row.words, row.advice};
}

Failure LateFailure(std::chrono::milliseconds lateness) {
  return {ConnectResult::WorthRetrying, FailureCause::Late,
          "the controller answers, but only " + Seconds(lateness) + " after it was asked",
          "allow more time (IPMI_SESSION_TIMEOUT_MS)"};
}

Failure StatusFailure(std::uint8_t status) {
  const auto* const known =
      std::find_if(kStatuses.begin(), kStatuses.end(),
                   [status](const Status& one) { return one.code == status; });
  if (known != kStatuses.end()) {
    return FailureOf(known->trouble);
  }
  return {ConnectResult::Failed, FailureCause::Other,
          "the controller refuses to open a session, with status " + HexByte(status), ""};
}

Failure CompletionCodeFailure(const std::string& command, std::uint8_t completionCode) {
  if (MayPass(completionCode)) {
    return FailureOf(Trouble::Busy);
  }
  switch (completionCode) {
    case IPMI_COMP_CODE_INSUFFICIENT_PRIVILEGE_LEVEL:
      return FailureOf(Trouble::PrivilegeInsufficient);
    case IPMI_COMP_CODE_SET_SESSION_PRIVILEGE_LEVEL_REQUESTED_LEVEL_NOT_AVAILABLE_FOR_USER:
    case IPMI_COMP_CODE_SET_SESSION_PRIVILEGE_LEVEL_REQUESTED_LEVEL_EXCEEDS_USER_PRIVILEGE_LIMIT:
      return FailureOf(Trouble::PrivilegeRefused);
    default:
      return {
          ConnectResult::Failed, FailureCause::Other,
          "the controller refuses " + command + ", with completion code " + HexByte(completionCode),
          ""};
  }
}

Failure SystemFailure(int error) {
  switch (error) {
    case EPERM:
    case EACCES:
      return FailureOf(Trouble::NotPermitted);
    case ECONNREFUSED:
      return FailureOf(Trouble::PortClosed);
    case ENETUNREACH:
    case EHOSTUNREACH:
    case ENETDOWN:
    case EHOSTDOWN:
      return FailureOf(Trouble::NoRoute);
    case ENOMEM:
    case ENOBUFS:
    case EMFILE:
    case ENFILE:
      return FailureOf(Trouble::ResourcesShort);
    case EMSGSIZE:
      return FailureOf(Trouble::RequestTooLong);
    default:
      return {ConnectResult::Failed, FailureCause::Other,
              "this machine cannot send to the controller (" +
                  std::generic_category().message(error) + ")",
              ""};
  }
}

}  // namespace Standalone
}  // namespace Tavrin
