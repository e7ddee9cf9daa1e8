#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Tavrin {
namespace Standalone {

/// Why an exchange came to no answer. What tells programs apart what they have to do differently;
/// the words beside it are for people.
enum class FailureCause {
  None,              ///< An answer came, whatever its completion code.
  NoAttempt,         ///< A client was made and never told to connect: IPMI_CONNECT_RETRY_TIMES is
                     ///< 0 or less.
  BadSetting,        ///< A setting, the port, the user name, the password or the request cannot be
                     ///< used.
  HostName,          ///< The host name does not resolve.
  NameServer,        ///< No name server answered; may pass.
  Unreachable,       ///< The network says that nobody is there, or listens at the port.
  Forbidden,         ///< This machine does not permit sending there.
  Silence,           ///< Nobody answered anything.
  FellSilent,        ///< The controller answered at first, then no more.
  Late,              ///< The controller answers, but later than the session time-out allows.
  Busy,              ///< The controller says that it is busy or has no free session.
  SuiteRefused,      ///< The controller does not allow the cipher suite.
  Ipmi20Missing,     ///< The controller does not offer IPMI 2.0.
  KeyMissing,        ///< The controller asks for a K_g, which this client does not use.
  UserNameRefused,   ///< The controller does not know the user.
  PasswordRefused,   ///< The controller's proof of the password does not match ours.
  PrivilegeRefused,  ///< The user may not have the privilege level asked for.
  DamagedAnswer,     ///< What came could not be read.
  OtherAnswer,       ///< What came answers another request, or its repetition crossed the answer.
  Memory,            ///< Memory or file descriptors are short on this machine.
  Other,             ///< Anything else; the words tell.
};

/// How the last exchange of a thread ended: what IpmiClient, which has a plain number to give, and
/// the library above it cannot say.
struct LastExchange {
  std::string host;            ///< As the client was given it.
  std::string port;            ///< As the client was given it.
  int connectionAttempts = 0;  ///< How often the client was told to connect.
  int result = 0;  ///< One of ConnectResult: of send() when it was called last, else of connect().
  FailureCause cause = FailureCause::None;
  std::string words;  ///< The cause in words, without advice; printable; empty when there is none.
  bool isAnswered = false;  ///< An answer to a request came; only then do the next two hold.
  std::uint8_t completionCode = 0;
  std::size_t answerLength = 0;  ///< Data bytes, the completion code not among them.
};

/// How the last exchange ended that an IpmiClient made on the calling thread; as new when none did.
/// An exchange begins when a client is made. The reference holds until the thread ends; what it
/// refers to changes with the thread's next exchange.
const LastExchange& GetLastExchange();

}  // namespace Standalone
}  // namespace Tavrin
