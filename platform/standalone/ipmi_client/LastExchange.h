#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Tavrin {
namespace Standalone {

/// Why an exchange came to no answer. What tells programs apart what they have to do differently;
/// the words beside it are for people.
enum class FailureCause {
  /// An answer came, whatever its completion code.
  None,
  /// A client was made and never told to connect: IPMI_CONNECT_RETRY_TIMES is 0 or less.
  NoAttempt,
  /// A setting, the port, the user name, the password or the request cannot be used.
  BadSetting,
  /// The host name does not resolve.
  HostName,
  /// No name server answered; may pass.
  NameServer,
  /// The network says that nobody is there, or listens at the port.
  Unreachable,
  /// This machine does not permit sending there.
  Forbidden,
  /// Nobody answered anything.
  Silence,
  /// The controller answered at first, then no more.
  FellSilent,
  /// The controller answers, but later than the session time-out allows.
  Late,
  /// The controller says that it is busy or has no free session.
  Busy,
  /// The controller does not allow the cipher suite.
  SuiteRefused,
  /// The controller does not offer IPMI 2.0.
  Ipmi20Missing,
  /// The controller asks for a K_g, which this client does not use.
  KeyMissing,
  /// The controller does not know the user.
  UserNameRefused,
  /// The controller's proof of the password does not match ours.
  PasswordRefused,
  /// The user may not have the privilege level asked for.
  PrivilegeRefused,
  /// What came could not be read.
  DamagedAnswer,
  /// What came answers another request, or its repetition crossed the answer.
  OtherAnswer,
  /// Memory or file descriptors are short on this machine.
  Memory,
  /// The time that the thread had for its exchanges is over (ThreadDeadline.h).
  TimeOver,
  /// Exchanges were stopped (ConnectControl.h).
  Stopped,
  /// Anything else; the words tell.
  Other,
};

/// How the last exchange of a thread ended: what IpmiClient, which has a plain number to give, and
/// the library above it cannot say.
struct LastExchange {
  /// Host and port as the client was given them.
  std::string host;
  std::string port;

  /// How often the client was told to connect.
  int connectionAttempts = 0;

  /// One of ConnectResult: of send() when it was called last, else of connect().
  int result = 0;

  /// None when an answer came. `words` says the same for people: printable, without advice, and
  /// empty with None.
  FailureCause cause = FailureCause::None;
  std::string words;

  /// Whether an answer to a request came; only then do the next two hold.
  bool isAnswered = false;
  std::uint8_t completionCode = 0;

  /// Data bytes, the completion code not among them.
  std::size_t answerLength = 0;
};

/// How the last exchange ended that an IpmiClient made on the calling thread; as new when none did.
/// An exchange begins when a client is made. The reference holds until the thread ends; what it
/// refers to changes with the thread's next exchange.
const LastExchange& GetLastExchange();

}  // namespace Standalone
}  // namespace Tavrin
