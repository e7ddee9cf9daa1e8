#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "module/smm/smm_inventory/InventoryRecords.h"
#include "module/smm/smm_inventory/impl/SmmStatus.h"
#include "platform/ConnectionInfo.h"
#include "platform/IpmiClient.h"
#include "platform/SMMInfo.h"

namespace Tavrin {

/// The inventory object of one SMM. It is a ConnectionInfo, so that it can be handed wherever one
/// is expected. SMMInventory.h tells what each query does; an answer is judged, and bytes are
/// counted, as it says there.
class SMMInventoryImpl : public TavrinConnection::ConnectionInfo {
 public:
  explicit SMMInventoryImpl(const TavrinConnection::ConnectionInfo& info);

  /// Sends one request over a connection of its own; the only way to the SMM. Returns
  /// StatusCode::Success when a connection was opened, with both outputs as the client filled
  /// them, whether or not an answer came; ConnectionKindNotAdmitted, with both outputs as passed;
  /// or NotConnected, with an empty response and completion code 0xFF.
  int SendIpmiCmd(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                  std::uint8_t& completionCode);

  int GetSmmMT(std::string& machineType);
  int GetSmmSN(std::string& serialNumber);
  int GetSmmVersion(std::string& version);
  int GetSmmName(std::string& name);
  int GetChassisPowerConsumption(ChassisPowerCon& out);
  int GetChassisPowerCap(ChassisPowerCap& out);
  int GetNodePowerConsumption(unsigned long node, ChassisPowerCon& out);
  int GetPSUFanSpeed(std::vector<PSUFanSpeed>& out);
  int GetPSUFwInfo(std::vector<PSUFwInfo>& out);
  int GetPSUStatus(std::vector<PSUStatus>& out);
  int SelectPSUImpl(int psu);
  int GetNodeStatus(unsigned long node, NodeStatus& out);
  int GetSMMStatusImp(SMMStatus& out);

  /// Each reads one register of the PSU in every slot and stores its text under the slot number;
  /// the entry of a slot that gave no good answer stays as passed. A failed exchange ends the
  /// operation with its status, and the entries of earlier slots stay. GetPSUFwInfo joins the
  /// three.
  int GetPSUVersion(std::map<int, std::string>& versions);
  int GetPSUManufacture(std::map<int, std::string>& manufacturers);
  int GetPSUPosition(std::map<int, std::string>& positions);

  // Set by the constructor and never changed afterwards.
  SMMIype smmType = SMM_FIRST_GENERATION;
  SMMStatus smmStatus{kPlatform254, kDefaultPsuSlotCount};
  std::uint64_t psuSlotCount = kDefaultPsuSlotCount;  ///< PSU slots are numbered 1 to this count.
  std::uint64_t nodeCount = kDefaultNodeCount;  ///< Compute nodes are numbered 1 to this count.

 private:
  struct Answer;

  [[nodiscard]] bool IsSecondGeneration() const { return smmType == SMM_SECOND_GENERATION; }

  /// Sends the request and, on a second-generation SMM, removes the first `prefixLength` bytes of
  /// the answer before anybody judges it. Throws std::bad_alloc when it holds fewer, as a refusal
  /// without data does. Returns the status of the exchange.
  int SendAndTrim(const IPMICOMMAND& request, std::size_t prefixLength, Answer& answer);

  /// Sends the request up to six times, with a pause after each, until the SMM acknowledges it with
  /// an answer of exactly one byte and completion code 0. Calls `announce` with the number of each
  /// attempt. Returns whether it was acknowledged; `answer` holds the last answer in either case.
  template <typename Announce>
  bool SendUntilAcknowledged(const IPMICOMMAND& request, Answer& answer, Announce announce);

  [[nodiscard]] bool HasNode(unsigned long node) const { return node >= 1 && node <= nodeCount; }
  [[nodiscard]] std::uint8_t ChassisSelector() const;
  [[nodiscard]] std::vector<std::uint8_t> PsuSelectorData(int psu) const;
  [[nodiscard]] IPMICOMMAND PsuRegisterRead(std::uint64_t slot, std::uint8_t readCount,
                                            std::uint8_t psuRegister) const;

  /// Removes the bytes that a second-generation SMM puts in front of an answer. Throws
  /// std::bad_alloc when the response holds fewer than `count`.
  void TrimSmm2Response(std::vector<std::uint8_t>& response, std::size_t count);
};

}  // namespace Tavrin
