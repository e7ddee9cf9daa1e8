#include "tests/wire/WireTest.h"

#include "platform/standalone/globalconfig/ConfigControl.h"
#include "tests/doubles/Pauses.h"

namespace Tavrin {

WireTest::WireTest() {
  Double::onPause = [this](unsigned int seconds) {
    pauses.push_back(seconds);
    return 0U;
  };
  Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 16);
  Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS", 1000);
  Standalone::SetMinLogLevel(2);
  Standalone::SetLogLineHandler([this](const Standalone::LogLine& line) { lines.push_back(line); });
}

WireTest::~WireTest() {
  Standalone::SetLogLineHandler({});
  Double::onPause = nullptr;
}

std::string WireTest::LogText() const {
  std::string text;
  for (const Standalone::LogLine& line : lines) {
    text += line.text + '\n';
  }
  return text;
}

}  // namespace Tavrin
