#ifndef TESTS_MUTANTS_SWITCH_H
#define TESTS_MUTANTS_SWITCH_H

// Stands in front of every source of a switched copy, see switching.py.

#include <cstdlib>

/// Whether the mutant with this number is on: the one that the environment variable MUTANT names,
/// or none without it.
inline bool mutant(int number) {
  static const int chosen = [] {
    const char* value = std::getenv("MUTANT");
    return value == nullptr ? -1 : std::atoi(value);
  }();
  return number == chosen;
}

/// The value behind this one, of the same type.
template <typename Number>
constexpr Number increased(Number value) {
  return static_cast<Number>(value + 1);
}

#endif
