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
/// fails the pass, with FailureCause::BadSetting.
struct EnclosureSettings {
  EnclosureSettings() = default;
  EnclosureSettings(const EnclosureSettings&) = default;
  EnclosureSettings& operator=(const EnclosureSettings&) = delete;
  ~EnclosureSettings();  ///< Wipes the password. There is no move, which would leave a copy behind.

  std::string host;          ///< Name or address; an IPv6 address without brackets.
  std::uint16_t port = 623;  ///< UDP.
  std::string userName;      ///< At most kMaxUserNameLength bytes.
  std::string password;      ///< At most kMaxPasswordLength bytes.

  std::optional<int> cipherSuite;  ///< IPMI_CIPHER_SUITE.
  std::optional<int>
      privilegeLevel;  ///< IPMI_PRIVILEGE_LEVEL: 2 user, 3 operator, 4 administrator.
  std::optional<int> workaroundFlags;   ///< IPMI_WORKAROUND_FLAGS.
  std::optional<int> attempts;          ///< IPMI_CONNECT_RETRY_TIMES: to connect, for each request.
  std::optional<int> sessionTimeoutMs;  ///< IPMI_SESSION_TIMEOUT_MS.
};

/// `host:port` as people write it: an IPv6 address gets brackets.
std::string AddressText(const std::string& host, std::uint16_t port);

}  // namespace Tavrin
