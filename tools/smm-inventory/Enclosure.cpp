#include "tools/smm-inventory/Enclosure.h"

#include <exception>
#include <new>

#include "tools/smm-inventory/Password.h"

namespace Tavrin {
namespace {

constexpr unsigned long kNodesOfPlatform253 = 12;
constexpr std::int32_t kPlatform254 = 254;
constexpr std::int32_t kPsuSlotsOfPlatform254 = 2;

/// Shows the progress of the status read while the object lives, on whichever way it ends.
class ShownWait {
 public:
  ShownWait(Progress& progress, const std::string& name) : progress_(progress) {
    progress_.BeginWait(name);
  }
  ~ShownWait() { progress_.EndWait(); }
  ShownWait(const ShownWait&) = delete;
  ShownWait& operator=(const ShownWait&) = delete;

 private:
  Progress& progress_;
};

SMMInventory Construct(const TavrinConnection::ConnectionInfo& info, Progress& progress) {
  const ShownWait wait(progress, "reading the SMM's status");
  return SMMInventory(info);
}

}  // namespace

Enclosure::Enclosure(TavrinConnection::ConnectionInfo& info, Progress& progress)
    : progress_(progress),
      smmInfo_(info),
      inventory_(Construct(info, progress)),
      // Construction does not say whether its status read succeeded. Twelve nodes are never
      // assumed; otherwise a failed read is one whose last attempt the log complains about.
      statusWasRead_(inventory_.GetNodeNub() == kNodesOfPlatform253 || progress.Cause().empty()) {
  WipeText(info.password);
}

template <typename Value, typename Query>
QueryResult<Value> Enclosure::Ask(Query query) {
  QueryResult<Value> result;
  if (isUnreachable_) {
    result.status = StatusCode::NotConnected;
    result.cause = unreachableCause_;
    return result;
  }
  progress_.ForgetCause();
  try {
    result.status = query(result.value);
    result.cause = progress_.Cause();
  } catch (const std::bad_alloc&) {
    result.status = kExceptionStatus;
    result.cause = "the answer was shorter than the bytes that lead it, or memory ran out";
  } catch (const std::exception& exception) {
    result.status = kExceptionStatus;
    result.cause = Standalone::EscapeControlBytes(exception.what());
  }
  if (result.status == StatusCode::NotConnected && !statusWasRead_) {
    isUnreachable_ = true;
    unreachableCause_ = result.cause;
  }
  return result;
}

Identity Enclosure::ReadIdentity() {
  Identity identity;
  identity.machineType =
      Ask<std::string>([this](std::string& text) { return inventory_.GetSmmMT(text); });
  identity.serialNumber =
      Ask<std::string>([this](std::string& text) { return inventory_.GetSmmSN(text); });
  return identity;
}

Detection Enclosure::ReadDetection() {
  Detection detection;
  detection.generation = Ask<SMMIype>([this](SMMIype& type) {
    return smmInfo_.GetSmmType(type) == 0 ? StatusCode::Success : StatusCode::NoUsableResult;
  });
  detection.status = ReadStatus();
  detection.nodeCount = ReadNodeCount(detection.status);
  return detection;
}

QueryResult<SMMStatus> Enclosure::ReadStatus() {
  return Ask<SMMStatus>([this](SMMStatus& status) {
    if (statusWasRead_ && inventory_.GetNodeNub() != kNodesOfPlatform253) {
      status.platformId = kPlatform254;
      status.psuSlotCount = kPsuSlotsOfPlatform254;
      return StatusCode::Success;
    }
    const ShownWait wait(progress_, "counting the PSU slots");
    const int result = inventory_.GetSMMStatus(status);
    // A success that leaves the record as passed is one of a cut answer.
    return status.psuSlotCount == 0 ? StatusCode::NoUsableResult : result;
  });
}

QueryResult<unsigned long> Enclosure::ReadNodeCount(const QueryResult<SMMStatus>& status) {
  // Without a status the library assumes the nodes of platform 254, which is then nothing to report
  // as read.
  if (statusWasRead_ ||
      (status.status == StatusCode::Success && status.value.platformId == kPlatform254)) {
    return {inventory_.GetNodeNub(), StatusCode::Success, ""};
  }
  const bool changed = status.status == StatusCode::Success;
  return {0, changed ? StatusCode::NoUsableResult : status.status,
          changed ? "the first status read failed" : status.cause};
}

}  // namespace Tavrin
