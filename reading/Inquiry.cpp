#include "reading/Inquiry.h"

#include <cstddef>
#include <string>

#include "reading/Decode.h"
#include "reading/LineListener.h"
#include "reading/SelectionPrediction.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

constexpr unsigned long kNodesOfPlatform253 = 12;
constexpr std::int64_t kPlatform254 = 254;

constexpr const char* kUnsentSelection = "nothing was sent";
constexpr const char* kUnansweredSelection =
    "not known to have been sent: the last attempt got no answer";

/// An operation of the library that fills a record.
template <typename Record>
using Operation = int (SMMInventory::*)(Record&);

/// An operation of the library that fills the record of one node.
template <typename Record>
using NodeOperation = int (SMMInventory::*)(unsigned long node, Record&);

template <typename Type>
Query<Type> QueryOf(const QueryOutcome& outcome, const Type& value) {
  return {outcome, value};
}

template <typename Record, typename Decode>
auto Decoded(const QueryOutcome& outcome, const Record& record, Decode decode) {
  using Type = decltype(decode(record));
  return QueryOf(outcome, outcome.Succeeded() ? decode(record) : Type{});
}

/// Asker::Ask() or Asker::AskByPlatform().
using Way = QueryOutcome (Asker::*)(const Asker::Call&);

template <typename Record, typename Decode>
auto AskOne(Asker& asker, Way way, Operation<Record> operation, Decode decode) {
  Record record{};
  const QueryOutcome outcome =
      (asker.*way)([&](SMMInventory& inventory) { return (inventory.*operation)(record); });
  return Decoded(outcome, record, decode);
}

/// One query a node, of as many nodes as the library assumes.
template <typename Record, typename Decode>
auto AskEachNode(Asker& asker, unsigned long nodeCount, NodeOperation<Record> operation,
                 Decode decode) {
  std::vector<Query<decltype(decode(Record{}))>> nodes;
  for (unsigned long node = 1; node <= nodeCount; ++node) {
    Record record{};
    const QueryOutcome outcome =
        asker.Ask([&](SMMInventory& inventory) { return (inventory.*operation)(node, record); });
    nodes.push_back(Decoded(outcome, record, decode));
  }
  return nodes;
}

/// One query for all slots. What it gave before it failed is kept.
template <typename Record, typename Decode>
auto AskEachSlot(Asker& asker, std::size_t slotCount, Operation<std::vector<Record>> operation,
                 Decode decode) {
  std::vector<Record> records;
  const QueryOutcome outcome =
      asker.Ask([&](SMMInventory& inventory) { return (inventory.*operation)(records); });
  const Absence untold = outcome.Succeeded() ? Absence::SlotUnanswered : Absence::QueryFailed;
  return QueryOf(outcome, decode(records, slotCount, untold));
}

Identity AskIdentity(Asker& asker) {
  return {AskOne(asker, &Asker::Ask, &SMMInventory::GetSmmMT, TextOf),
          AskOne(asker, &Asker::Ask, &SMMInventory::GetSmmSN, TextOf),
          AskOne(asker, &Asker::Ask, &SMMInventory::GetSmmVersion, TextOf),
          AskOne(asker, &Asker::Ask, &SMMInventory::GetSmmName, TextOf)};
}

SlotQuery<PsuFlags> DecodeStatus(const Query<std::vector<PSUStatus>>& status) {
  return QueryOf(status,
                 status.Succeeded() ? DecodeFlags(status.value) : UnreadFlags(status.value.size()));
}

}  // namespace

void Inquiry::Read(Part part, Reading& reading) {
  const unsigned long nodes = object_.inventory.GetNodeNub();
  // The detection, which comes before every part, has asked for the status of the PSUs already.
  const std::size_t slots = PsuStatusRecords().value.size();
  switch (part) {
    case Part::Identity:
      reading.identity = AskIdentity(asker_);
      break;
    case Part::ChassisPower:
      reading.chassisPower = AskOne(asker_, &Asker::AskByPlatform,
                                    &SMMInventory::GetChassisPowerConsumption, DecodePower);
      break;
    case Part::PowerCaps:
      reading.powerCaps =
          AskOne(asker_, &Asker::AskByPlatform, &SMMInventory::GetChassisPowerCap, DecodeCaps);
      break;
    case Part::NodeStatus:
      reading.nodeStatus = AskEachNode(asker_, nodes, &SMMInventory::GetNodeStatus, DecodeNode);
      break;
    case Part::NodePower:
      reading.nodePower =
          AskEachNode(asker_, nodes, &SMMInventory::GetNodePowerConsumption, DecodePower);
      break;
    case Part::PsuFans:
      reading.psuFans = AskEachSlot(asker_, slots, &SMMInventory::GetPSUFanSpeed, DecodeFans);
      break;
    case Part::PsuFirmware:
      reading.psuFirmware = AskEachSlot(asker_, slots, &SMMInventory::GetPSUFwInfo, DecodeFirmware);
      break;
    case Part::PsuStatus:
      reading.psuStatus = DecodeStatus(PsuStatusRecords());
      break;
    case Part::Detection:
    case Part::PsuSelection:
      break;
  }
}

/// What the status read tells. Without one the library assumes platform 254, which is then nothing
/// to report as read.
Query<Number> Inquiry::Detected(std::int64_t number) const {
  if (object_.statusRead.Succeeded()) {
    return QueryOf(object_.statusRead, NumberOf(number));
  }
  QueryOutcome outcome = object_.statusRead;
  if (const Cause* const obstacle = asker_.Obstacle()) {
    outcome.status = StatusCode::NotConnected;
    outcome.cause = *obstacle;
  }
  return QueryOf(outcome, Number{});
}

/// The library keeps the id to itself, but one platform alone has 12 nodes.
std::int64_t Inquiry::PlatformId() const {
  return object_.inventory.GetNodeNub() == kNodesOfPlatform253 ? kPlatform253 : kPlatform254;
}

const Query<std::vector<PSUStatus>>& Inquiry::PsuStatusRecords() {
  if (!psuStatus_) {
    psuStatus_.emplace();
    static_cast<QueryOutcome&>(*psuStatus_) = asker_.Ask(
        [this](SMMInventory& inventory) { return inventory.GetPSUStatus(psuStatus_->value); });
  }
  return *psuStatus_;
}

Query<Number> Inquiry::PsuSlotCount() {
  const Query<std::vector<PSUStatus>>& psuStatus = PsuStatusRecords();
  if (psuStatus.value.empty()) {
    return QueryOf(psuStatus, Number{});
  }
  return Detected(static_cast<std::int64_t>(psuStatus.value.size()));
}

Detection Inquiry::ReadDetection(const Query<SMMIype>& generation) {
  Detection detection;
  detection.psuSlotCount = PsuSlotCount();
  detection.generation = QueryOf(generation, GenerationOf(generation.value));
  detection.platformId = Detected(PlatformId());
  detection.nodeCount = Detected(static_cast<std::int64_t>(object_.inventory.GetNodeNub()));
  return detection;
}

Query<PsuSelection> Inquiry::SelectPsu(int psu) {
  Query<PsuSelection> query;
  bool isAsked = false;
  const auto select = [&](SMMInventory& inventory) {
    const ToldWait wait(observer_, "selecting the PSU");
    isAsked = true;
    query.value = PredictPsuSelection(psu, object_.generation, PlatformId());
    return inventory.SelectPSU(psu);
  };
  static_cast<QueryOutcome&>(query) =
      DependsOnPlatform(psu) ? asker_.AskByPlatform(select) : asker_.Ask(select);
  const bool isAnswered = query.cause.kind == FailureCause::None;
  if (!isAsked || !isAnswered) {
    query.value = {psu, false, {}, isAsked ? kUnansweredSelection : kUnsentSelection};
  }
  return query;
}

}  // namespace Tavrin
