#include "tools/smm-inventory/Reading.h"

#include "tools/smm-inventory/Describe.h"

namespace Tavrin {

void ReadSections(Enclosure& enclosure, const Task& task,
                  const std::function<void(const Section&)>& take) {
  const auto asks = [&task](Command command) {
    return task.command == command || task.command == Command::All;
  };
  take(DescribeDetection(enclosure.ReadDetection()));
  if (task.command == Command::SelectPsu) {
    take(DescribePsuSelection(enclosure.SelectPsu(task.psu)));
    return;
  }
  if (asks(Command::Identity)) {
    take(DescribeIdentity(enclosure.ReadIdentity()));
  }
  if (asks(Command::Power)) {
    take(DescribeChassisPower(enclosure.ReadChassisPower()));
  }
  if (asks(Command::Caps)) {
    take(DescribePowerCaps(enclosure.ReadPowerCaps()));
  }
  if (asks(Command::Nodes)) {
    take(DescribeNodeStatus(enclosure.ReadNodeStatus()));
  }
  if (asks(Command::Nodes) || asks(Command::Power)) {
    take(DescribeNodePower(enclosure.ReadNodePower()));
  }
  const std::size_t slotCount = enclosure.ReadPsuStatus().value.size();
  if (asks(Command::Fans)) {
    take(DescribePsuFans(enclosure.ReadPsuFans(), slotCount));
  }
  if (asks(Command::Psus)) {
    take(DescribePsuFirmware(enclosure.ReadPsuFirmware(), slotCount));
    take(DescribePsuStatus(enclosure.ReadPsuStatus()));
  }
}

}  // namespace Tavrin
