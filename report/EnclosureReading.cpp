#include "report/EnclosureReading.h"

#include "support/EscapeControlBytes.h"

namespace Tavrin {

std::string ShownName(const EnclosureReading& enclosure) {
  return EscapeControlBytes(enclosure.name.empty() ? enclosure.reading.address : enclosure.name);
}

}  // namespace Tavrin
