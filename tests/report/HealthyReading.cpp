#include "tests/report/HealthyReading.h"

#include <cstdint>
#include <string>
#include <vector>

#include "tests/report/ExampleReading.h"

namespace Tavrin {
namespace {

/// The example with as many PSUs, all of which are well.
Reading HealthyReadingOf(std::size_t psuCount) {
  std::vector<PSUFanSpeed> fans;
  std::vector<PSUFwInfo> firmware;
  for (std::size_t slot = 1; slot <= psuCount; ++slot) {
    const std::string number = std::to_string(slot);
    fans.push_back({"PSU" + number, "1000", "30", "1100", "31", "Normal"});
    firmware.push_back({"PSU" + number, "PSUABCD1.01", "1.0a", number, "Power Supply " + number});
  }
  Reading reading = ExampleReading();
  reading.detection->platformId = Good(NumberOf(253));
  reading.detection->psuSlotCount = Good(NumberOf(static_cast<std::int64_t>(psuCount)));
  for (Query<NodeState>& node : *reading.nodeStatus) {
    node = Good(DecodeNode({"Power ON", "Half", "1", 0}));
  }
  reading.psuFans = Good(DecodeFans(fans, psuCount, Absence::SlotUnanswered));
  reading.psuFirmware = Good(DecodeFirmware(firmware, psuCount, Absence::SlotUnanswered));
  reading.psuStatus = Good(DecodeFlags(
      std::vector<PSUStatus>(psuCount, {"not trigger", "not trigger", "present", "power good"})));
  return reading;
}

}  // namespace

Reading HealthyReading() { return HealthyReadingOf(3); }

Reading HealthyReadingOfNine() { return HealthyReadingOf(9); }

}  // namespace Tavrin
