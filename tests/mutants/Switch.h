#ifndef TESTS_MUTANTS_SWITCH_H
#define TESTS_MUTANTS_SWITCH_H

// Stands in front of every source of a switched copy, see switching.py.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

/// What the environment variable holds, or null without it. A program that a test starts with an
/// environment of its own finds it in that of the first process, which is the test program.
inline const char* mutantsVariable(const char* name) {
  if (const char* value = std::getenv(name)) {
    return value;
  }
  static char environment[1U << 16U];
  const int file = open("/proc/1/environ", O_RDONLY | O_CLOEXEC);
  const ssize_t size = read(file, environment, sizeof environment - 1);
  close(file);
  const std::size_t length = std::strlen(name);
  for (char* entry = environment; entry < environment + size; entry += std::strlen(entry) + 1) {
    if (std::strncmp(entry, name, length) == 0 && entry[length] == '=') {
      return entry + length + 1;
    }
  }
  return nullptr;
}

/// A byte for each mutant's number in the file that MUTANTS_REACHED names, or null without it. A
/// mapping takes what is written however the process ends.
inline volatile char* mapReachedMutants() {
  constexpr std::size_t longerThanTheFile = 1U << 20U;
  const char* path = mutantsVariable("MUTANTS_REACHED");
  const int file = path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
  void* bytes = mmap(nullptr, longerThanTheFile, PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  return bytes == MAP_FAILED ? nullptr : static_cast<char*>(bytes);
}

/// Whether the mutant with this number is on: the one that MUTANT names, or none without it.
inline bool mutant(int number) {
  static const int chosen = [] {
    const char* value = mutantsVariable("MUTANT");
    return value == nullptr ? -1 : std::atoi(value);
  }();
  static volatile char* const reached = mapReachedMutants();
  if (reached != nullptr) {
    reached[number] = 1;
  }
  return number == chosen;
}

/// The value behind this one, of the same type.
template <typename Number>
constexpr Number increased(Number value) {
  return static_cast<Number>(value + 1);
}

#endif
