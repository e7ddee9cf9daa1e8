#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "reading/LibraryObject.h"
#include "reading/LoginGuard.h"
#include "reading/Observer.h"
#include "reading/Reading.h"

namespace Tavrin {

/// The queries of one pass, each made through the library's object. An exception of the library
/// ends the query that it came from and no other. What becomes of the rest once the SMM refused the
/// user or was lost, or where its platform is not known, Enclosure says.
class Inquiry {
 public:
  /// All three outlive the inquiry.
  Inquiry(LibraryObject& object, LoginGuard& guard, Observer& observer)
      : object_(object), guard_(guard), observer_(observer) {}

  /// Asked first, this notices an SMM that was lost since its generation was found out.
  Detection ReadDetection(const Query<SMMIype>& generation);

  Identity ReadIdentity();
  Query<PowerReadings> ReadChassisPower();
  Query<PowerCaps> ReadPowerCaps();

  // One query a node, of as many nodes as the library assumes.
  std::vector<Query<NodeState>> ReadNodeStatus();
  std::vector<Query<PowerReadings>> ReadNodePower();

  // The status of the PSUs tells how many slots there are. It is asked for once.
  SlotQuery<PsuFans> ReadPsuFans();
  SlotQuery<PsuFirmware> ReadPsuFirmware();
  SlotQuery<PsuFlags> ReadPsuStatus();

  /// The status of the query is the acknowledgement; the value is filled whatever it is.
  Query<PsuSelection> SelectPsu(int psu);

  /// Whether the status was read and every query since was let in.
  [[nodiscard]] bool WasAlwaysConnected() const;

 private:
  template <typename Record, typename Call>
  Query<Record> Ask(Call call);
  template <typename Record, typename Call>
  Query<Record> AskByPlatform(Call call);
  template <typename Value, typename Record, typename Call, typename Decode>
  std::vector<Query<Value>> AskEachNode(Call call, Decode decode);
  template <typename Record, typename Call, typename Decode>
  auto AskEachSlot(Call call, Decode decode);
  Query<Text> AskText(int (SMMInventory::*call)(std::string&));
  [[nodiscard]] Query<Number> Detected(std::int64_t number) const;
  Query<Number> PsuSlotCount();
  std::int64_t PlatformId();
  const Query<std::vector<PSUStatus>>& PsuStatusRecords();
  [[nodiscard]] const Cause* Obstacle() const;

  LibraryObject& object_;
  LoginGuard& guard_;
  Observer& observer_;
  std::optional<Query<std::vector<PSUStatus>>> psuStatus_;
  std::optional<Cause> loss_;  ///< Why the SMM counts as lost; empty as long as it does not.
  bool isEachConnected_ = true;
};

}  // namespace Tavrin
