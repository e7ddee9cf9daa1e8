#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace Tavrin {

/// The longest user name and password that IPMI 2.0 carries, in bytes.
constexpr std::size_t kMaxUserNameLength = 16;
constexpr std::size_t kMaxPasswordLength = 20;

/// How one SMM is reached. A setting that is empty leaves what the process has: the environment
/// variable named beside it, or the IPMI client's default. One that is out of its range fails the
/// pass with FailureCause::BadSetting, unless said otherwise.
struct EnclosureSettings {
  EnclosureSettings() = default;
  EnclosureSettings(const EnclosureSettings&) = default;
  EnclosureSettings& operator=(const EnclosureSettings&) = delete;

  /// Wipes the password. There is no move, which would leave a copy behind.
  ~EnclosureSettings();

  /// Name or address; an IPv6 address without brackets.
  std::string host;

  /// UDP port, 1 to 65535.
  std::uint16_t port = 623;

  /// At most kMaxUserNameLength and kMaxPasswordLength bytes, without a zero byte.
  std::string userName;
  std::string password;

  /// IPMI_CIPHER_SUITE: one of 0, 1, 2, 3, 6, 7, 8, 11, 12, 15, 16 and 17; -1 leaves the choice to
  /// the library, which takes 3.
  std::optional<int> cipherSuite;

  /// IPMI_PRIVILEGE_LEVEL: 2 user, 3 operator, 4 administrator; by default 4.
  std::optional<int> privilegeLevel;

  /// IPMI_WORKAROUND_FLAGS: for controllers that stray from IPMI 2.0, a sum of 1 authentication
  /// capabilities, 16 open session privilege, 32 non-empty integrity check value and 64 no checksum
  /// check; by default 0.
  std::optional<int> workaroundFlags;

  /// IPMI_CONNECT_RETRY_TIMES: how often to connect for each request, in all; by default 3. With 0
  /// or less no request is sent, and the pass fails with FailureCause::NoAttempt.
  std::optional<int> attempts;

  /// IPMI_SESSION_TIMEOUT_MS: how long one step of a conversation may stay unanswered, 20 to
  /// 600,000 milliseconds; by default 4,500. Opening a session has five steps.
  std::optional<int> sessionTimeoutMs;

  /// IPMI_RETRANSMISSION_TIMEOUT_MS: after how many milliseconds a question is sent again, 10 to
  /// less than the session time-out that is in force. 0, the default, waits 1, 2 and 4 seconds in
  /// the first, second and third attempt to connect, and 1 second within a session. A controller
  /// that was found slow is given more time with either.
  std::optional<int> retransmissionTimeoutMs;
};

}  // namespace Tavrin
