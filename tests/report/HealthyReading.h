#pragma once

#include "reading/Reading.h"

namespace Tavrin {

/// A whole pass over an enclosure of platform 253, with four of its nodes and three of its PSUs, in
/// which nothing is wrong.
Reading HealthyReading();

/// One with nine PSUs.
Reading HealthyReadingOfNine();

}  // namespace Tavrin
