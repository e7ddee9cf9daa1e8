#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace Tavrin {

/// The longest user name and password that IPMI 2.0 carries, in bytes.
constexpr std::size_t kMaxUserNameLength = 16;
constexpr std::size_t kMaxPasswordLength = 20;

/// How one SMM is reached. An empty setting leaves the configuration of the process, that is the
/// environment variable named beside it or the IPMI client's default. What is out of its range
/// fails the pass with FailureCause::BadSetting, unless said otherwise. The interval of repetitions
/// (IPMI_RETRANSMISSION_TIMEOUT_MS) is the process's, and has to be below the session time-out.
struct EnclosureSettings {
  EnclosureSettings() = default;
  EnclosureSettings(const EnclosureSettings&) = default;
  EnclosureSettings& operator=(const EnclosureSettings&) = delete;
  ~EnclosureSettings();  ///< Wipes the password. There is no move, which would leave a copy behind.

  std::string host;          ///< Name or address; an IPv6 address without brackets.
  std::uint16_t port = 623;  ///< UDP.
  std::string userName;      ///< At most kMaxUserNameLength bytes.
  std::string password;      ///< At most kMaxPasswordLength bytes.

  /// IPMI_CIPHER_SUITE: an id of IPMI 2.0; -1 leaves the choice to the library, which takes 3.
  std::optional<int> cipherSuite;

  /// IPMI_PRIVILEGE_LEVEL: 2 user, 3 operator, 4 administrator.
  std::optional<int> privilegeLevel;

  /// IPMI_WORKAROUND_FLAGS: a sum of FreeIPMI's flags for controllers that stray from IPMI 2.0.
  std::optional<int> workaroundFlags;

  /// IPMI_CONNECT_RETRY_TIMES: how often to connect for each request, in all. With 0 or less no
  /// request is sent, and the pass fails with FailureCause::NoAttempt.
  std::optional<int> attempts;

  /// IPMI_SESSION_TIMEOUT_MS: how long one step of a conversation may stay unanswered, 20 to
  /// 600,000 milliseconds.
  std::optional<int> sessionTimeoutMs;
};

/// `host:port` as people write it: an IPv6 address gets brackets.
std::string AddressText(const std::string& host, std::uint16_t port);

}  // namespace Tavrin
