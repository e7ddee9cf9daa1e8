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
///
/// The settings' copy of the password is wiped with this. The library's object has one of its own
/// while it lives, which it does not wipe.
class Enclosure {
 public:
  explicit Enclosure(const EnclosureSettings& settings);
  ~Enclosure();
  Enclosure(const Enclosure&) = delete;
  Enclosure& operator=(const Enclosure&) = delete;

  /// Makes one pass: finds out the generation, constructs the library's object where there is none
  /// (which blocks for at least 18 seconds), and asks for the parts. A part that was asked for is
  /// in the reading also when it failed, and says why; a query that fails hides no other. Where
  /// nobody answers, the user is refused or no generation is told, the reading holds `failure`
  /// alone.
  ///
  /// Once the SMM refused the user, or was lost before the library's construction had read its
  /// status, no query of the pass tries again; each tells what the first one met. An SMM that is
  /// lost later is tried by each query, for as long as the settings allow. What depends on the
  /// platform of a second-generation SMM is not asked where that is not known, since the answer
  /// could be read as something else.
  ///
  /// With a wrong password each pass is one failed login, of which controllers forgive a few: who
  /// reads again and again stops at FailureCause::UserNameRefused and PasswordRefused.
  ///
  /// The observer is the caller's and is used until this returns. Exceptions of the library's
  /// construction, and of the observer as it says, end the pass; the next one constructs anew.
  Reading Read(const std::vector<Part>& parts, Observer& observer);

  /// Selects PSU `psu`, 1 to 9, in a pass that holds detection and selection. Blocks for 18 seconds
  /// longer when the SMM does not acknowledge.
  Reading SelectPsu(int psu, Observer& observer);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Tavrin
