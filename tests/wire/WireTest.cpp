#include "tests/wire/WireTest.h"

#include "platform/standalone/globalconfig/ConfigControl.h"

namespace Tavrin {

std::vector<unsigned int>& Pauses() {
  static std::vector<unsigned int> pauses;
  return pauses;
}

WireTest::WireTest() {
  Pauses().clear();
  Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 16);
  Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS", 1000);
  Standalone::SetMinLogLevel(2);
  Standalone::SetLogLineHandler([this](const Standalone::LogLine& line) { lines.push_back(line); });
}

WireTest::~WireTest() { Standalone::SetLogLineHandler({}); }

std::string WireTest::LogText() const {
  std::string text;
  for (const Standalone::LogLine& line : lines) {
    text += line.text + '\n';
  }
  return text;
}

}  // namespace Tavrin

extern "C" unsigned int sleep(unsigned int seconds) {
  Tavrin::Pauses().push_back(seconds);
  return 0;
}
