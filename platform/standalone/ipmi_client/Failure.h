#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "platform/standalone/ipmi_client/LastExchange.h"

namespace Tavrin {
namespace Standalone {

/// How a step of a conversation ended: why it failed, or that it did not.
struct Failure {
  int result = ConnectResult::Connected;  ///< One of ConnectResult.
  FailureCause cause = FailureCause::None;
  std::string words;   ///< What happened, printable and without advice.
  std::string advice;  ///< What to try, with the configuration's keys; may be empty.

  /// Whether it failed.
  explicit operator bool() const { return result != ConnectResult::Connected; }
};

/// What can go wrong that needs no number to be told.
enum class Trouble {
  NoAnswer,             ///< Nothing came at all.
  PortClosed,           ///< Nothing came but the network's word that nobody listens.
  NoRoute,              ///< The network says that it does not reach the controller.
  NotPermitted,         ///< This machine does not let the datagram out.
  ResourcesShort,       ///< No memory or file descriptor left.
  RequestTooLong,       ///< The network does not carry a datagram of that length.
  SilentWhileOpening,   ///< An earlier step was answered, this one is not.
  SilentWhileChecking,  ///< The same, in the steps that prove the password.
  SilentToRequest,      ///< A request over an open session got no answer.
  DamagedAnswer,        ///< What came could not be read, or its protection does not hold.
  OtherAnswer,          ///< What came belongs to another step, request or session.
  Busy,                 ///< Completion code: node busy.
  NoFreeSession,
  SuiteRefused,
  Ipmi20Missing,
  KeyMissing,
  UserNameRefused,
  PasswordRefused,
  PrivilegeRefused,
  PrivilegeInsufficient,  ///< Completion code: insufficient privilege.
  CrossedRepetition,      ///< The controller checked our proof against another random number.
  SessionForgotten,       ///< The controller does not know the session that is being opened.
  NotConnected,           ///< A request without an open session.
  NotPresent,             ///< Nothing came when presence was asked for.
  NotListening,           ///< The same, but for the network's word that nobody listens.
  TimeOver,               ///< The thread's deadline came first.
  Stopped,                ///< Exchanges were stopped.
  NoAttempt,              ///< A client that was never told to connect. The last of the list.
};

Failure FailureOf(Trouble trouble);

/// A controller that answers `lateness` after it was asked, which is more than it is given.
Failure LateFailure(std::chrono::milliseconds lateness);

/// What a status other than 0 in the answer to a message of session opening means.
Failure StatusFailure(std::uint8_t status);

/// What a completion code other than 0 means that ends the opening of a session.
Failure CompletionCodeFailure(const std::string& command, std::uint8_t completionCode);

/// What an error of the system means that keeps a datagram from being sent or received.
Failure SystemFailure(int error);

}  // namespace Standalone
}  // namespace Tavrin
