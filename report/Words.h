#pragma once

#include <cstdint>
#include <string>

#include "reading/Reading.h"

namespace Tavrin {

// Values as programs are given them: flags, numbers and texts as they are, and a state as a word in
// lower camel case. The SMM's own text stands beside it. The words are part of the formats: one
// that is changed is a new version of the document.

/// What has no word of its own stands for itself: a flag, a number without a unit, a text with the
/// SMM's bytes.
inline bool Word(bool flag) { return flag; }
inline std::int64_t Word(std::int64_t number) { return number; }
inline std::string Word(const std::string& text) { return text; }

/// "first", "second", or "unknown" for a type that is neither generation.
std::string Word(SMMIype generation);

/// "on", "off", "noPermission", "powerFault" or "fault".
std::string Word(NodePowerState state);

/// "half", "full" or "other".
std::string Word(NodeWidth width);

/// "normal", "abnormal", "notPresent" or "unknown".
std::string Word(PsuFanState state);

}  // namespace Tavrin
