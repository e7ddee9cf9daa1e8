#include "simulator/SimulatedEnclosure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>
#include <thread>
#include <utility>

#include "simulator/ModuleSettings.h"
#include "simulator/SimulatorLayout.h"
#include "support/FileDescriptor.h"

namespace Tavrin::Simulator {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSettingsName = "settings";
constexpr int kMaxSessions = 63;  // As many as ipmi_sim has room for.
constexpr const char* kModuleName = "smm_simulator_module.so";
constexpr const char* kOutputName = "ipmi_sim.log";
constexpr const char* kStateName = "state";  // Which ipmi_sim makes.
constexpr std::chrono::seconds kStartPatience{10};
constexpr std::chrono::seconds kStopPatience{2};
constexpr int kPingMilliseconds = 100;
constexpr std::chrono::milliseconds kPingPause{10};
constexpr int kPortAttempts = 20;
/// ipmi_sim ends with "Unable to bind to LAN port: Address already in use" and an exit status that
/// stands for other failures as well.
constexpr const char* kWordsForTakenPort = "in use";

std::string FindIpmiSim() {
  const char* const path = std::getenv("PATH");
  std::istringstream directories(path == nullptr ? "" : path);
  for (std::string directory; std::getline(directories, directory, ':');) {
    const fs::path candidate = fs::path(directory) / "ipmi_sim";
    if (access(candidate.c_str(), X_OK) == 0) {
      return fs::absolute(candidate).string();
    }
  }
  throw StartError(
      "the program ipmi_sim is in no directory of PATH; install the Debian package openipmi");
}

/// Beside the launcher in the build tree, in the library directory when installed.
std::string FindModule() {
  const fs::path here = fs::read_symlink("/proc/self/exe").parent_path();
  for (const fs::path& directory : {here, here / SMM_SIMULATOR_MODULE_DIRECTORY}) {
    if (fs::exists(directory / kModuleName)) {
      return (directory / kModuleName).lexically_normal().string();
    }
  }
  throw StartError(std::string(kModuleName) + " is neither in " + here.string() + " nor in " +
                   (here / SMM_SIMULATOR_MODULE_DIRECTORY).lexically_normal().string());
}

/// ipmi_sim's configuration. The user's real name and password are set by the module. Without a
/// GUID ipmi_sim would not offer IPMI 2.0.
std::string LanConfiguration(const std::string& address, std::uint16_t port) {
  std::ostringstream text;
  text << "name \"enclosure\"\n"
       << "set_working_mc 0x20\n"
       << "loadlib " << std::quoted(std::string("./") + kModuleName) << " "
       << std::quoted(kSettingsName) << "\n"
       << "startlan " << kLanChannel << "\n"
       << "addr " << address << " " << port << "\n"
       << "priv_limit admin\n"
       << "allowed_auths_callback md5\n"
       << "allowed_auths_user md5\n"
       << "allowed_auths_operator md5\n"
       << "allowed_auths_admin md5\n"
       << "guid 51a0e1c05e000000000000000000f00d\n"
       << "endlan\n"
       << "user " << kUserNumber << R"( true "unset" "unset" admin )" << kMaxSessions << "\n";
  return text.str();
}

constexpr const char* kEmulationCommands =
    "mc_setbmc 0x20\n"
    "mc_add 0x20 0 no-device-sdrs 0x23 1 0 0x9f 0 0\n"
    "mc_enable 0x20\n";

std::string InWords(const ProcessEnd& end) {
  return end.signal != 0 ? "by signal " + std::to_string(end.signal)
                         : "with exit status " + std::to_string(end.exitCode);
}

/// Another program opened the port between the reservation's trial and ipmi_sim's start.
class PortTaken : public StartError {
 public:
  using StartError::StartError;
};

}  // namespace

SimulatedEnclosure::SimulatedEnclosure(LauncherOptions options, PortReservation port)
    : options_(std::move(options)), port_(std::move(port)) {
  Program program;
  program.arguments = {FindIpmiSim(), "-c", "lan.conf", "-f", "commands", "-s", kStateName, "-n"};
  program.directory = directory_.Path();
  program.isKilledWithThread = true;
  program.patience = kStopPatience;
  WriteFiles();
  const FileDescriptor output(open((directory_.Path() + "/" + kOutputName).c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR));
  program.output = output.Get();
  program.error = output.Get();
  process_ = std::make_unique<ChildProcess>(program);
  WaitUntilItAnswers();
}

void SimulatedEnclosure::WriteFiles() const {
  const fs::path directory = directory_.Path();
  // Through a link of a fixed name, since ipmi_sim's configuration cannot quote every path.
  fs::create_symlink(FindModule(), directory / kModuleName);
  directory_.Write("lan.conf", LanConfiguration(options_.address, port_.Port()));
  directory_.Write("commands", kEmulationCommands);
  directory_.Write(kSettingsName, WriteModuleSettings({options_.kind, options_.userName,
                                                       options_.password, options_.scenario}));
}

void SimulatedEnclosure::WaitUntilItAnswers() {
  const LoopbackEndpoint endpoint = MakeEndpoint(options_.address, port_.Port());
  const auto giveUp = std::chrono::steady_clock::now() + kStartPatience;
  while (!AnswersPing(endpoint, kPingMilliseconds)) {
    if (const auto reason = Ended()) {
      if (Output().find(kWordsForTakenPort) != std::string::npos) {
        throw PortTaken(*reason);
      }
      throw StartError(*reason);
    }
    if (std::chrono::steady_clock::now() > giveUp) {
      throw StartError("ipmi_sim did not answer at " + Endpoint() + " within " +
                       std::to_string(kStartPatience.count()) + " seconds");
    }
    // A closed port is reported at once, not after the ping's time.
    std::this_thread::sleep_for(kPingPause);
  }
}

std::string SimulatedEnclosure::Endpoint() const {
  return EndpointText(options_.address, port_.Port());
}

std::optional<std::string> SimulatedEnclosure::Ended() {
  const auto how = process_->Ended();
  if (!how) {
    return std::nullopt;
  }
  const std::string line = LastOutputLine();
  return "ipmi_sim ended " + InWords(*how) +
         (line.empty() ? "" : "; its last line was \"" + line + "\"");
}

/// Whole, since ipmi_sim writes complaints at once and everything else, its version included, at
/// its end.
std::string SimulatedEnclosure::Output() const {
  std::ifstream output(directory_.Path() + "/" + kOutputName);
  return {std::istreambuf_iterator<char>(output), {}};
}

std::string SimulatedEnclosure::LastOutputLine() const {
  std::istringstream output(Output());
  std::string last;
  for (std::string line; std::getline(output, line);) {
    last = line;
  }
  return last;
}

std::unique_ptr<SimulatedEnclosure> StartEnclosure(const LauncherOptions& options) {
  for (int attempt = 1; attempt <= kPortAttempts; ++attempt) {
    auto reservation = PortReservation::Take(options.address, options.port);
    if (reservation) {
      try {
        return std::make_unique<SimulatedEnclosure>(options, std::move(*reservation));
      } catch (const PortTaken&) {
        // The same as no reservation: the next attempt gets another port, if any will do.
      }
    }
    if (options.port != 0) {
      throw StartError("port " + std::to_string(options.port) + " of " + options.address +
                       " is taken; expected a free port, or 0 for any free one");
    }
  }
  throw StartError("no free port of " + options.address + " was found");
}

}  // namespace Tavrin::Simulator
