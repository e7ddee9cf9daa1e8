#pragma once

// Stands in front of every source of a switched copy, see switching.py.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#ifndef MUTANTS_ENVIRONMENT_OF_THE_TEST
#define MUTANTS_ENVIRONMENT_OF_THE_TEST "/proc/1/environ"
#endif

/// What the environment variable holds, or an empty text without it. A program that a test starts
/// with an environment of its own finds it in that of the test program, which in the sandbox is the
/// first process.
inline std::string mutantsVariable(const std::string& name) {
  if (const char* const value = std::getenv(name.c_str())) {
    return value;
  }
  std::string all(1U << 16U, '\0');
  const int file = open(MUTANTS_ENVIRONMENT_OF_THE_TEST, O_RDONLY | O_CLOEXEC);
  read(file, &all[1], all.size() - 2);
  close(file);
  const std::size_t at = all.find('\0' + name + '=');
  return at == std::string::npos ? "" : &all[at + name.size() + 2];
}

/// A byte for each mutant's number in the file that MUTANTS_REACHED names, or null without it. The
/// mapping is longer than the file, and takes what is written however the process ends.
inline volatile char* mapReachedMutants() {
  const int file = open(mutantsVariable("MUTANTS_REACHED").c_str(), O_RDWR | O_CLOEXEC);
  void* bytes = mmap(nullptr, 1U << 20U, PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  return bytes == MAP_FAILED ? nullptr : static_cast<char*>(bytes);
}

/// Whether the mutant with this number is on: the one that MUTANT names, or none without it.
inline bool mutant(int number) {
  static const int chosen = std::atoi(mutantsVariable("MUTANT").c_str());
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
