#include "tools/smm-inventory/Enclosure.h"

#include <exception>
#include <new>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "tools/smm-inventory/Password.h"

namespace Tavrin {
namespace {

constexpr int kSelectableOnEveryPlatform = 2;
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

/// Asks the library, or its platform, once. An exception becomes a status, and what the log
/// complains about meanwhile the cause.
template <typename Value, typename Query>
QueryResult<Value> AskOnce(Progress& progress, Query query) {
  QueryResult<Value> result;
  progress.ForgetCause();
  try {
    result.status = query(result.value);
    result.cause = progress.Cause();
  } catch (const std::bad_alloc&) {
    result.status = kExceptionStatus;
    result.cause =
        "the answer was shorter than the bytes that lead it, as a refusal is, or memory ran out";
  } catch (const std::exception& exception) {
    result.status = kExceptionStatus;
    result.cause = Standalone::EscapeControlBytes(exception.what());
  }
  return result;
}

QueryResult<SMMIype> DetectGeneration(const TavrinConnection::ConnectionInfo& info,
                                      Progress& progress) {
  QueryResult<SMMIype> generation = AskOnce<SMMIype>(progress, [&info](SMMIype& type) {
    return SMMInfo(info).GetSmmType(type) == 0 ? StatusCode::Success : StatusCode::NoUsableResult;
  });
  if (generation.status != StatusCode::Success) {
    generation.cause += generation.cause.empty() ? "" : "; ";
    generation.cause += "the library tried again by itself and does not tell with what result";
  }
  return generation;
}

/// One wait for both steps, so that a host which answers neither is complained about once.
SMMInventory DetectAndConstruct(TavrinConnection::ConnectionInfo& info, Progress& progress,
                                QueryResult<SMMIype>& generation) {
  const WipedAtEnd password(info.password);
  const ShownWait wait(progress, "reading the SMM's status");
  generation = DetectGeneration(info, progress);
  if (generation.status == StatusCode::Success) {
    Standalone::SetGlobalConfigValue("SMM_TYPE", generation.value);
  }
  progress.ForgetCause();
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
      inventory_(DetectAndConstruct(info, progress, generation_)),
      statusFailure_(StatusFailure(inventory_, progress)) {}

template <typename Value, typename Query>
QueryResult<Value> Enclosure::Ask(Query query) {
  if (isUnreachable_) {
    return {{}, StatusCode::NotConnected, unreachableCause_};
  }
  QueryResult<Value> result = AskOnce<Value>(progress_, query);
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

QueryResult<SMMIype> Enclosure::Generation() const {
  // Where no query gets through, that is why the detection did not either.
  if (generation_.status != StatusCode::Success && isUnreachable_) {
    return {{}, StatusCode::NotConnected, unreachableCause_};
  }
  return generation_;
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
  detection.generation = Generation();
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

PsuSelection Enclosure::PredictSelection(int psu) {
  if (generation_.status != StatusCode::Success) {
    return {psu, std::nullopt, "not known: the SMM's generation was not detected"};
  }
  // The library may know a platform from an answer that it could not use otherwise.
  if (generation_.value == SMM_SECOND_GENERATION && psu > kSelectableOnEveryPlatform &&
      !statusFailure_.empty()) {
    return {psu, std::nullopt, "not known: the SMM's status was not read"};
  }
  return PredictPsuSelection(psu, generation_.value, PlatformId());
}

QueryResult<PsuSelection> Enclosure::SelectPsu(int psu) {
  QueryResult<PsuSelection> result = Ask<PsuSelection>([&](PsuSelection&) {
    const ShownWait wait(progress_, "selecting the PSU");
    return inventory_.SelectPSU(psu);
  });
  const bool isWithoutConnection =
      result.status != StatusCode::Success && result.cause.rfind("connect failed", 0) == 0;
  result.value = isWithoutConnection
                     ? PsuSelection{psu, std::nullopt, "not sent: no connection could be opened"}
                     : PredictSelection(psu);
  return result;
}

}  // namespace Tavrin
