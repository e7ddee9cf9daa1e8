#include "tests/support/SimulatedSmm.h"

#include <stdexcept>

namespace Tavrin {

std::string ReadReadyAddress(Child& launcher) {
  const std::string line = launcher.ReadLine();
  if (line.empty()) {
    throw std::runtime_error("the simulator did not start: " + launcher.Wait().error);
  }
  return line.substr(line.rfind(' ') + 1);
}

SimulatedSmm::SimulatedSmm(const std::vector<std::string>& options, const std::string& scenario,
                           const std::string& password)
    : password_(password + "\n"),
      scenario_(scenario),
      child_(Joined({SMM_SIMULATOR, "--user", "admin", "--password-file", password_.Path(),
                     "--scenario", scenario_.Path()},
                    options),
             {"PATH=/usr/bin:/bin:/usr/sbin"}),
      address_(ReadReadyAddress(child_)) {}

std::string SimulatedSmm::Host() const {
  std::string host = address_.substr(0, address_.rfind(':'));
  return host.front() == '[' ? host.substr(1, host.size() - 2) : host;
}

std::uint16_t SimulatedSmm::Port() const {
  return static_cast<std::uint16_t>(std::stoul(address_.substr(address_.rfind(':') + 1)));
}

TavrinConnection::ConnectionInfo SettingsOf(const SimulatedSmm& simulator, std::uint16_t port) {
  TavrinConnection::ConnectionInfo settings;
  settings.address = simulator.Host();
  settings.port = port == 0 ? simulator.Port() : port;
  settings.userName = "admin";
  settings.password = "sesame";
  settings.connectionKind = 7;
  return settings;
}

}  // namespace Tavrin
