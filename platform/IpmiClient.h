#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Tavrin {

/// One IPMI request.
struct IPMICOMMAND {
  /// Command code, within the network function.
  std::uint8_t cmd = 0;

  /// Request data bytes in sending order; may be empty.
  std::vector<std::uint8_t> data;

  /// Network function of the request; that of its answer is greater by one.
  std::uint8_t netFn = 0;
};

/// A connection to one management controller. One client serves one conversation and is used from
/// one thread at a time; different clients may be used from different threads at once.
class IpmiClient {
 public:
  /// Keeps the settings; nothing is sent before connect(). `port` is unsigned decimal text,
  /// `cipherSuite` an IPMI 2.0 cipher suite id.
  IpmiClient(const std::string& address, const std::string& userName, const std::string& password,
             const std::string& port, unsigned long cipherSuite);

  /// Disconnects, if that was not done.
  ~IpmiClient();

  /// Opens the connection, after closing one that is open. Returns 0 when connected, 3 for a
  /// failure that may pass when tried again, and any other value for one that will not. Blocks
  /// until the controller answered or stayed silent for as long as the implementation waits.
  int connect();

  /// Sends one request over the open connection. Fills `response` with the data bytes of the answer
  /// (the completion code is not among them) and `completionCode` with the code. Returns 0 when an
  /// answer came; otherwise `response` is empty and `completionCode` 0xFF. Blocks as connect()
  /// does.
  int send(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
           std::uint8_t& completionCode);

  /// Closes the connection, if one is open. Returns 0.
  int disconnect();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Tavrin
