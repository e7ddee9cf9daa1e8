#include "platform/GlobalConfig.h"

#include <cstdlib>
#include <limits>
#include <map>
#include <mutex>
#include <optional>
#include <set>

#include "platform/Log.h"
#include "platform/standalone/StrictNumber.h"
#include "platform/standalone/globalconfig/ConfigControl.h"

namespace Tavrin {
namespace {

struct Store {
  std::mutex mutex;
  std::map<std::string, int> values;
  std::set<std::string> reported;
};

Store& TheStore() {
  // Never destroyed: destructors of other static objects may still ask.
  static auto* const store = new Store;
  return *store;
}

std::optional<int> ValueSetAtRunTime(const std::string& key) {
  Store& store = TheStore();
  const std::lock_guard<std::mutex> lock(store.mutex);
  const auto found = store.values.find(key);
  return found == store.values.end() ? std::nullopt : std::optional<int>(found->second);
}

bool IsFirstReport(const std::string& key) {
  Store& store = TheStore();
  const std::lock_guard<std::mutex> lock(store.mutex);
  return store.reported.insert(key).second;
}

/// Says once a key that the environment's value does not hold. On the error level, so that it is
/// seen with the threshold that holds when nobody sets one.
void ReportRejectedValue(const std::string& key, const char* text, int defaultValue) {
  if (Log::GetMinLogLevel() == 0 || !IsFirstReport(key)) {
    return;
  }
  Log(1, "platform/standalone/globalconfig/GlobalConfig", __LINE__).Stream()
      << key << " is \"" << text << "\"; expected a whole number from "
      << std::numeric_limits<int>::min() << " to " << std::numeric_limits<int>::max()
      << "; the default " << defaultValue << " holds";
}

}  // namespace

int GetGlobalConfigValue(const std::string& key, int defaultValue) {
  if (const std::optional<int> value = ValueSetAtRunTime(key)) {
    return *value;
  }
  const char* const text = std::getenv(key.c_str());
  if (text == nullptr) {
    return defaultValue;
  }
  if (const std::optional<int> value = Standalone::ParseStrictly(text)) {
    return *value;
  }
  ReportRejectedValue(key, text, defaultValue);
  return defaultValue;
}

namespace Standalone {

void SetGlobalConfigValue(const std::string& key, int value) {
  Store& store = TheStore();
  const std::lock_guard<std::mutex> lock(store.mutex);
  store.values[key] = value;
}

}  // namespace Standalone
}  // namespace Tavrin
