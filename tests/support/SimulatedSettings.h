#pragma once

#include <cstdint>

#include "reading/EnclosureSettings.h"

namespace Tavrin {

/// How the SMM of a SimulatedSmm is reached at that port of 127.0.0.1, or of a relay in front of
/// it.
inline EnclosureSettings SimulatedAt(std::uint16_t port) {
  constexpr int kOpenSessionPrivilege = 16;
  EnclosureSettings settings;
  settings.host = "127.0.0.1";
  settings.port = port;
  settings.userName = "admin";
  settings.password = "sesame";  // The one that SimulatedSmm chooses unless it is told.
  settings.workaroundFlags = kOpenSessionPrivilege;
  return settings;
}

}  // namespace Tavrin
