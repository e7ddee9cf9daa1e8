#include "platform/GlobalConfig.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "platform/Log.h"
#include "platform/standalone/StrictNumber.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/globalconfig/ThreadConfig.h"

namespace Tavrin {
namespace {

/// What is known of one key. Entries are added and never removed, and need no lock: a child that is
/// forked while another thread holds one would wait for it without end.
struct Entry {
  explicit Entry(std::string name) : key(std::move(name)) {}

  const std::string key;
  std::atomic<int> value{};
  std::atomic<bool> isSet{false};  ///< At run time; only then does the value hold.
  std::atomic<bool> isReported{false};
  Entry* next = nullptr;
};

/// Never emptied: destructors of other static objects may still ask.
std::atomic<Entry*> firstEntry{nullptr};

Entry* Find(Entry* first, const std::string& key) {
  Entry* entry = first;
  while (entry != nullptr && entry->key != key) {
    entry = entry->next;
  }
  return entry;
}

Entry& FindOrAdd(const std::string& key) {
  Entry* first = firstEntry;
  Entry* found = Find(first, key);
  if (found != nullptr) {
    return *found;
  }
  auto added = std::make_unique<Entry>(key);
  // Where it fails, another thread has added one meanwhile, maybe this key's.
  for (; found == nullptr; found = Find(first, key)) {
    added->next = first;
    if (firstEntry.compare_exchange_weak(first, added.get())) {
      return *added.release();
    }
  }
  return *found;
}

std::optional<int> ValueSetAtRunTime(const std::string& key) {
  const Entry* const entry = Find(firstEntry, key);
  return entry != nullptr && entry->isSet ? std::optional<int>(entry->value) : std::nullopt;
}

using Values = std::map<std::string, int>;

/// Values that hold on one thread, and those around them.
struct NestedValues {
  Values values;
  const NestedValues* outer;
};

thread_local const NestedValues* innermostValues = nullptr;

std::optional<int> ValueOfTheThread(const std::string& key) {
  for (const NestedValues* nested = innermostValues; nested != nullptr; nested = nested->outer) {
    const auto found = nested->values.find(key);
    if (found != nested->values.end()) {
      return found->second;
    }
  }
  return {};
}

/// Says once a key that the environment's value does not hold. On the error level, so that it is
/// seen with the threshold that holds when nobody sets one.
void ReportRejectedValue(const std::string& key, const char* text, int defaultValue) {
  if (Log::GetMinLogLevel() == 0 || FindOrAdd(key).isReported.exchange(true)) {
    return;
  }
  Log(1, "platform/standalone/globalconfig/GlobalConfig", __LINE__).Stream()
      << key << " is \"" << text << "\"; expected a whole number from "
      << std::numeric_limits<int>::min() << " to " << std::numeric_limits<int>::max()
      << "; the default " << defaultValue << " holds";
}

}  // namespace

int GetGlobalConfigValue(const std::string& key, int defaultValue) {
  if (const std::optional<int> value = ValueOfTheThread(key)) {
    return *value;
  }
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
  Entry& entry = FindOrAdd(key);
  entry.value = value;
  entry.isSet = true;
}

struct ThreadConfig::State : NestedValues {};

ThreadConfig::ThreadConfig(Values values)
    : state_(new State{{std::move(values), innermostValues}}) {
  innermostValues = state_.get();
}

ThreadConfig::~ThreadConfig() { innermostValues = state_->outer; }

void ThreadConfig::Set(const std::string& key, int value) { state_->values[key] = value; }

}  // namespace Standalone
}  // namespace Tavrin
