#include "fleet/Target.h"

#include "reading/EnclosureSettings.h"

namespace Tavrin {
namespace {

template <typename Value>
void CompleteValue(std::optional<Value>& value, const std::optional<Value>& other) {
  if (!value) {
    value = other;
  }
}

template <typename Value, typename Setting>
void ApplyValue(const std::optional<Value>& value, Setting& setting) {
  if (value) {
    setting = *value;
  }
}

}  // namespace

HostAndPort PlaceOf(const Target& target) {
  const bool goesWithoutSaying = target.port == kDefaultPort && target.isPortPlain;
  return {target.host, goesWithoutSaying ? std::nullopt : std::optional(target.port)};
}

void Complete(TargetSettings& settings, const TargetSettings& defaults) {
  CompleteValue(settings.userName, defaults.userName);
  CompleteValue(settings.passwordFile, defaults.passwordFile);
  CompleteValue(settings.cipherSuite, defaults.cipherSuite);
  CompleteValue(settings.privilegeLevel, defaults.privilegeLevel);
  CompleteValue(settings.workaroundFlags, defaults.workaroundFlags);
  CompleteValue(settings.attempts, defaults.attempts);
  CompleteValue(settings.sessionTimeoutMs, defaults.sessionTimeoutMs);
}

void Apply(const Target& target, EnclosureSettings& enclosure) {
  enclosure.host = target.host;
  enclosure.port = target.port;
  ApplyValue(target.settings.userName, enclosure.userName);
  ApplyValue(target.settings.cipherSuite, enclosure.cipherSuite);
  ApplyValue(target.settings.privilegeLevel, enclosure.privilegeLevel);
  ApplyValue(target.settings.workaroundFlags, enclosure.workaroundFlags);
  ApplyValue(target.settings.attempts, enclosure.attempts);
  ApplyValue(target.settings.sessionTimeoutMs, enclosure.sessionTimeoutMs);
}

}  // namespace Tavrin
