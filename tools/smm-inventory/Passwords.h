#pragma once

#include <vector>

#include "fleet/Target.h"
#include "reading/EnclosureSettings.h"

namespace Tavrin {

/// How each target is asked, in their order, with the password that the user gives for it. One
/// source is asked once: each password file, the environment, and the prompt once for each user
/// name, with the number of enclosures that it is for. Throws UsageError where one gives none.
std::vector<EnclosureSettings> SettingsWithPasswords(const std::vector<Target>& targets);

}  // namespace Tavrin
