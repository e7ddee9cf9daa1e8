#pragma once

#include <memory>
#include <vector>

#include "reading/EnclosureSettings.h"
#include "reading/Observer.h"
#include "reading/Reading.h"

namespace Tavrin {

/// One enclosure, read through its SMM as often as asked. Passes of different enclosures run at
/// once on different threads, each with its own settings; those of one enclosure run one at a time.
/// Nothing of one pass lives on in the next but the library's object, as long as the SMM keeps its
/// generation, platform and PSU slots and was not lost, and what the IPMI client has learnt of a
/// slow controller.
class Enclosure {
 public:
  explicit Enclosure(const EnclosureSettings& settings);
  ~Enclosure();
  Enclosure(const Enclosure&) = delete;
  Enclosure& operator=(const Enclosure&) = delete;

  /// Makes one pass: finds out the generation, constructs the library's object where there is none
  /// (which blocks for at least 18 seconds), and asks for the parts. A query that fails hides no
  /// other. Once the SMM refused the user, or was lost before its status was read, no query tries
  /// again; each tells what the first one met. What depends on the platform of a second-generation
  /// SMM is not asked where that is not known, since the answer could be read as something else.
  /// With a wrong password each pass is one failed login, of which controllers forgive a few: who
  /// reads again and again stops at FailureCause::UserNameRefused and PasswordRefused.
  Reading Read(const std::vector<Part>& parts, Observer& observer);

  /// Selects PSU `psu`, 1 to 9, in a pass that holds detection and selection. Blocks for 18 seconds
  /// longer when the SMM does not acknowledge.
  Reading SelectPsu(int psu, Observer& observer);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Tavrin
