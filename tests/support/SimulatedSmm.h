#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/ConnectionInfo.h"
#include "support/TemporaryFile.h"
#include "tests/support/Child.h"

namespace Tavrin {

/// The address from the line that tells that the launcher is ready, which this reads. Throws
/// std::runtime_error with what the launcher said when it ended without that line.
std::string ReadReadyAddress(Child& launcher);

/// A simulated enclosure on loopback, whose user is "admin". It is ended with the object.
class SimulatedSmm {
 public:
  /// `options` as the launcher takes them, for example {"--generation", "1"}; `scenario` is the
  /// content of a scenario file.
  explicit SimulatedSmm(const std::vector<std::string>& options,
                        const std::string& scenario = R"({"overrides": []})",
                        const std::string& password = "sesame");

  /// Host and port as one text, for example "127.0.0.1:50123".
  const std::string& Address() const { return address_; }
  std::string Host() const;
  std::uint16_t Port() const;

 private:
  TemporaryFile password_;
  TemporaryFile scenario_;
  Child child_;
  std::string address_;
};

/// The settings that open a session on the simulator; with a port, through a relay in front of it.
TavrinConnection::ConnectionInfo SettingsOf(const SimulatedSmm& simulator, std::uint16_t port = 0);

}  // namespace Tavrin
