#include <fstream>
#include <string>
#include <vector>

#include "platform/GlobalConfig.h"
#include "platform/Log.h"
#include "platform/SMMInfo.h"
#include "tests/doubles/PlatformDouble.h"

// What the library finds behind platform/ beside its client.

namespace Tavrin::Double {
namespace {

std::vector<std::string> LinesOf(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// A line of the source that writes the log, counted from 1; empty when it has none of this number.
const std::string& SourceLine(unsigned int number) {
  static const std::vector<std::string> lines =
      LinesOf(SOURCE_DIRECTORY "/module/smm/smm_inventory/impl/SMMInventoryImpl.cpp");
  static const std::string none;
  return number >= 1 && number <= lines.size() ? lines[number - 1] : none;
}

}  // namespace
}  // namespace Tavrin::Double

namespace Tavrin {

using Double::ExpectSame;
using Double::Require;
using Double::ThePlatform;

int GetGlobalConfigValue(const std::string& key, int defaultValue) {
  if (ThePlatform().answerTo) {
    return defaultValue;
  }
  Require(key == "IPMI_CONNECT_RETRY_TIMES" && defaultValue == 3,
          "the attempts are configured, and three by default");
  ThePlatform().events.emplace_back("configuration read");
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
  ++Double::TallyOfThisThread().lines;
  if (ThePlatform().answerTo) {
    return;
  }
  Require(level >= 1 && level <= ThePlatform().logThreshold,
          "a line has a level from 1 to the threshold");
  Require(sourcePath == "module/smm/smm_inventory/impl/SMMInventoryImpl" &&
              Double::SourceLine(line).find("SMM_LOG(k") != std::string::npos,
          "a line says where it was written");
}

Log::~Log() {
  const std::string text = state_->text.str();
  Require(!text.empty(), "a line has a text");
  Double::Platform& platform = ThePlatform();
  if (platform.answerTo) {
    return;
  }
  platform.lines.push_back({state_->level, text});
  platform.lineNumbers.push_back(state_->line);
  platform.whileWritten(platform.lines.back());
}

std::ostream& Log::Stream() { return state_->text; }

unsigned int Log::GetMinLogLevel() {
  Double::Platform& platform = ThePlatform();
  if (platform.answerTo) {
    return platform.logThreshold;
  }
  ++platform.thresholdReads;
  if (!platform.laterThresholds.empty()) {
    platform.logThreshold = Double::TakeNext(platform.laterThresholds);
  }
  return platform.logThreshold;
}

struct SMMInfo::State {};

SMMInfo::SMMInfo(const TavrinConnection::ConnectionInfo& info) {
  if (ThePlatform().answerTo) {
    return;
  }
  const TavrinConnection::ConnectionInfo& expected = ThePlatform().expectedSettings;
  ExpectSame("address of the SMM information", info.address, expected.address);
  ExpectSame("port of the SMM information", info.port, expected.port);
  ExpectSame("user name of the SMM information", info.userName, expected.userName);
  ExpectSame("password of the SMM information", info.password, expected.password);
  ExpectSame("kind of the SMM information", info.connectionKind, expected.connectionKind);
  ThePlatform().settingsOfInformation = &info;
  ThePlatform().events.emplace_back("SMM information constructed");
}

SMMInfo::~SMMInfo() {
  if (ThePlatform().answerTo) {
    return;
  }
  ThePlatform().events.emplace_back("SMM information destroyed");
  ThePlatform().onRelease();
}

int SMMInfo::GetSmmType(SMMIype& type) {
  const Double::Platform& platform = ThePlatform();
  if (!platform.answerTo) {
    ThePlatform().askedSmmType = &type;
    ThePlatform().events.emplace_back("SMM type asked");
    if (platform.smmTypeException != nullptr) {
      std::rethrow_exception(platform.smmTypeException);
    }
  }
  type = static_cast<SMMIype>(platform.smmType.value_or(type));
  return platform.smmTypeResult;
}

}  // namespace Tavrin
