#include "reading/Unread.h"

#include <cstddef>

#include "reading/Decode.h"

namespace Tavrin {
namespace {

/// As many as the library assumes where no status was read.
constexpr std::int64_t kAssumedNodes = 4;

/// The parts of one reading, each filled where it is empty.
class Filler {
 public:
  Filler(const QueryOutcome& why, Reading& reading)
      : why_(why),
        reading_(reading),
        nodes_(Count(reading.detection->nodeCount, kAssumedNodes)),
        slots_(Count(reading.detection->psuSlotCount, 0)) {}

  void Fill(Part part);

 private:
  static std::size_t Count(const Query<Number>& query, std::int64_t otherwise) {
    return static_cast<std::size_t>(query.value.value.value_or(otherwise));
  }

  template <typename Type>
  [[nodiscard]] Query<Type> Failed(const Type& value = {}) const {
    return {why_, value};
  }

  template <typename Type>
  void Add(std::optional<Type>& part, const Type& failed) const {
    part = part ? part : failed;
  }

  template <typename Type>
  void AddEach(std::optional<std::vector<Query<Type>>>& part) const {
    Add(part, std::vector<Query<Type>>(nodes_, Failed<Type>()));
  }

  const QueryOutcome& why_;
  Reading& reading_;
  const std::size_t nodes_;
  const std::size_t slots_;
};

void Filler::Fill(Part part) {
  switch (part) {
    case Part::Identity:
      Add(reading_.identity, {Failed<Text>(), Failed<Text>(), Failed<Text>(), Failed<Text>()});
      break;
    case Part::ChassisPower:
      Add(reading_.chassisPower, Failed<PowerReadings>());
      break;
    case Part::PowerCaps:
      Add(reading_.powerCaps, Failed<PowerCaps>());
      break;
    case Part::NodeStatus:
      AddEach(reading_.nodeStatus);
      break;
    case Part::NodePower:
      AddEach(reading_.nodePower);
      break;
    case Part::PsuFans:
      Add(reading_.psuFans, Failed(DecodeFans({}, slots_, Absence::QueryFailed)));
      break;
    case Part::PsuFirmware:
      Add(reading_.psuFirmware, Failed(DecodeFirmware({}, slots_, Absence::QueryFailed)));
      break;
    case Part::PsuStatus:
      Add(reading_.psuStatus, Failed(UnreadFlags(slots_)));
      break;
    case Part::Detection:
    case Part::PsuSelection:
      break;
  }
}

void FillFailure(const QueryOutcome& why, Reading& reading) {
  reading.failure = reading.failure ? reading.failure : why;
}

}  // namespace

void FillUnread(const std::vector<Part>& parts, const QueryOutcome& why, Reading& reading) {
  if (!reading.detection) {
    FillFailure(why, reading);
    return;
  }
  Filler filler(why, reading);
  for (const Part part : parts) {
    filler.Fill(part);
  }
}

void FillUnselected(int psu, const QueryOutcome& why, Reading& reading) {
  if (!reading.detection) {
    FillFailure(why, reading);
  } else if (!reading.psuSelection) {
    reading.psuSelection = {why, {psu, false, {}, "not known to have been sent"}};
  }
}

}  // namespace Tavrin
