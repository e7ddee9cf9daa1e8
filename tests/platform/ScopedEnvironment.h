#pragma once

#include <cstdlib>
#include <string>
#include <utility>

namespace Tavrin {

/// An environment variable that is set while this lives. For tests that have one thread.
class ScopedEnvironment {
 public:
  ScopedEnvironment(std::string name, const std::string& value) : name_(std::move(name)) {
    setenv(name_.c_str(), value.c_str(), 1);
  }
  ~ScopedEnvironment() { unsetenv(name_.c_str()); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  std::string name_;
};

}  // namespace Tavrin
