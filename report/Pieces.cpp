#include "report/Pieces.h"

namespace Tavrin {

std::string NoEnclosure(const EnclosureReading& /*enclosure*/, const ReportContext& /*context*/) {
  return "";
}

std::string NoEndOfSeveral(const std::vector<EnclosureReading>& /*enclosures*/,
                           const ReportContext& /*context*/) {
  return "";
}

std::string EachPart(const Reading& reading,
                     std::string (*part)(const Reading& reading, Part part)) {
  std::string pieces;
  for (const Part each : kEveryPart) {
    pieces += part(reading, each);
  }
  return pieces;
}

}  // namespace Tavrin
