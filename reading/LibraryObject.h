#pragma once

#include <memory>
#include <optional>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/ConnectionInfo.h"
#include "platform/SMMInfo.h"
#include "reading/Generation.h"
#include "reading/LoginGuard.h"
#include "reading/Observer.h"
#include "reading/Query.h"

namespace Tavrin {

/// The library's object for one SMM, and what its construction told.
struct LibraryObject {
  SMMInventory inventory;

  /// By which it reads every answer, for as long as it lives.
  SMMIype generation;

  /// That of the SMM when this was constructed, as far as told.
  std::optional<Layout> layout;

  /// Fails when the status told no platform, which is then assumed. Its times are those of the
  /// construction.
  QueryOutcome statusRead;

  /// Whether the library would go by an assumption where the answer can be read as something else.
  [[nodiscard]] bool IsPlatformNeededAndUnknown() const {
    return generation == SMM_SECOND_GENERATION && !statusRead.Succeeded();
  }
};

/// Constructs the library's object with the generation given, so that both go by the same one; that
/// blocks for at least 18 seconds. Does so once more where a second-generation SMM did not tell its
/// platform, unless it refused the user or is gone. What the construction throws passes.
std::unique_ptr<LibraryObject> ConstructObject(const TavrinConnection::ConnectionInfo& info,
                                               SMMIype generation, const LoginGuard& guard,
                                               Observer& observer);

}  // namespace Tavrin
