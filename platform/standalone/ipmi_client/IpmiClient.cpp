#include "platform/IpmiClient.h"

#include <freeipmi/freeipmi.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <mutex>
#include <optional>

#include "platform/Log.h"
#include "platform/standalone/HexByte.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "platform/standalone/ipmi_client/ConnectSettings.h"
#include "platform/standalone/ipmi_client/Conversation.h"
#include "platform/standalone/ipmi_client/Failure.h"
#include "platform/standalone/ipmi_client/HostAddress.h"
#include "platform/standalone/ipmi_client/Interruption.h"
#include "platform/standalone/ipmi_client/LastExchange.h"
#include "platform/standalone/ipmi_client/LearnedIntervals.h"
#include "platform/standalone/ipmi_client/Session.h"
#include "platform/standalone/ipmi_client/SessionMessages.h"
#include "platform/standalone/logger/LogControl.h"

namespace Tavrin {

namespace ConnectResult = Standalone::ConnectResult;
namespace LogLevel = Standalone::LogLevel;
using Standalone::ConnectSettings;
using Standalone::Failure;
using Standalone::FailureCause;
using Standalone::HexByte;
using std::chrono::milliseconds;

namespace {

constexpr const char* kSourcePath = "platform/standalone/ipmi_client/IpmiClient";
constexpr std::uint8_t kNoCompletionCode = 0xFF;

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

void RememberFailure(const Failure& failure) {
  Standalone::LastExchange& exchange = ThisThreadsExchange();
  exchange.result = failure.result;
  exchange.cause = failure.cause;
  exchange.words = failure.words;
}

bool IsReporting() { return Log::GetMinLogLevel() >= LogLevel::Warning; }

Failure TooLong(const std::string& what, std::size_t length, std::size_t most) {
  return {
      ConnectResult::ArgumentTooLong, FailureCause::BadSetting,
      what + " has " + std::to_string(length) + " bytes; expected at most " + std::to_string(most),
      ""};
}

Failure CheckCredentials(const std::string& userName, const std::string& password) {
  if (userName.size() > IPMI_MAX_USER_NAME_LENGTH) {
    return TooLong("the user name", userName.size(), IPMI_MAX_USER_NAME_LENGTH);
  }
  if (password.size() > IPMI_2_0_MAX_PASSWORD_LENGTH) {
    return TooLong("the password", password.size(), IPMI_2_0_MAX_PASSWORD_LENGTH);
  }
  if (userName.find('\0') != std::string::npos || password.find('\0') != std::string::npos) {
    return {ConnectResult::InvalidSetting, FailureCause::BadSetting,
            "the user name or the password holds a zero byte, which IPMI cannot carry", ""};
  }
  return {};
}

Failure CheckRequest(const IPMICOMMAND& request) {
  if (!IPMI_NET_FN_RQ_VALID(request.netFn)) {
    return {ConnectResult::Failed, FailureCause::BadSetting,
            "the network function is " + HexByte(request.netFn) +
                "; expected an even one up to 0x0c, or from 0x2c to 0x3e",
            ""};
  }
  if (request.data.size() > Standalone::kMostRequestBytes) {
    return {ConnectResult::Failed, FailureCause::BadSetting,
            "the request has " + std::to_string(request.data.size()) +
                " data bytes; expected at most " + std::to_string(Standalone::kMostRequestBytes),
            ""};
  }
  return {};
}

/// The interval that the next conversation needs, when the longest round trip of this one is more
/// than an interval as it usually is; otherwise 0.
milliseconds NeededInterval(milliseconds longestRoundTrip, milliseconds usual) {
  return longestRoundTrip > usual ? 2 * longestRoundTrip : milliseconds(0);
}

}  // namespace

struct IpmiClient::State {
  State() = default;
  ~State();
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  Failure Open();
  Failure ChooseAddress(const ConnectSettings& settings);
  Failure OpenSession(const ConnectSettings& settings);
  Failure Exchange(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                   std::uint8_t& completionCode) const;
  void Report(const std::string& action, const Failure& failure, unsigned int line) const;

  std::string address;
  std::string userName;
  std::string password;
  std::string port;
  unsigned long cipherSuite{};
  std::size_t failedAttempts = 0;
  std::string numericAddress;  ///< The one of this attempt, once it is known.
  std::optional<Standalone::Conversation> conversation;
  std::unique_ptr<Standalone::Session> session;  ///< Refers to the conversation and the texts.
};

IpmiClient::State::~State() {
  session.reset();  // Some cipher suites take the password to say that it is over.
  explicit_bzero(password.data(), password.size());
}

Failure IpmiClient::State::Open() {
  ConnectSettings settings;
  Failure failure = Standalone::Clock::now() < Standalone::EndOfExchanges()
                        ? CheckCredentials(userName, password)
                        : Standalone::InterruptionFailure();
  if (failure) {
    return failure;
  }
  failure = Standalone::ReadConnectSettings(port, cipherSuite, settings);
  if (failure) {
    return failure;
  }
  failure = ChooseAddress(settings);
  return failure ? failure : OpenSession(settings);
}

/// A name may stand for several addresses, of which some lead nowhere: an attempt after one that
/// failed takes the next. At the same address the conversation goes on, so that an answer to an
/// earlier attempt is known for what it is.
Failure IpmiClient::State::ChooseAddress(const ConnectSettings& settings) {
  std::vector<std::string> addresses;
  Failure failure = Standalone::ResolveHost(address, addresses);
  if (failure) {
    return failure;
  }
  numericAddress = addresses[failedAttempts % addresses.size()];
  if (!conversation || !conversation->IsOpen() || conversation->Address() != numericAddress) {
    conversation.emplace(numericAddress, settings.port);
  }
  return {};
}

Failure IpmiClient::State::OpenSession(const ConnectSettings& settings) {
  PrepareCryptography();
  const milliseconds usual = Standalone::RepetitionInterval(settings, 0);
  // Whatever was learned, there is time for a repetition.
  const milliseconds learned = std::min(Standalone::LearnedInterval(numericAddress, settings.port),
                                        milliseconds(settings.sessionTimeoutMs) * 3 / 4);
  Standalone::Patience patience;
  patience.timeout = milliseconds(settings.sessionTimeoutMs);
  patience.interval = std::max(usual, learned);
  patience.openingInterval =
      std::max(Standalone::RepetitionInterval(settings, failedAttempts), learned);
  conversation->BeginAttempt(patience);
  Standalone::Login login(userName, password);
  login.privilegeLevel = settings.privilegeLevel;
  ipmi_cipher_suite_id_to_algorithms(settings.cipherSuite, &login.algorithms.authentication,
                                     &login.algorithms.integrity,
                                     &login.algorithms.confidentiality);
  auto opened = std::make_unique<Standalone::Session>(*conversation, login, settings);
  Failure failure = opened->Open();
  if (failure) {
    return failure;
  }
  session = std::move(opened);
  Standalone::LearnInterval(numericAddress, settings.port,
                            NeededInterval(conversation->LongestRoundTrip(), usual));
  return {};
}

Failure IpmiClient::State::Exchange(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                                    std::uint8_t& completionCode) const {
  if (!session) {
    return FailureOf(Standalone::Trouble::NotConnected);
  }
  Failure failure = CheckRequest(request);
  return failure ? failure : session->Exchange(request, response, completionCode);
}

void IpmiClient::State::Report(const std::string& action, const Failure& failure,
                               unsigned int line) const {
  const bool isResolved = !numericAddress.empty() && numericAddress != address;
  Log(LogLevel::Warning, kSourcePath, line).Stream()
      << action << " failed: host " << address
      << (isResolved ? " (" + numericAddress + ")" : std::string()) << ", port " << port
      << ", user \"" << userName << "\": " << failure.words << (failure.advice.empty() ? "" : "; ")
      << failure.advice;
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
  RememberFailure(FailureOf(Standalone::Trouble::NoAttempt));
}

IpmiClient::~IpmiClient() = default;

int IpmiClient::connect() {
  state_->session.reset();
  state_->numericAddress.clear();
  const Failure failure = state_->Open();
  ++ThisThreadsExchange().connectionAttempts;
  RememberFailure(failure);
  if (failure) {
    ++state_->failedAttempts;
    if (IsReporting()) {
      state_->Report("connect", failure, __LINE__);
    }
  }
  return failure.result;
}

int IpmiClient::send(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                     std::uint8_t& completionCode) {
  response.clear();
  completionCode = kNoCompletionCode;
  const Failure failure = state_->Exchange(request, response, completionCode);
  RememberFailure(failure);
  ThisThreadsExchange().isAnswered = !failure;
  ThisThreadsExchange().completionCode = completionCode;
  ThisThreadsExchange().answerLength = response.size();
  if (failure && IsReporting()) {
    state_->Report(
        "send of network function " + HexByte(request.netFn) + " command " + HexByte(request.cmd),
        failure, __LINE__);
  }
  return failure.result;
}

int IpmiClient::disconnect() {
  state_->session.reset();
  state_->conversation.reset();
  return 0;
}

const Standalone::LastExchange& Standalone::GetLastExchange() { return ThisThreadsExchange(); }

}  // namespace Tavrin
