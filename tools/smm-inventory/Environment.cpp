#include "tools/smm-inventory/Environment.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "platform/standalone/StrictNumber.h"
#include "platform/standalone/logger/LogControl.h"
#include "platform/standalone/logger/ThreadLog.h"
#include "tools/smm-inventory/Options.h"
#include "tools/smm-inventory/terminal/LogLines.h"

namespace Tavrin {
namespace {

/// A setting that the environment can give, unless options and hosts file do.
struct Setting {
  const char* key;
  bool isGiven;
};

std::vector<Setting> SettingsByEnvironment(const Options& options) {
  const auto isGiven = [&options](std::optional<int> TargetSettings::*setting) {
    return std::all_of(options.targets.begin(), options.targets.end(),
                       [&](const Target& target) { return target.settings.*setting; });
  };
  return {{"IPMI_CIPHER_SUITE", isGiven(&TargetSettings::cipherSuite)},
          {"IPMI_PRIVILEGE_LEVEL", isGiven(&TargetSettings::privilegeLevel)},
          {"IPMI_WORKAROUND_FLAGS", isGiven(&TargetSettings::workaroundFlags)},
          {"IPMI_CONNECT_RETRY_TIMES", isGiven(&TargetSettings::attempts)},
          {"IPMI_SESSION_TIMEOUT_MS", isGiven(&TargetSettings::sessionTimeoutMs)},
          {"IPMI_RETRANSMISSION_TIMEOUT_MS", false},
          {"SMM_TYPE", false}};
}

/// Says which defaults the environment replaces. What it holds that is no number replaces none.
void ShowEnvironment(const Options& options, Console& console) {
  for (const Setting& setting : SettingsByEnvironment(options)) {
    const char* const text = std::getenv(setting.key);
    if (!setting.isGiven && text != nullptr && Standalone::ParseStrictly(text)) {
      console.ShowLine(fmt::format("{} is {}, from the environment", setting.key, text));
    }
  }
}

void CheckLogLevel(LogLines& lines) {
  const Standalone::ThreadLog log(
      lines.LogLevel(), [&lines](const Standalone::LogLine& line) { lines.LineWritten(line); });
  Standalone::SetMinLogLevel(lines.LogLevel());
}

}  // namespace

void CheckEnvironment(const Options& options, Console& console) {
  LogLines lines(console, options.ShownLogLevel());
  CheckLogLevel(lines);
  if (options.verbosity > 0) {
    ShowEnvironment(options, console);
  }
}

}  // namespace Tavrin
