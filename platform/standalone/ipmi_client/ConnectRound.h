#pragma once

#include "platform/GlobalConfig.h"
#include "platform/IpmiClient.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"

namespace Tavrin {
namespace Standalone {

/// The cipher suite and the attempts with which the library connects, for those who connect beside
/// it.
constexpr unsigned long kLibraryCipherSuite = 3;
constexpr int kLibraryConnectAttempts = 3;

/// Connects as the library does for each of its exchanges: with as many attempts as
/// IPMI_CONNECT_RETRY_TIMES allows, without a pause between them, as long as the failures are worth
/// retrying. Returns whether the connection is open.
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
