#include "reading/EnclosureSettings.h"

#include "reading/Wiping.h"

namespace Tavrin {

EnclosureSettings::~EnclosureSettings() { WipeText(password); }

}  // namespace Tavrin
