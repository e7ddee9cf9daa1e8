#include "platform/SMMInfo.h"

#include <cstring>
#include <string>
#include <vector>

#include "platform/GlobalConfig.h"
#include "platform/IpmiClient.h"
#include "platform/Log.h"
#include "platform/standalone/HexByte.h"
#include "platform/standalone/smmcommoninfo/LastDetection.h"

namespace Tavrin {
namespace {

using TavrinConnection::ConnectionInfo;

constexpr const char* kSourcePath = "platform/standalone/smmcommoninfo/SMMInfo";
constexpr const char* kOverrideKey = "SMM_TYPE";
constexpr int kDetect = -1;
constexpr unsigned int kWarning = 2;

constexpr int kDetected = 0;
constexpr int kNotDetected = 1;

constexpr int kConnectWorthRetrying = 3;
constexpr unsigned long kCipherSuite = 3;
constexpr int kDefaultAttempts = 3;

constexpr std::uint8_t kOemNetFn = 0x32;
constexpr std::uint8_t kStatusCommand = 0xA8;
constexpr std::uint8_t kPlatform253 = 0xFD;
constexpr std::uint8_t kPlatform254 = 0xFE;

Standalone::DetectionOutcome& ThisThreadsOutcome() {
  thread_local Standalone::DetectionOutcome outcome = Standalone::DetectionOutcome::NotTried;
  return outcome;
}

bool AdmitsIpmi(std::int32_t connectionKind) { return connectionKind == 1 || connectionKind == 7; }

void Warn(const std::string& text, unsigned int line) {
  if (Log::GetMinLogLevel() >= kWarning) {
    Log(kWarning, kSourcePath, line).Stream() << text;
  }
}

int NotDetected(const ConnectionInfo& info, const std::string& cause) {
  Warn("the generation of the SMM at host " + info.address + ", port " + std::to_string(info.port) +
           " could not be detected: " + cause + "; set " + kOverrideKey +
           " to 0 (first generation) or 1 (second) to do without detection",
       __LINE__);
  return kNotDetected;
}

bool Connect(IpmiClient& client) {
  const int attempts = GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", kDefaultAttempts);
  int result = kConnectWorthRetrying;
  for (int attempt = 0; attempt < attempts && result == kConnectWorthRetrying; ++attempt) {
    result = client.connect();
  }
  return result == 0;
}

/// Asks the controller; stores the answer in `type` when it tells the generation.
int Detect(const ConnectionInfo& info, SMMIype& type) {
  IpmiClient client(info.address, info.userName, info.password, std::to_string(info.port),
                    kCipherSuite);
  if (!Connect(client)) {
    return NotDetected(info, "no connection could be opened");
  }
  std::vector<std::uint8_t> response;
  std::uint8_t completionCode = 0;
  const int sent = client.send({kStatusCommand, {}, kOemNetFn}, response, completionCode);
  client.disconnect();
  if (sent != 0) {
    return NotDetected(info, "the status request got no answer");
  }
  if (completionCode != 0) {
    return NotDetected(info, "the status request was refused with completion code " +
                                 Standalone::HexByte(completionCode));
  }
  if (response.empty()) {
    return NotDetected(info, "the answer to the status request is empty");
  }
  // A second-generation answer starts with the platform id, a first-generation one with the major
  // revision.
  const std::uint8_t first = response.front();
  type =
      first == kPlatform253 || first == kPlatform254 ? SMM_SECOND_GENERATION : SMM_FIRST_GENERATION;
  return kDetected;
}

}  // namespace

struct SMMInfo::State {
  State() = default;
  ~State() { explicit_bzero(info.password.data(), info.password.size()); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  ConnectionInfo info;
};

SMMInfo::SMMInfo(const ConnectionInfo& info) : state_(std::make_unique<State>()) {
  // Copied once and in place: a move could leave the password behind where nobody wipes it.
  state_->info = info;
}

SMMInfo::~SMMInfo() = default;

int SMMInfo::GetSmmType(SMMIype& type) {
  Standalone::DetectionOutcome& outcome = ThisThreadsOutcome();
  outcome = Standalone::DetectionOutcome::Unknown;
  const int configured = GetGlobalConfigValue(kOverrideKey, kDetect);
  if (configured == SMM_FIRST_GENERATION || configured == SMM_SECOND_GENERATION) {
    type = static_cast<SMMIype>(configured);
    outcome = Standalone::DetectionOutcome::Configured;
    return kDetected;
  }
  if (configured != kDetect) {
    Warn(std::string(kOverrideKey) + " is \"" + std::to_string(configured) +
             "\"; expected 0 (first generation), 1 (second) or -1 (detect); it is detected",
         __LINE__);
  }
  const ConnectionInfo& info = state_->info;
  if (!AdmitsIpmi(info.connectionKind)) {
    return kNotDetected;
  }
  const int result = Detect(info, type);
  if (result == kDetected) {
    outcome = Standalone::DetectionOutcome::Detected;
  }
  return result;
}

Standalone::DetectionOutcome Standalone::GetLastDetectionOutcome() { return ThisThreadsOutcome(); }

}  // namespace Tavrin
