#include "tools/smm-inventory/Enclosure.h"

#include <exception>
#include <new>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/StatusCode.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

constexpr int kSelectableOnEveryPlatform = 2;
constexpr unsigned long kNodesOfPlatform253 = 12;
constexpr std::int32_t kPlatform253 = 253;
constexpr std::int32_t kPlatform254 = 254;
constexpr std::size_t kShortestStatusWithPlatform = 14;

constexpr const char* kUnsentSelection = "nothing was sent";
constexpr const char* kUnansweredSelection =
    "not known to have been sent: the last attempt got no answer";

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

/// The library runs out of memory, or says so of an answer that lacks its leading bytes.
Cause CauseOfBadAlloc() {
  Cause cause = CauseOf(Standalone::GetLastExchange());
  if (cause.kind == FailureCause::None && cause.completionCode == 0) {
    cause.words += ", which is shorter than what leads an answer, or memory ran out";
  }
  return cause;
}

/// Asks the library once. An exception becomes a status.
template <typename Value, typename Query>
QueryResult<Value> AskOnce(Query query) {
  QueryResult<Value> result;
  try {
    result.status = query(result.value);
    if (result.status != StatusCode::Success) {
      result.cause = CauseOf(Standalone::GetLastExchange());
    }
  } catch (const std::bad_alloc&) {
    result.status = kExceptionStatus;
    result.cause = CauseOfBadAlloc();
  } catch (const std::exception& exception) {
    result.status = kExceptionStatus;
    result.cause.words = Standalone::EscapeControlBytes(exception.what());
  }
  return result;
}

/// Why the status read that a construction ends with told no platform; empty when it did. The
/// library does not say so itself.
std::optional<Cause> StatusFailure() {
  const Standalone::LastExchange& exchange = Standalone::GetLastExchange();
  const bool isUsable = exchange.isAnswered && exchange.completionCode == 0 &&
                        exchange.answerLength >= kShortestStatusWithPlatform;
  return isUsable ? std::nullopt : std::optional<Cause>(CauseOf(exchange));
}

SMMInventory Construct(const TavrinConnection::ConnectionInfo& info, SMMIype generation,
                       Progress& progress, std::optional<Cause>& statusFailure) {
  const ShownWait wait(progress, "reading the SMM's status");
  Standalone::SetGlobalConfigValue("SMM_TYPE", generation);
  SMMInventory inventory(info);
  statusFailure = StatusFailure();
  return inventory;
}

/// Whether nobody is there any more, whom six attempts did not find.
bool IsGone(const Cause& cause) {
  return cause.kind == FailureCause::Silence || cause.kind == FailureCause::Unreachable;
}

}  // namespace

Enclosure::Enclosure(const TavrinConnection::ConnectionInfo& info, SMMIype generation,
                     Progress& progress, LoginGuard& guard)
    : progress_(progress),
      guard_(guard),
      generation_(generation),
      inventory_(Construct(info, generation, progress, statusFailure_)) {
  if (IsPlatformNeededAndUnknown() && !guard_.Refusal() && !IsGone(*statusFailure_)) {
    inventory_ = Construct(info, generation, progress, statusFailure_);
  }
}

const Cause* Enclosure::Obstacle() const {
  if (guard_.Refusal()) {
    return &*guard_.Refusal();
  }
  return loss_ ? &*loss_ : nullptr;
}

bool Enclosure::IsPlatformNeededAndUnknown() const {
  return generation_ == SMM_SECOND_GENERATION && statusFailure_.has_value();
}

template <typename Value, typename Query>
QueryResult<Value> Enclosure::Ask(Query query) {
  if (const Cause* const obstacle = Obstacle()) {
    return {{}, StatusCode::NotConnected, *obstacle};
  }
  QueryResult<Value> result = AskOnce<Value>(query);
  guard_.Look();
  if (guard_.Refusal() && result.status != StatusCode::Success) {
    // Of several exchanges, those after the refusal were not tried any more.
    result.cause = *guard_.Refusal();
  }
  if (result.status == StatusCode::NotConnected && statusFailure_) {
    loss_ = result.cause;
  }
  return result;
}

/// On a second-generation SMM the request for the chassis of one platform is that for a node of the
/// other.
template <typename Value, typename Query>
QueryResult<Value> Enclosure::AskByPlatform(Query query) {
  if (Obstacle() == nullptr && IsPlatformNeededAndUnknown()) {
    QueryResult<Value> unasked{{}, StatusCode::NoUsableResult, *statusFailure_};
    unasked.cause.missing = "platform";
    return unasked;
  }
  return Ask<Value>(query);
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
  if (!statusFailure_) {
    return {value, StatusCode::Success, {}};
  }
  if (const Cause* const obstacle = Obstacle()) {
    return {{}, StatusCode::NotConnected, *obstacle};
  }
  return {{}, StatusCode::NoUsableResult, *statusFailure_};
}

std::int32_t Enclosure::PlatformId() {
  return inventory_.GetNodeNub() == kNodesOfPlatform253 ? kPlatform253 : kPlatform254;
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
  detection.generation.value = generation_;
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
  return AskByPlatform<ChassisPowerCon>(
      [this](ChassisPowerCon& power) { return inventory_.GetChassisPowerConsumption(power); });
}

QueryResult<ChassisPowerCap> Enclosure::ReadPowerCaps() {
  return AskByPlatform<ChassisPowerCap>(
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
  const PsuSelection selection = PredictPsuSelection(psu, generation_, PlatformId());
  bool isAsked = false;
  const auto select = [&](PsuSelection& /*value*/) {
    const ShownWait wait(progress_, "selecting the PSU");
    isAsked = true;
    return inventory_.SelectPSU(psu);
  };
  QueryResult<PsuSelection> result = psu > kSelectableOnEveryPlatform
                                         ? AskByPlatform<PsuSelection>(select)
                                         : Ask<PsuSelection>(select);
  const bool isAnswered = result.cause.kind == FailureCause::None;
  if (isAsked && isAnswered) {
    result.value = selection;
  } else {
    result.value = {psu, false, std::nullopt, isAsked ? kUnansweredSelection : kUnsentSelection};
  }
  return result;
}

}  // namespace Tavrin
