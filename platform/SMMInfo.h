#pragma once

#include <cstdint>
#include <memory>

#include "platform/ConnectionInfo.h"

namespace Tavrin {

/// The generation of an SMM. Values other than these may occur.
enum SMMIype : std::int32_t {
  SMM_FIRST_GENERATION = 0,
  SMM_SECOND_GENERATION = 1,
};

/// Finds out what kind of SMM stands behind a connection.
class SMMInfo {
 public:
  explicit SMMInfo(const TavrinConnection::ConnectionInfo& info);
  ~SMMInfo();

  /// Stores the generation in `type` and returns 0; returns another value, with `type` left as
  /// passed, when it could not be found out.
  int GetSmmType(SMMIype& type);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Tavrin
