#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/ConnectionInfo.h"
#include "platform/SMMInfo.h"
#include "tools/smm-inventory/LoginGuard.h"
#include "tools/smm-inventory/Progress.h"
#include "tools/smm-inventory/PsuSelection.h"
#include "tools/smm-inventory/QueryResult.h"

namespace Tavrin {

struct Identity {
  QueryResult<std::string> machineType;
  QueryResult<std::string> serialNumber;
  QueryResult<std::string> firmwareVersion;
  QueryResult<std::string> name;
};

struct Detection {
  QueryResult<SMMIype> generation;
  QueryResult<std::int32_t> platformId;
  QueryResult<std::size_t> psuSlotCount;
  QueryResult<unsigned long> nodeCount;
};

/// One enclosure, asked through its SMM. An exception of the library ends the query that it came
/// from and no other. Once the SMM refused the user, or was lost before its status was read, no
/// query tries again; each tells what the first one met. What depends on the platform of a
/// second-generation SMM is not asked where that is not known, since the answer could be read as
/// something else.
class Enclosure {
 public:
  /// Constructs the library's object with the generation given, so that both go by the same one;
  /// that blocks for at least 18 seconds. Does so once more where a second-generation SMM did not
  /// tell its platform. `progress` and `guard` outlive the enclosure.
  Enclosure(const TavrinConnection::ConnectionInfo& info, SMMIype generation, Progress& progress,
            LoginGuard& guard);

  /// Asked first, this notices an SMM that was lost since its generation was found out.
  Detection ReadDetection();

  Identity ReadIdentity();
  QueryResult<ChassisPowerCon> ReadChassisPower();
  QueryResult<ChassisPowerCap> ReadPowerCaps();

  // One result a node, of as many nodes as the library assumes.
  std::vector<QueryResult<NodeStatus>> ReadNodeStatus();
  std::vector<QueryResult<ChassisPowerCon>> ReadNodePower();

  // One record for each PSU slot that answered well, also when a later slot ended the query.
  QueryResult<std::vector<PSUFanSpeed>> ReadPsuFans();
  QueryResult<std::vector<PSUFwInfo>> ReadPsuFirmware();

  /// One record for each PSU slot, in ascending order; asks the SMM the first time only. After
  /// UnusableAnswer there are as many records, of no content.
  const QueryResult<std::vector<PSUStatus>>& ReadPsuStatus();

  /// The status of the query is the acknowledgement; the value is filled whatever it is. Blocks for
  /// 18 seconds when the SMM does not acknowledge.
  QueryResult<PsuSelection> SelectPsu(int psu);

 private:
  template <typename Value, typename Query>
  QueryResult<Value> Ask(Query query);
  template <typename Value, typename Query>
  QueryResult<Value> AskByPlatform(Query query);
  template <typename Value, typename Query>
  std::vector<QueryResult<Value>> AskEachNode(Query query);
  template <typename Value>
  QueryResult<Value> Detected(Value value) const;
  [[nodiscard]] const Cause* Obstacle() const;
  [[nodiscard]] bool IsPlatformNeededAndUnknown() const;
  QueryResult<std::size_t> ReadPsuSlotCount();
  std::int32_t PlatformId();

  Progress& progress_;
  LoginGuard& guard_;
  SMMIype generation_;
  std::optional<Cause> statusFailure_;  ///< Why construction read no status; empty when it did.
  SMMInventory inventory_;
  std::optional<QueryResult<std::vector<PSUStatus>>> psuStatus_;
  std::optional<Cause> loss_;  ///< Why the SMM counts as lost; empty as long as it does not.
};

}  // namespace Tavrin
