#pragma once

#include "platform/GlobalConfig.h"
#include "platform/IpmiClient.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"

namespace Tavrin {
namespace Standalone {

// For those who connect beside the library and should meet what it meets.

/// The IPMI 2.0 cipher suite that the library asks for, unless IPMI_CIPHER_SUITE tells another: 3
/// is RAKP-HMAC-SHA1, HMAC-SHA1-96 and AES-CBC-128.
constexpr unsigned long kLibraryCipherSuite = 3;

/// How often the library tries to connect, unless IPMI_CONNECT_RETRY_TIMES tells another number.
constexpr int kLibraryConnectAttempts = 3;

/// Connects as the library does for each of its exchanges: with as many attempts as
/// IPMI_CONNECT_RETRY_TIMES allows, without a pause between them, as long as the failures are worth
/// retrying. Returns whether the connection is open; why it is not, GetLastExchange() tells
/// (LastExchange.h). With 0 or
/// less nothing is tried. Blocks for as long as all attempts together.
inline bool ConnectAsTheLibrary(IpmiClient& client) {
  const int attempts = GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", kLibraryConnectAttempts);
  int result = ConnectResult::WorthRetrying;
  for (int attempt = 0; attempt < attempts && result == ConnectResult::WorthRetrying; ++attempt) {
    result = client.connect();
  }
  return result == ConnectResult::Connected;
}

}  // namespace Standalone
}  // namespace Tavrin
