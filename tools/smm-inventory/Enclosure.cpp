#include "tools/smm-inventory/Enclosure.h"

#include <exception>
#include <new>

#include "tools/smm-inventory/Password.h"

namespace Tavrin {
namespace {

constexpr unsigned long kNodesOfPlatform253 = 12;
constexpr std::int32_t kPlatform253 = 253;
constexpr std::int32_t kPlatform254 = 254;

/// Shows the progress of repeated attempts while the object lives, on whichever way it ends.
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

/// Why construction read no status; empty when it did. Construction does not say so itself. Twelve
/// nodes are never assumed; otherwise a failed read is one whose last attempt the log complains
/// about.
std::string StatusFailure(SMMInventory& inventory, const Progress& progress) {
  return inventory.GetNodeNub() == kNodesOfPlatform253 ? "" : progress.Cause();
}

}  // namespace

Enclosure::Enclosure(TavrinConnection::ConnectionInfo& info, Progress& progress)
    : progress_(progress),
      smmInfo_(info),
      inventory_(Construct(info, progress)),
      statusFailure_(StatusFailure(inventory_, progress)) {
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
    result.cause =
        "the answer was shorter than the bytes that lead it, as a refusal is, or memory ran out";
  } catch (const std::exception& exception) {
    result.status = kExceptionStatus;
    result.cause = Standalone::EscapeControlBytes(exception.what());
  }
  if (result.status == StatusCode::NotConnected && !statusFailure_.empty()) {
    isUnreachable_ = true;
    unreachableCause_ = result.cause;
  }
  return result;
}

template <typename Value, typename Query>
std::vector<QueryResult<Value>> Enclosure::AskEachNode(Query query) {
  std::vector<QueryResult<Value>> results;
  for (unsigned long node = 1; node <= inventory_.GetNodeNub(); ++node) {
    results.push_back(Ask<Value>([&](Value& value) { return query(node, value); }));
  }
  return results;
}

template <typename Value>
QueryResult<Value> Enclosure::Detected(Value value) const {
  // Without a status the library assumes platform 254, which is then nothing to report as read.
  if (statusFailure_.empty()) {
    return {value, StatusCode::Success, ""};
  }
  if (isUnreachable_) {
    return {{}, StatusCode::NotConnected, unreachableCause_};
  }
  return {{}, StatusCode::NoUsableResult, statusFailure_};
}

std::int32_t Enclosure::PlatformId() {
  return inventory_.GetNodeNub() == kNodesOfPlatform253 ? kPlatform253 : kPlatform254;
}

const QueryResult<SMMIype>& Enclosure::ReadGeneration() {
  if (!generation_) {
    generation_ = Ask<SMMIype>([this](SMMIype& type) {
      return smmInfo_.GetSmmType(type) == 0 ? StatusCode::Success : StatusCode::NoUsableResult;
    });
  }
  return *generation_;
}

QueryResult<std::size_t> Enclosure::ReadPsuSlotCount() {
  const QueryResult<std::vector<PSUStatus>>& psuStatus = ReadPsuStatus();
  if (psuStatus.value.empty()) {
    return {0, psuStatus.status, psuStatus.cause};
  }
  return Detected(psuStatus.value.size());
}

Detection Enclosure::ReadDetection() {
  Detection detection;
  detection.psuSlotCount = ReadPsuSlotCount();
  detection.generation = ReadGeneration();
  detection.platformId = Detected(PlatformId());
  detection.nodeCount = Detected(inventory_.GetNodeNub());
  return detection;
}

Identity Enclosure::ReadIdentity() {
  Identity identity;
  identity.machineType =
      Ask<std::string>([this](std::string& text) { return inventory_.GetSmmMT(text); });
  identity.serialNumber =
      Ask<std::string>([this](std::string& text) { return inventory_.GetSmmSN(text); });
  identity.firmwareVersion =
      Ask<std::string>([this](std::string& text) { return inventory_.GetSmmVersion(text); });
  identity.name =
      Ask<std::string>([this](std::string& text) { return inventory_.GetSmmName(text); });
  return identity;
}

QueryResult<ChassisPowerCon> Enclosure::ReadChassisPower() {
  return Ask<ChassisPowerCon>(
      [this](ChassisPowerCon& power) { return inventory_.GetChassisPowerConsumption(power); });
}

QueryResult<ChassisPowerCap> Enclosure::ReadPowerCaps() {
  return Ask<ChassisPowerCap>(
      [this](ChassisPowerCap& caps) { return inventory_.GetChassisPowerCap(caps); });
}

std::vector<QueryResult<NodeStatus>> Enclosure::ReadNodeStatus() {
  return AskEachNode<NodeStatus>([this](unsigned long node, NodeStatus& status) {
    return inventory_.GetNodeStatus(node, status);
  });
}

std::vector<QueryResult<ChassisPowerCon>> Enclosure::ReadNodePower() {
  return AskEachNode<ChassisPowerCon>([this](unsigned long node, ChassisPowerCon& power) {
    return inventory_.GetNodePowerConsumption(node, power);
  });
}

QueryResult<std::vector<PSUFanSpeed>> Enclosure::ReadPsuFans() {
  return Ask<std::vector<PSUFanSpeed>>(
      [this](std::vector<PSUFanSpeed>& fans) { return inventory_.GetPSUFanSpeed(fans); });
}

QueryResult<std::vector<PSUFwInfo>> Enclosure::ReadPsuFirmware() {
  return Ask<std::vector<PSUFwInfo>>(
      [this](std::vector<PSUFwInfo>& firmware) { return inventory_.GetPSUFwInfo(firmware); });
}

const QueryResult<std::vector<PSUStatus>>& Enclosure::ReadPsuStatus() {
  if (!psuStatus_) {
    psuStatus_ = Ask<std::vector<PSUStatus>>(
        [this](std::vector<PSUStatus>& status) { return inventory_.GetPSUStatus(status); });
  }
  return *psuStatus_;
}

QueryResult<PsuSelection> Enclosure::SelectPsu(int psu) {
  const QueryResult<SMMIype>& generation = ReadGeneration();
  const PsuSelection selection =
      generation.status == StatusCode::Success
          ? PredictPsuSelection(psu, generation.value, PlatformId())
          : PsuSelection{psu, std::nullopt, "not known: the SMM's generation was not detected"};
  QueryResult<PsuSelection> result = Ask<PsuSelection>([&](PsuSelection&) {
    const ShownWait wait(progress_, "selecting the PSU");
    return inventory_.SelectPSU(psu);
  });
  result.value = selection;
  return result;
}

}  // namespace Tavrin
