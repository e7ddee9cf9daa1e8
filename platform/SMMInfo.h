#pragma once

#include <cstdint>
#include <memory>

#include "platform/ConnectionInfo.h"

namespace Tavrin {

/// The generation of an SMM. Values other than these may occur; such an SMM is read as one of the
/// first, but for GetPSUFwInfo(), which fails where a PSU answers.
enum SMMIype : std::int32_t {
  /// Its answers begin with what was asked for.
  SMM_FIRST_GENERATION = 0,

  /// It puts bytes in front of some answers: the platform id, or what the request said.
  SMM_SECOND_GENERATION = 1,
};

/// Finds out what kind of SMM stands behind a connection.
class SMMInfo {
 public:
  /// Sends nothing yet. The settings are those of the object that asks, and outlive this one.
  explicit SMMInfo(const TavrinConnection::ConnectionInfo& info);
  ~SMMInfo();

  /// Stores the generation in `type` and returns 0; returns another value, with `type` left as
  /// passed, when it could not be found out. May ask the SMM for that, with connections of its own,
  /// and then blocks until it answered or stayed silent for as long as the implementation waits.
  int GetSmmType(SMMIype& type);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Tavrin
