#include "reading/Inquiry.h"

#include <exception>
#include <new>
#include <string>

#include "platform/standalone/logger/LogControl.h"
#include "reading/Decode.h"
#include "reading/LineListener.h"
#include "reading/SelectionPrediction.h"
#include "reading/Stopwatch.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

constexpr int kSelectableOnEveryPlatform = 2;
constexpr unsigned long kNodesOfPlatform253 = 12;
constexpr std::int64_t kPlatform253 = 253;
constexpr std::int64_t kPlatform254 = 254;

constexpr const char* kUnsentSelection = "nothing was sent";
constexpr const char* kUnansweredSelection =
    "not known to have been sent: the last attempt got no answer";

/// The library runs out of memory, or says so of an answer that lacks its leading bytes.
Cause CauseOfBadAlloc() {
  Cause cause = CauseOf(Standalone::GetLastExchange());
  if (cause.kind == FailureCause::None && cause.completionCode == 0) {
    cause.words += ", which is shorter than what leads an answer, or memory ran out";
  }
  return cause;
}

/// Asks the library once. An exception becomes a status.
template <typename Record, typename Call>
Query<Record> AskOnce(Call call) {
  Query<Record> query;
  const Stopwatch stopwatch;
  try {
    query.status = call(query.value);
    if (!query.Succeeded()) {
      query.cause = CauseOf(Standalone::GetLastExchange());
    }
  } catch (const std::bad_alloc&) {
    query.status = kExceptionStatus;
    query.cause = CauseOfBadAlloc();
  } catch (const std::exception& exception) {
    query.status = kExceptionStatus;
    query.cause.words = Standalone::EscapeControlBytes(exception.what());
  }
  stopwatch.Stamp(query);
  return query;
}

/// A query that is not made.
template <typename Value>
Query<Value> Unasked(int status, const Cause& cause) {
  Query<Value> query;
  query.status = status;
  query.cause = cause;
  return query;
}

template <typename Value>
Query<Value> With(const QueryOutcome& outcome, const Value& value) {
  Query<Value> query;
  static_cast<QueryOutcome&>(query) = outcome;
  query.value = value;
  return query;
}

template <typename Record, typename Decode>
auto Decoded(const Query<Record>& query, Decode decode) {
  using Value = decltype(decode(query.value));
  return With(query, query.Succeeded() ? decode(query.value) : Value{});
}

}  // namespace

const Cause* Inquiry::Obstacle() const {
  if (guard_.Refusal()) {
    return &*guard_.Refusal();
  }
  return loss_ ? &*loss_ : nullptr;
}

bool Inquiry::WasAlwaysConnected() const {
  return object_.statusRead.Succeeded() && isEachConnected_ && !guard_.Refusal();
}

template <typename Record, typename Call>
Query<Record> Inquiry::Ask(Call call) {
  if (const Cause* const obstacle = Obstacle()) {
    return Unasked<Record>(StatusCode::NotConnected, *obstacle);
  }
  Query<Record> query = AskOnce<Record>(call);
  guard_.Look();
  if (guard_.Refusal() && !query.Succeeded()) {
    // Of several exchanges, those after the refusal were not tried any more.
    query.cause = *guard_.Refusal();
  }
  if (query.status == StatusCode::NotConnected) {
    isEachConnected_ = false;
    if (!object_.statusRead.Succeeded()) {
      loss_ = query.cause;
    }
  }
  return query;
}

/// On a second-generation SMM the request for the chassis of one platform is that for a node of the
/// other.
template <typename Record, typename Call>
Query<Record> Inquiry::AskByPlatform(Call call) {
  if (Obstacle() == nullptr && object_.IsPlatformNeededAndUnknown()) {
    auto unasked = Unasked<Record>(StatusCode::NoUsableResult, object_.statusRead.cause);
    unasked.cause.missing = "platform";
    return unasked;
  }
  return Ask<Record>(call);
}

template <typename Value, typename Record, typename Call, typename Decode>
std::vector<Query<Value>> Inquiry::AskEachNode(Call call, Decode decode) {
  std::vector<Query<Value>> nodes;
  for (unsigned long node = 1; node <= object_.inventory.GetNodeNub(); ++node) {
    nodes.push_back(
        Decoded(Ask<Record>([&](Record& record) { return call(node, record); }), decode));
  }
  return nodes;
}

template <typename Record, typename Call, typename Decode>
auto Inquiry::AskEachSlot(Call call, Decode decode) {
  const std::size_t slotCount = PsuStatusRecords().value.size();
  const Query<std::vector<Record>> query = Ask<std::vector<Record>>(call);
  const Absence untold = query.Succeeded() ? Absence::SlotUnanswered : Absence::QueryFailed;
  return With(query, decode(query.value, slotCount, untold));
}

Query<Text> Inquiry::AskText(int (SMMInventory::*call)(std::string&)) {
  return Decoded(
      Ask<std::string>([&](std::string& text) { return (object_.inventory.*call)(text); }), TextOf);
}

/// What the status read tells. Without one the library assumes platform 254, which is then nothing
/// to report as read.
Query<Number> Inquiry::Detected(std::int64_t number) const {
  if (object_.statusRead.Succeeded()) {
    return With(object_.statusRead, NumberOf(number));
  }
  QueryOutcome outcome = object_.statusRead;
  if (const Cause* const obstacle = Obstacle()) {
    outcome.status = StatusCode::NotConnected;
    outcome.cause = *obstacle;
  }
  return With(outcome, Number{});
}

std::int64_t Inquiry::PlatformId() {
  return object_.inventory.GetNodeNub() == kNodesOfPlatform253 ? kPlatform253 : kPlatform254;
}

const Query<std::vector<PSUStatus>>& Inquiry::PsuStatusRecords() {
  if (!psuStatus_) {
    psuStatus_ = Ask<std::vector<PSUStatus>>(
        [this](std::vector<PSUStatus>& status) { return object_.inventory.GetPSUStatus(status); });
  }
  return *psuStatus_;
}

Query<Number> Inquiry::PsuSlotCount() {
  const Query<std::vector<PSUStatus>>& psuStatus = PsuStatusRecords();
  if (psuStatus.value.empty()) {
    return With(psuStatus, Number{});
  }
  return Detected(static_cast<std::int64_t>(psuStatus.value.size()));
}

Detection Inquiry::ReadDetection(const Query<SMMIype>& generation) {
  Detection detection;
  detection.psuSlotCount = PsuSlotCount();
  detection.generation = With(generation, GenerationOf(generation.value));
  detection.platformId = Detected(PlatformId());
  detection.nodeCount = Detected(static_cast<std::int64_t>(object_.inventory.GetNodeNub()));
  return detection;
}

Identity Inquiry::ReadIdentity() {
  Identity identity;
  identity.machineType = AskText(&SMMInventory::GetSmmMT);
  identity.serialNumber = AskText(&SMMInventory::GetSmmSN);
  identity.firmwareVersion = AskText(&SMMInventory::GetSmmVersion);
  identity.name = AskText(&SMMInventory::GetSmmName);
  return identity;
}

Query<PowerReadings> Inquiry::ReadChassisPower() {
  return Decoded(AskByPlatform<ChassisPowerCon>([this](ChassisPowerCon& power) {
                   return object_.inventory.GetChassisPowerConsumption(power);
                 }),
                 DecodePower);
}

Query<PowerCaps> Inquiry::ReadPowerCaps() {
  return Decoded(AskByPlatform<ChassisPowerCap>([this](ChassisPowerCap& caps) {
                   return object_.inventory.GetChassisPowerCap(caps);
                 }),
                 DecodeCaps);
}

std::vector<Query<NodeState>> Inquiry::ReadNodeStatus() {
  return AskEachNode<NodeState, NodeStatus>(
      [this](unsigned long node, NodeStatus& status) {
        return object_.inventory.GetNodeStatus(node, status);
      },
      DecodeNode);
}

std::vector<Query<PowerReadings>> Inquiry::ReadNodePower() {
  return AskEachNode<PowerReadings, ChassisPowerCon>(
      [this](unsigned long node, ChassisPowerCon& power) {
        return object_.inventory.GetNodePowerConsumption(node, power);
      },
      DecodePower);
}

SlotQuery<PsuFans> Inquiry::ReadPsuFans() {
  return AskEachSlot<PSUFanSpeed>(
      [this](std::vector<PSUFanSpeed>& fans) { return object_.inventory.GetPSUFanSpeed(fans); },
      DecodeFans);
}

SlotQuery<PsuFirmware> Inquiry::ReadPsuFirmware() {
  return AskEachSlot<PSUFwInfo>(
      [this](std::vector<PSUFwInfo>& firmware) { return object_.inventory.GetPSUFwInfo(firmware); },
      DecodeFirmware);
}

SlotQuery<PsuFlags> Inquiry::ReadPsuStatus() {
  const Query<std::vector<PSUStatus>>& status = PsuStatusRecords();
  return With(status,
              status.Succeeded() ? DecodeFlags(status.value) : UnreadFlags(status.value.size()));
}

Query<PsuSelection> Inquiry::SelectPsu(int psu) {
  bool isAsked = false;
  const auto select = [&](PsuSelection& selection) {
    const ToldWait wait(observer_, "selecting the PSU");
    isAsked = true;
    selection = PredictPsuSelection(psu, object_.generation, PlatformId());
    return object_.inventory.SelectPSU(psu);
  };
  Query<PsuSelection> query = psu > kSelectableOnEveryPlatform ? AskByPlatform<PsuSelection>(select)
                                                               : Ask<PsuSelection>(select);
  const bool isAnswered = query.cause.kind == FailureCause::None;
  if (!isAsked || !isAnswered) {
    query.value = {psu, false, {}, isAsked ? kUnansweredSelection : kUnsentSelection};
  }
  return query;
}

}  // namespace Tavrin
