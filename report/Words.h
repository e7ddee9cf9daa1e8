#pragma once

#include <cstdint>
#include <string>

#include "reading/Reading.h"

namespace Tavrin {

// Values as programs are given them: flags, numbers and texts as they are, and a state as a word in
// lower camel case. The SMM's own text stands beside it.

inline bool Word(bool flag) { return flag; }
inline std::int64_t Word(std::int64_t number) { return number; }
inline std::string Word(const std::string& text) { return text; }

std::string Word(SMMIype generation);  ///< "unknown" for a type that is neither generation.
std::string Word(NodePowerState state);
std::string Word(NodeWidth width);
std::string Word(PsuFanState state);

}  // namespace Tavrin
