#pragma once

#include <vector>

#include "reading/Query.h"
#include "reading/Reading.h"

namespace Tavrin {

/// Completes a reading whose pass nobody waits for any more. `why` is the outcome of each query
/// that was not made, and is not one of success.
///
/// Of `parts`, what is not in the reading comes there as a part that failed, so that nothing that
/// was asked for is missing without a word: with as many nodes and PSU slots as the detection
/// tells, 4 nodes and no slot where it tells none. What is there stays. Without a detection no part
/// is added: `failure` says why, unless it does already.
void FillUnread(const std::vector<Part>& parts, const QueryOutcome& why, Reading& reading);

/// The same for a pass that was to select PSU `psu`, 1 to 9. Whether the request was sent is then
/// not known, and counts as no.
void FillUnselected(int psu, const QueryOutcome& why, Reading& reading);

}  // namespace Tavrin
