#pragma once

#include <functional>

#include "tools/smm-inventory/Enclosure.h"
#include "tools/smm-inventory/Options.h"
#include "tools/smm-inventory/Section.h"

namespace Tavrin {

/// Carries out what the command line asks of the enclosure, and hands over each section as soon as
/// its queries are done. What kind of enclosure it is comes first, whatever is asked.
void ReadSections(Enclosure& enclosure, const Task& task,
                  const std::function<void(const Section&)>& take);

}  // namespace Tavrin
