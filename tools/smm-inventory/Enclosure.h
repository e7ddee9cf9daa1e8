#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/ConnectionInfo.h"
#include "platform/SMMInfo.h"
#include "tools/smm-inventory/Progress.h"
#include "tools/smm-inventory/PsuSelection.h"

namespace Tavrin {

/// The status of a query that an exception of the library ended; it stands beside StatusCode.
constexpr int kExceptionStatus = -1;

/// What one query gave.
template <typename Value>
struct QueryResult {
  Value value{};  ///< Holds something exactly when the status is Success, unless said otherwise.
  int status = StatusCode::Success;
  std::string cause;  ///< Why it failed, for people; may be empty.
};

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
/// from and no other. Once the SMM turned out not to be reachable, no query tries again; each
/// tells what the first one met.
class Enclosure {
 public:
  /// Detects the SMM's generation, then constructs the library's object with it, so that both go by
  /// the same one; that blocks for at least 18 seconds. The password in `info` is wiped afterwards,
  /// also when the library throws. `progress` outlives the enclosure.
  Enclosure(TavrinConnection::ConnectionInfo& info, Progress& progress);

  /// Asked first, this is what notices that the SMM is not reachable.
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
  std::vector<QueryResult<Value>> AskEachNode(Query query);
  template <typename Value>
  QueryResult<Value> Detected(Value value) const;
  [[nodiscard]] QueryResult<SMMIype> Generation() const;
  QueryResult<std::size_t> ReadPsuSlotCount();
  std::int32_t PlatformId();
  PsuSelection PredictSelection(int psu);

  Progress& progress_;
  QueryResult<SMMIype> generation_;
  SMMInventory inventory_;
  std::string statusFailure_;  ///< Why construction read no status; empty when it did.
  std::optional<QueryResult<std::vector<PSUStatus>>> psuStatus_;
  bool isUnreachable_ = false;
  std::string unreachableCause_;
};

}  // namespace Tavrin
