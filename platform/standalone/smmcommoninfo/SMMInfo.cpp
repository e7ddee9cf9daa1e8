#include "platform/SMMInfo.h"

#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/GlobalConfig.h"
#include "platform/IpmiClient.h"
#include "platform/Log.h"
#include "platform/standalone/HexByte.h"
#include "platform/standalone/PassingRefusal.h"
#include "platform/standalone/ipmi_client/ConnectRound.h"
#include "platform/standalone/logger/LogControl.h"
#include "platform/standalone/smmcommoninfo/LastDetection.h"

namespace Tavrin {
namespace {

using TavrinConnection::ConnectionInfo;

constexpr const char* kSourcePath = "platform/standalone/smmcommoninfo/SMMInfo";
constexpr const char* kOverrideKey = "SMM_TYPE";
constexpr int kDetect = -1;

constexpr int kDetected = 0;
constexpr int kNotDetected = 1;

constexpr int kExchanges = 3;
constexpr std::chrono::milliseconds kPauseBetweenExchanges{500};

constexpr std::uint8_t kOemNetFn = 0x32;
constexpr std::uint8_t kStatusCommand = 0xA8;
constexpr std::uint8_t kPlatform253 = 0xFD;
constexpr std::uint8_t kPlatform254 = 0xFE;

struct LastDetection {
  Standalone::DetectionOutcome outcome = Standalone::DetectionOutcome::NotTried;
  std::vector<std::uint8_t> answer;
};

LastDetection& ThisThreadsDetection() {
  thread_local LastDetection detection;
  return detection;
}

bool AdmitsIpmi(std::int32_t connectionKind) { return connectionKind == 1 || connectionKind == 7; }

void Warn(const std::string& text, unsigned int line) {
  if (Log::GetMinLogLevel() >= Standalone::LogLevel::Warning) {
    Log(Standalone::LogLevel::Warning, kSourcePath, line).Stream() << text;
  }
}

void ReportNotDetected(const ConnectionInfo& info, const std::string& cause) {
  Warn("the generation of the SMM at host " + info.address + ", port " + std::to_string(info.port) +
           " could not be detected: " + cause + "; set " + kOverrideKey +
           " to 0 (first generation) or 1 (second) to do without detection",
       __LINE__);
}

/// What one exchange came to.
struct Attempt {
  std::string cause;  ///< Why the generation is not known; empty when it is.
  bool mayPass = false;
};

Attempt Refused(std::uint8_t completionCode) {
  return {
      "the status request was refused with completion code " + Standalone::HexByte(completionCode),
      Standalone::MayPass(completionCode)};
}

/// Asks the controller once; stores the answer in `type` when it tells the generation.
Attempt Ask(const ConnectionInfo& info, SMMIype& type) {
  IpmiClient client(info.address, info.userName, info.password, std::to_string(info.port),
                    Standalone::kLibraryCipherSuite);
  if (!Standalone::ConnectAsTheLibrary(client)) {
    // It had its attempts; more would only make a dead host's caller wait for longer.
    return {"no connection could be opened", false};
  }
  std::vector<std::uint8_t> response;
  std::uint8_t completionCode{};
  const int sent = client.send({kStatusCommand, {}, kOemNetFn}, response, completionCode);
  client.disconnect();
  if (sent != 0) {
    return {"the status request got no answer", sent == Standalone::ConnectResult::WorthRetrying};
  }
  if (completionCode != 0) {
    return Refused(completionCode);
  }
  if (response.empty()) {
    return {"the answer to the status request is empty", false};
  }
  // A second-generation answer starts with the platform id, a first-generation one with the major
  // revision.
  const std::uint8_t first = response.front();
  type =
      first == kPlatform253 || first == kPlatform254 ? SMM_SECOND_GENERATION : SMM_FIRST_GENERATION;
  ThisThreadsDetection().answer = std::move(response);
  return {};
}

/// Asks again after what may pass, since who goes on without the generation reads wrong numbers.
int Detect(const ConnectionInfo& info, SMMIype& type) {
  Attempt attempt = Ask(info, type);
  for (int exchanges = 1; attempt.mayPass && exchanges < kExchanges; ++exchanges) {
    std::this_thread::sleep_for(kPauseBetweenExchanges);
    attempt = Ask(info, type);
  }
  if (attempt.cause.empty()) {
    return kDetected;
  }
  ReportNotDetected(info, attempt.cause);
  return kNotDetected;
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
  Standalone::DetectionOutcome& outcome = ThisThreadsDetection().outcome;
  outcome = Standalone::DetectionOutcome::Unknown;
  ThisThreadsDetection().answer.clear();
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

Standalone::DetectionOutcome Standalone::GetLastDetectionOutcome() {
  return ThisThreadsDetection().outcome;
}

const std::vector<std::uint8_t>& Standalone::GetLastDetectionAnswer() {
  return ThisThreadsDetection().answer;
}

}  // namespace Tavrin
