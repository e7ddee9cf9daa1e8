#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "report/HtmlFormat.h"
#include "tests/report/ExampleReading.h"
#include "tests/report/HealthyReading.h"

namespace Tavrin {
namespace {

/// Most enclosures of a fleet are well; some have a fault, and one could not be reached.
Reading ReadingOf(std::size_t index) {
  if (index == 40) {
    return FailedReading();
  }
  Reading reading = index % 9 == 4 ? HealthyReadingOfNine() : HealthyReading();
  if (index % 21 == 7) {
    reading.nodeStatus->at(1) = Good(DecodeNode({"Power Fault", "Half", "1", 0}));
  }
  if (index % 17 == 5) {
    reading.psuStatus->value.at(2).present = {false, "not present", Absence::None};
  }
  return reading;
}

std::vector<EnclosureReading> Fleet(std::size_t size) {
  std::vector<EnclosureReading> fleet;
  for (std::size_t index = 0; index < size; ++index) {
    const std::string number = (index < 9 ? "0" : "") + std::to_string(index + 1);
    Reading reading = ReadingOf(index);
    reading.address = "rack" + number + ":623";
    fleet.push_back({reading, index, "rack" + number, "row " + std::to_string(index / 16 + 1)});
  }
  return fleet;
}

}  // namespace
}  // namespace Tavrin

/// Prints the page of a fleet of 64 enclosures.
int main() {
  const std::string page = Tavrin::HtmlFormat().several.end(Tavrin::Fleet(64), {"0.1.0"});
  return std::fwrite(page.data(), 1, page.size(), stdout) == page.size() ? 0 : 1;
}
