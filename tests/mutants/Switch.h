#ifndef TESTS_MUTANTS_SWITCH_H
#define TESTS_MUTANTS_SWITCH_H

// Stands in front of every source of a switched copy, see switching.py.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

/// A byte for each mutant's number in the file that the environment variable MUTANTS_REACHED names,
/// or null without it. A mapping takes what is written however the process ends.
inline volatile char* mapReachedMutants() {
  const char* path = std::getenv("MUTANTS_REACHED");
  const int file = path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
  if (file < 0) {
    return nullptr;
  }
  struct stat status = {};
  fstat(file, &status);
  void* bytes =
      mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  return bytes == MAP_FAILED ? nullptr : static_cast<char*>(bytes);
}

/// Whether the mutant with this number is on: the one that the environment variable MUTANT names,
/// or none without it.
inline bool mutant(int number) {
  static const int chosen = [] {
    const char* value = std::getenv("MUTANT");
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
