#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "reading/Asker.h"
#include "reading/LibraryObject.h"
#include "reading/LoginGuard.h"
#include "reading/Observer.h"
#include "reading/Reading.h"

namespace Tavrin {

/// What one pass asks. Which operation of the library gives which part of a reading, its source
/// alone knows.
class Inquiry {
 public:
  /// All three outlive the inquiry.
  Inquiry(LibraryObject& object, LoginGuard& guard, Observer& observer)
      : object_(object), observer_(observer), asker_(object, guard) {}

  /// Asked first, this notices an SMM that was lost since its generation was found out.
  Detection ReadDetection(const Query<SMMIype>& generation);

  /// Fills that part of the reading, one of kPartsToAskFor; of any other nothing happens. Blocks
  /// for as long as the part's queries take.
  void Read(Part part, Reading& reading);

  /// Asks the SMM to select PSU `psu`, 1 to 9. The status of the query is the acknowledgement; the
  /// value is filled whatever it is.
  Query<PsuSelection> SelectPsu(int psu);

  /// Whether the status was read and every query since was let in.
  [[nodiscard]] bool WasAlwaysConnected() const { return asker_.WasAlwaysConnected(); }

 private:
  [[nodiscard]] Query<Number> Detected(std::int64_t number) const;
  [[nodiscard]] std::int64_t PlatformId() const;
  const Query<std::vector<PSUStatus>>& PsuStatusRecords();
  Query<Number> PsuSlotCount();

  LibraryObject& object_;
  Observer& observer_;
  Asker asker_;

  /// Tells how many PSU slots there are, too. Is asked for once.
  std::optional<Query<std::vector<PSUStatus>>> psuStatus_;
};

}  // namespace Tavrin
