#pragma once

namespace Tavrin {
namespace Standalone {

/// What IpmiClient::connect() and send() return when the standalone client stands behind it. Only
/// `WorthRetrying` means that the same call may succeed a moment later. A session that its
/// controller has forgotten in the meantime stays silent until it is connected again.
namespace ConnectResult {
constexpr int Connected = 0;
constexpr int WorthRetrying = 3;    ///< Time-out, unreachable network, name server away, controller
                                    ///< busy, no free session, refused suite, damaged or
                                    ///< unexpected datagram.
constexpr int BadHostName = 4;      ///< The host name does not resolve, or is not a valid name.
constexpr int UserNameRefused = 5;  ///< The controller does not know the user.
constexpr int PasswordRefused = 6;  ///< The controller's proof of the password does not match ours.
constexpr int PrivilegeRefused = 7;  ///< The user may not have the privilege level asked for.
constexpr int ArgumentTooLong = 8;   ///< User name over 16 bytes or password over 20 bytes.
constexpr int InvalidSetting = 9;  ///< A port, cipher suite or configuration value out of range, or
                                   ///< a zero byte in user name or password.
constexpr int Failed = 10;         ///< Anything else; the client's log line names the cause.
constexpr int Interrupted = 11;    ///< The thread's deadline is over, or exchanges were stopped.
}  // namespace ConnectResult

}  // namespace Standalone
}  // namespace Tavrin
