#include "platform/IpmiClient.h"

#include <freeipmi/freeipmi.h>

#include <array>
#include <cstring>
#include <mutex>

#include "platform/Log.h"
#include "platform/standalone/HexByte.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "platform/standalone/ipmi_client/ConnectSettings.h"
#include "platform/standalone/ipmi_client/Failure.h"
#include "platform/standalone/ipmi_client/HostAddress.h"
#include "platform/standalone/ipmi_client/LastExchange.h"

namespace Tavrin {

namespace ConnectResult = Standalone::ConnectResult;
using Standalone::ConnectSettings;
using Standalone::Failure;
using Standalone::HexByte;

namespace {

constexpr const char* kSourcePath = "platform/standalone/ipmi_client/IpmiClient";
constexpr unsigned int kWarning = 2;
constexpr std::uint8_t kNoCompletionCode = 0xFF;
/// FreeIPMI takes this many bytes of a request and of an answer, code bytes included, and silently
/// cuts off the rest.
constexpr std::size_t kMessageCapacity = 1024;

/// Ends the session, closes the socket and forgets the password.
struct ContextCloser {
  void operator()(ipmi_ctx_t context) const { ipmi_ctx_destroy(context); }
};
using Context = std::unique_ptr<ipmi_ctx, ContextCloser>;

/// FreeIPMI sets its cryptography up on the first session, and two first sessions at once are not
/// safe.
void PrepareCryptography() {
  static std::once_flag once;
  std::call_once(once, [] { ipmi_rmcpplus_init(); });
}

Standalone::LastExchange& ThisThreadsExchange() {
  thread_local Standalone::LastExchange exchange;
  return exchange;
}

/// Only until the client tells causes apart itself.
Standalone::FailureCause CauseOf(int result) {
  using Standalone::FailureCause;
  switch (result) {
    case ConnectResult::Connected:
      return FailureCause::None;
    case ConnectResult::WorthRetrying:
      return FailureCause::Silence;
    case ConnectResult::BadHostName:
      return FailureCause::HostName;
    case ConnectResult::UserNameRefused:
      return FailureCause::UserNameRefused;
    case ConnectResult::PasswordRefused:
      return FailureCause::PasswordRefused;
    case ConnectResult::PrivilegeRefused:
      return FailureCause::PrivilegeRefused;
    case ConnectResult::ArgumentTooLong:
    case ConnectResult::InvalidSetting:
      return FailureCause::BadSetting;
    default:
      return FailureCause::Other;
  }
}

void RememberFailure(const Failure& failure) {
  Standalone::LastExchange& exchange = ThisThreadsExchange();
  exchange.result = failure.result;
  exchange.cause = CauseOf(failure.result);
  exchange.words = failure.cause;
}

bool IsReporting() { return Log::GetMinLogLevel() >= kWarning; }

Failure CheckCredentials(const std::string& userName, const std::string& password) {
  if (userName.size() > IPMI_MAX_USER_NAME_LENGTH) {
    return {ConnectResult::ArgumentTooLong, "the user name has " + std::to_string(userName.size()) +
                                                " bytes; expected at most " +
                                                std::to_string(IPMI_MAX_USER_NAME_LENGTH)};
  }
  if (password.size() > IPMI_2_0_MAX_PASSWORD_LENGTH) {
    return {ConnectResult::ArgumentTooLong, "the password has " + std::to_string(password.size()) +
                                                " bytes; expected at most " +
                                                std::to_string(IPMI_2_0_MAX_PASSWORD_LENGTH)};
  }
  if (userName.find('\0') != std::string::npos || password.find('\0') != std::string::npos) {
    return {ConnectResult::InvalidSetting,
            "the user name or the password holds a zero byte, which IPMI cannot carry"};
  }
  return {};
}

}  // namespace

struct IpmiClient::State {
  State() = default;
  ~State() { explicit_bzero(password.data(), password.size()); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  Failure Open();
  Failure Exchange(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                   std::uint8_t& completionCode) const;
  void Report(const std::string& action, const std::string& cause, unsigned int line) const;

  std::string address;
  std::string userName;
  std::string password;
  std::string port;
  unsigned long cipherSuite = 0;
  std::vector<std::string> addresses;
  std::size_t attempts = 0;
  std::string numericAddress;  ///< The one of the last attempt.
  Context context;
};

Failure IpmiClient::State::Open() {
  ConnectSettings settings;
  Failure failure = CheckCredentials(userName, password);
  if (failure.result == 0) {
    failure = Standalone::ReadConnectSettings(port, cipherSuite, settings);
  }
  if (failure.result == 0) {
    failure = Standalone::ResolveHost(address, addresses);
  }
  if (failure.result != 0) {
    return failure;
  }
  // A name may stand for several addresses, of which some lead nowhere: each attempt takes the
  // next.
  numericAddress = addresses[attempts++ % addresses.size()];
  PrepareCryptography();
  // A context that failed to open is not fit for another attempt: it may hold a closed socket.
  Context opened(ipmi_ctx_create());
  const std::string host = Standalone::JoinHostAndPort(numericAddress, settings.port);
  if (ipmi_ctx_open_outofband_2_0(opened.get(), host.c_str(), userName.c_str(), password.c_str(),
                                  nullptr, 0, settings.privilegeLevel, settings.cipherSuite,
                                  settings.sessionTimeoutMs, settings.retransmissionTimeoutMs,
                                  settings.workaroundFlags, IPMI_FLAGS_DEFAULT) < 0) {
    return Standalone::OpeningFailure(ipmi_ctx_errnum(opened.get()));
  }
  context = std::move(opened);
  return {};
}

Failure IpmiClient::State::Exchange(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                                    std::uint8_t& completionCode) const {
  if (!context) {
    return {ConnectResult::Failed, "no session is open; connect first"};
  }
  std::vector<std::uint8_t> sent{request.cmd};
  sent.insert(sent.end(), request.data.begin(), request.data.end());
  if (sent.size() > kMessageCapacity) {
    return {ConnectResult::Failed, "the request has " + std::to_string(request.data.size()) +
                                       " data bytes; expected at most " +
                                       std::to_string(kMessageCapacity - 1)};
  }
  std::array<std::uint8_t, kMessageCapacity> answer{};
  const int length =
      ipmi_cmd_raw(context.get(), IPMI_BMC_IPMB_LUN_BMC, request.netFn, sent.data(),
                   static_cast<unsigned int>(sent.size()), answer.data(), answer.size());
  if (length < 0) {
    return Standalone::ExchangeFailure(ipmi_ctx_errnum(context.get()));
  }
  if (static_cast<std::size_t>(length) == kMessageCapacity) {
    return {ConnectResult::Failed, "the answer is longer than the IPMI library takes"};
  }
  // The command code comes first, then the completion code.
  if (length < 2) {
    return {ConnectResult::Failed, "the answer holds no completion code"};
  }
  completionCode = answer[1];
  response.assign(answer.begin() + 2, answer.begin() + length);
  return {};
}

void IpmiClient::State::Report(const std::string& action, const std::string& cause,
                               unsigned int line) const {
  const bool isResolved = !numericAddress.empty() && numericAddress != address;
  Log(kWarning, kSourcePath, line).Stream()
      << action << " failed: host " << address
      << (isResolved ? " (" + numericAddress + ")" : std::string()) << ", port " << port
      << ", user \"" << userName << "\": " << cause;
}

IpmiClient::IpmiClient(const std::string& address, const std::string& userName,
                       const std::string& password, const std::string& port,
                       unsigned long cipherSuite)
    : state_(std::make_unique<State>()) {
  state_->address = address;
  state_->userName = userName;
  // Copied once and in place: a move could leave the password behind where nobody wipes it.
  state_->password = password;
  state_->port = port;
  state_->cipherSuite = cipherSuite;
  ThisThreadsExchange() = {};
  ThisThreadsExchange().host = address;
  ThisThreadsExchange().port = port;
  ThisThreadsExchange().cause = Standalone::FailureCause::NoAttempt;
}

IpmiClient::~IpmiClient() = default;

int IpmiClient::connect() {
  disconnect();
  state_->numericAddress.clear();
  const Failure failure = state_->Open();
  ++ThisThreadsExchange().connectionAttempts;
  RememberFailure(failure);
  if (failure.result != ConnectResult::Connected && IsReporting()) {
    state_->Report("connect", failure.cause, __LINE__);
  }
  return failure.result;
}

int IpmiClient::send(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                     std::uint8_t& completionCode) {
  response.clear();
  completionCode = kNoCompletionCode;
  const Failure failure = state_->Exchange(request, response, completionCode);
  RememberFailure(failure);
  ThisThreadsExchange().isAnswered = failure.result == 0;
  ThisThreadsExchange().completionCode = completionCode;
  ThisThreadsExchange().answerLength = response.size();
  if (failure.result != 0 && IsReporting()) {
    state_->Report(
        "send of network function " + HexByte(request.netFn) + " command " + HexByte(request.cmd),
        failure.cause, __LINE__);
  }
  return failure.result;
}

int IpmiClient::disconnect() {
  state_->context.reset();
  return 0;
}

const Standalone::LastExchange& Standalone::GetLastExchange() { return ThisThreadsExchange(); }

}  // namespace Tavrin
