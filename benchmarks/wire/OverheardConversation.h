#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "platform/IpmiClient.h"
#include "tests/support/Relay.h"

namespace Tavrin {

/// A request datagram and the answer to it.
struct RoundTrip {
  std::string purpose;
  std::size_t requestBytes = 0;
  std::size_t answerBytes = 0;  ///< 0 when there was none, so that the request was repeated.
};

/// What clients and a controller say to each other through a relay, as the datagrams tell it.
class OverheardConversation {
 public:
  /// Begins to take down all that passes the relay, which has to live longer.
  explicit OverheardConversation(Relay& relay);
  ~OverheardConversation();
  OverheardConversation(const OverheardConversation&) = delete;
  OverheardConversation& operator=(const OverheardConversation&) = delete;

  std::size_t Datagrams() const;
  std::vector<RoundTrip> RoundTrips() const;

  /// The requests that are not part of opening and closing sessions, in the order they were sent.
  /// None with a cipher suite that encrypts.
  std::vector<IPMICOMMAND> Commands() const;

 private:
  Relay& relay_;
  mutable std::mutex mutex_;
  std::vector<Datagram> datagrams_;  // Guarded by mutex_.
};

}  // namespace Tavrin
