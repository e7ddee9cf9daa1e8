#include "tests/doubles/PlatformDouble.h"

#include <unistd.h>

#include <ctime>
#include <fstream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "platform/GlobalConfig.h"
#include "platform/Log.h"
#include "tests/doubles/Pauses.h"

// What the library finds behind platform/ beside its client.

namespace Tavrin::Double {
namespace {

/// Whether the source that writes the log writes a line there.
bool WritesALineAt(unsigned int number) {
  static const std::vector<std::string> lines = [] {
    std::vector<std::string> read(1);  // They are counted from 1.
    std::ifstream file(SOURCE_DIRECTORY "/module/smm/smm_inventory/impl/SMMInventoryImpl.cpp");
    for (std::string line; std::getline(file, line);) {
      read.push_back(line);
    }
    return read;
  }();
  return number < lines.size() && lines[number].find("SMM_LOG(k") != std::string::npos;
}

[[maybe_unused]] const bool playsPauses = []() noexcept {
  onPause = PlayPause;
  return true;
}();

}  // namespace

unsigned int PlayPause(unsigned int seconds) {
  Platform& platform = ThePlatform();
  if (platform.answerTo) {
    return 0;
  }
  // A fuzzer watches its memory from a thread of its own, which does pause.
  if (gettid() != getpid()) {
    const timespec pause{seconds, 0};
    return static_cast<unsigned int>(nanosleep(&pause, nullptr));
  }
  platform.pauses.push_back(seconds);
  platform.Happened("pause");
  return 0;
}

}  // namespace Tavrin::Double

namespace Tavrin {

using Double::Platform;
using Double::Require;
using Double::ThePlatform;

int GetGlobalConfigValue(const std::string& key, int defaultValue) {
  if (ThePlatform().answerTo) {
    return defaultValue;
  }
  Require(key == "IPMI_CONNECT_RETRY_TIMES" && defaultValue == 3,
          "the attempts are configured, and three by default");
  ThePlatform().Happened("configuration read");
  return ThePlatform().connectAttempts;
}

// The text is collected in a stream and handed over as a string, as a logger does that writes it.
struct Log::State {
  unsigned int level = 0;
  unsigned int line = 0;
  std::ostringstream text;
};

Log::Log(unsigned int level, const std::string& sourcePath, unsigned int line)
    : state_(std::make_unique<State>()) {
  state_->level = level;
  state_->line = line;
  if (ThePlatform().answerTo) {
    return;
  }
  Require(level >= 1 && level <= ThePlatform().logThreshold,
          "a line has a level from 1 to the threshold");
  Require(
      sourcePath == "module/smm/smm_inventory/impl/SMMInventoryImpl" && Double::WritesALineAt(line),
      "a line says where it was written");
}

Log::~Log() {
  const std::string text = state_->text.str();
  Require(!text.empty(), "a line has a text");
  Platform& platform = ThePlatform();
  if (!platform.answerTo) {
    platform.lines.push_back({state_->level, text, state_->line});
    platform.whileWritten(platform.lines.back());
  }
}

std::ostream& Log::Stream() { return state_->text; }

unsigned int Log::GetMinLogLevel() {
  Platform& platform = ThePlatform();
  if (!platform.answerTo) {
    ++platform.thresholdReads;
    if (!platform.laterThresholds.empty()) {
      platform.logThreshold = platform.laterThresholds.front();
      platform.laterThresholds.erase(platform.laterThresholds.begin());
    }
  }
  return platform.logThreshold;
}

struct SMMInfo::State {};

SMMInfo::SMMInfo(const TavrinConnection::ConnectionInfo& info) {
  Platform& platform = ThePlatform();
  if (platform.answerTo) {
    return;
  }
  const TavrinConnection::ConnectionInfo& expected = platform.expectedSettings;
  Require(std::tie(info.address, info.port, info.userName, info.password, info.connectionKind) ==
              std::tie(expected.address, expected.port, expected.userName, expected.password,
                       expected.connectionKind),
          "the SMM information gets the settings");
  platform.settingsOfInformation = &info;
  platform.Happened("SMM information constructed");
}

SMMInfo::~SMMInfo() { ThePlatform().Happened("SMM information destroyed"); }

int SMMInfo::GetSmmType(SMMIype& type) {
  Platform& platform = ThePlatform();
  if (!platform.answerTo) {
    platform.askedSmmType = &type;
    platform.Happened("SMM type asked");
  }
  type = static_cast<SMMIype>(platform.smmType.value_or(type));
  return platform.smmTypeResult;
}

}  // namespace Tavrin
