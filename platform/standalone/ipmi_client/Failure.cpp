#include "platform/standalone/ipmi_client/Failure.h"

#include <freeipmi/freeipmi.h>

#include <algorithm>
#include <array>

#include "platform/standalone/ipmi_client/ConnectResult.h"

namespace Tavrin {
namespace Standalone {
namespace {

struct Meaning {
  int errnum;
  int result;
  const char* cause;
};

constexpr const char* kSilence =
    "no answer within the session time-out; check address and port, and that IPMI over LAN is "
    "switched on, or allow more time (IPMI_SESSION_TIMEOUT_MS)";
constexpr const char* kBusy = "the controller is busy or has no free session; try again later";
constexpr const char* kUnreachable =
    "the controller cannot be reached; check the address and this machine's network";
constexpr const char* kForbidden =
    "this machine does not permit sending there; check the address and the local firewall";
constexpr const char* kMemory = "memory is short on this machine";
constexpr const char* kStray =
    "a damaged datagram came, or one that was not expected, such as a second copy; try again, and "
    "should it stay so, check the network, and that IPMI 2.0 is what answers at address and port";
constexpr const char* kPrivilege =
    "the controller does not grant the privilege level; ask for a lower one "
    "(IPMI_PRIVILEGE_LEVEL: 2 user, 3 operator, 4 administrator), or set "
    "IPMI_WORKAROUND_FLAGS to 16 for a controller that takes the level only when the session opens";

constexpr std::array kOpeningMeanings = {
    Meaning{IPMI_ERR_CONNECTION_TIMEOUT, ConnectResult::WorthRetrying, kSilence},
    Meaning{IPMI_ERR_SESSION_TIMEOUT, ConnectResult::WorthRetrying,
            "the controller answered at first, then fell silent within the session time-out; try "
            "again, or another cipher suite (IPMI_CIPHER_SUITE)"},
    Meaning{IPMI_ERR_MESSAGE_TIMEOUT, ConnectResult::WorthRetrying, kSilence},
    Meaning{IPMI_ERR_DRIVER_TIMEOUT, ConnectResult::WorthRetrying, kSilence},
    Meaning{IPMI_ERR_PASSWORD_VERIFICATION_TIMEOUT, ConnectResult::WorthRetrying,
            "the controller stopped answering while the password was checked; try again, or check "
            "the password"},
    Meaning{IPMI_ERR_BMC_BUSY, ConnectResult::WorthRetrying, kBusy},
    Meaning{IPMI_ERR_DRIVER_BUSY, ConnectResult::WorthRetrying, kBusy},
    Meaning{IPMI_ERR_SYSTEM_ERROR, ConnectResult::WorthRetrying, kUnreachable},
    Meaning{IPMI_ERR_IPMI_ERROR, ConnectResult::WorthRetrying,
            "the controller refused the session: either it does not allow the cipher suite (try "
            "another with IPMI_CIPHER_SUITE) or it has no free session (try again later)"},
    // FreeIPMI's words for a datagram that is cut off, contradicts itself or belongs to another
    // step.
    Meaning{IPMI_ERR_SUCCESS, ConnectResult::WorthRetrying, kStray},
    Meaning{IPMI_ERR_PARAMETERS, ConnectResult::WorthRetrying, kStray},
    Meaning{IPMI_ERR_USERNAME_INVALID, ConnectResult::UserNameRefused,
            "the controller does not know the user; check the user name"},
    Meaning{IPMI_ERR_PASSWORD_INVALID, ConnectResult::PasswordRefused,
            "the password does not match; check it, or set IPMI_WORKAROUND_FLAGS to 16 for a "
            "controller that computes its proof with the level given when the session opens"},
    Meaning{IPMI_ERR_PRIVILEGE_LEVEL_INSUFFICIENT, ConnectResult::PrivilegeRefused, kPrivilege},
    Meaning{IPMI_ERR_PRIVILEGE_LEVEL_CANNOT_BE_OBTAINED, ConnectResult::PrivilegeRefused,
            kPrivilege},
    Meaning{IPMI_ERR_CIPHER_SUITE_ID_UNAVAILABLE, ConnectResult::Failed,
            "the controller does not allow the cipher suite; try another with IPMI_CIPHER_SUITE"},
    Meaning{IPMI_ERR_IPMI_2_0_UNAVAILABLE, ConnectResult::Failed,
            "the controller does not offer IPMI 2.0; check its settings or its firmware"},
    Meaning{IPMI_ERR_K_G_INVALID, ConnectResult::Failed,
            "the controller asks for a key besides the password (K_g), which this client does not "
            "use; clear it on the controller"},
    Meaning{IPMI_ERR_PERMISSION, ConnectResult::Failed, kForbidden},
    Meaning{IPMI_ERR_OUT_OF_MEMORY, ConnectResult::Failed, kMemory},
};

constexpr std::array kExchangeMeanings = {
    Meaning{IPMI_ERR_SESSION_TIMEOUT, ConnectResult::WorthRetrying,
            "no answer within the session time-out; connect again, or allow more time "
            "(IPMI_SESSION_TIMEOUT_MS)"},
    Meaning{IPMI_ERR_MESSAGE_TIMEOUT, ConnectResult::WorthRetrying,
            "no answer within the session time-out; send the request again"},
    Meaning{IPMI_ERR_SUCCESS, ConnectResult::WorthRetrying, kStray},
    Meaning{IPMI_ERR_BMC_BUSY, ConnectResult::WorthRetrying, kBusy},
    Meaning{IPMI_ERR_DRIVER_BUSY, ConnectResult::WorthRetrying, kBusy},
    Meaning{IPMI_ERR_SYSTEM_ERROR, ConnectResult::WorthRetrying, kUnreachable},
    Meaning{IPMI_ERR_PERMISSION, ConnectResult::Failed, kForbidden},
    Meaning{IPMI_ERR_OUT_OF_MEMORY, ConnectResult::Failed, kMemory},
    Meaning{IPMI_ERR_PARAMETERS, ConnectResult::Failed,
            "the request or its answer is not valid; check that the network function is even and "
            "at most 0x3e, and that the data are few enough for one packet"},
};

template <typename Table>
Failure MeaningOf(const Table& table, int errnum) {
  const auto* const found = std::find_if(
      table.begin(), table.end(), [errnum](const Meaning& row) { return row.errnum == errnum; });
  if (found != table.end()) {
    return {found->result, found->cause};
  }
  return {ConnectResult::Failed, std::string("the IPMI library reports \"") +
                                     ipmi_ctx_strerror(errnum) + "\" (" + std::to_string(errnum) +
                                     ")"};
}

}  // namespace

Failure OpeningFailure(int errnum) { return MeaningOf(kOpeningMeanings, errnum); }

Failure ExchangeFailure(int errnum) { return MeaningOf(kExchangeMeanings, errnum); }

}  // namespace Standalone
}  // namespace Tavrin
