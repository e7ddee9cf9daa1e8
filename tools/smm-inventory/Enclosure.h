#pragma once

#include <string>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/ConnectionInfo.h"
#include "platform/SMMInfo.h"
#include "tools/smm-inventory/Progress.h"

namespace Tavrin {

/// The status of a query that an exception of the library ended; it stands beside StatusCode.
constexpr int kExceptionStatus = -1;

/// What one query gave.
template <typename Value>
struct QueryResult {
  Value value{};  ///< Holds something exactly when the status is Success.
  int status = StatusCode::Success;
  std::string cause;  ///< Why it failed, for people; may be empty.
};

struct Identity {
  QueryResult<std::string> machineType;
  QueryResult<std::string> serialNumber;
};

struct Detection {
  QueryResult<SMMIype> generation;
  QueryResult<SMMStatus> status;
  QueryResult<unsigned long> nodeCount;
};

/// One enclosure, asked through its SMM. An exception of the library ends the query that it came
/// from and no other. Once the SMM turned out not to be reachable, no query tries again; each
/// tells what the first one met.
class Enclosure {
 public:
  /// Connects, which blocks for at least 18 seconds; the password in `info` is wiped afterwards.
  /// `progress` outlives the enclosure.
  Enclosure(TavrinConnection::ConnectionInfo& info, Progress& progress);

  Identity ReadIdentity();

  /// Blocks for another 18 seconds when what the construction found out leaves the number of PSU
  /// slots open.
  Detection ReadDetection();

 private:
  template <typename Value, typename Query>
  QueryResult<Value> Ask(Query query);
  QueryResult<SMMStatus> ReadStatus();
  QueryResult<unsigned long> ReadNodeCount(const QueryResult<SMMStatus>& status);

  Progress& progress_;
  SMMInfo smmInfo_;
  SMMInventory inventory_;
  bool statusWasRead_;
  bool isUnreachable_ = false;
  std::string unreachableCause_;
};

}  // namespace Tavrin
