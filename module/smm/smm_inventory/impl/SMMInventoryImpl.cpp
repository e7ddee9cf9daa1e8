#include "module/smm/smm_inventory/impl/SMMInventoryImpl.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "module/smm/smm_inventory/StatusCode.h"
#include "module/smm/smm_inventory/impl/ByteText.h"
#include "module/smm/smm_inventory/impl/NodeStatus.h"
#include "module/smm/smm_inventory/impl/Power.h"
#include "module/smm/smm_inventory/impl/PsuFan.h"
#include "module/smm/smm_inventory/impl/PsuFirmware.h"
#include "module/smm/smm_inventory/impl/PsuStatus.h"
#include "module/smm/smm_inventory/impl/SmmIdentity.h"
#include "module/smm/smm_inventory/impl/SmmStatus.h"
#include "platform/GlobalConfig.h"
#include "platform/Log.h"

namespace Tavrin {
namespace {

constexpr unsigned int kError = 1;
constexpr unsigned int kWarning = 2;
constexpr unsigned int kProgress = 3;
constexpr unsigned int kDebug = 4;

constexpr const char* kSourcePath = "module/smm/smm_inventory/impl/SMMInventoryImpl";

// A macro, so that each line carries the number of the place that writes it, and so that nothing
// behind it is composed for a line that is not written. Numbers go into it as text, since the
// stream may follow the process's locale.
#define SMM_LOG(level)                   \
  if (Log::GetMinLogLevel() < (level)) { \
  } else                                 \
    Log((level), kSourcePath, __LINE__).Stream()

// What IpmiClient::connect() returns.
constexpr int kConnected = 0;
constexpr int kWorthRetrying = 3;

constexpr unsigned long kCipherSuite = 3;
constexpr int kDefaultConnectAttempts = 3;
constexpr std::uint8_t kNoAnswer = 0xFF;

// Made when the library is loaded: a literal would allocate in every exchange, and a static object
// of a function would take a lock. Never destroyed, because a thread may still be in an exchange
// while the process ends. Where there is no memory for it, the library cannot be loaded.
const std::string& MakeConnectAttemptsKey() noexcept {
  return *std::make_unique<std::string>("IPMI_CONNECT_RETRY_TIMES").release();
}
const std::string& connectAttemptsKey = MakeConnectAttemptsKey();

constexpr int kAcknowledgeAttempts = 6;
constexpr unsigned int kSecondsBetweenAttempts = 3;

constexpr std::uint8_t kOemNetworkFunction = 0x32;
constexpr std::uint8_t kPsuStatusCommand = 0x91;
constexpr std::uint8_t kPsuRegisterCommand = 0x92;
constexpr std::uint8_t kPowerCommand = 0x98;
constexpr std::uint8_t kPowerCapCommand = 0x9D;
constexpr std::uint8_t kPsuFanCommand = 0xA5;
constexpr std::uint8_t kNodeStatusCommand = 0xA7;
constexpr std::uint8_t kStatusCommand = 0xA8;  // holds the firmware version, too
constexpr std::uint8_t kIdentityCommand = 0xB0;
constexpr std::uint8_t kSelectPsuCommand = 0xF4;

constexpr std::uint8_t kApplicationNetworkFunction = 0x06;
constexpr std::uint8_t kMasterWriteReadCommand = 0x52;

constexpr std::uint8_t kIdentitySelector = 0x05;
constexpr std::uint8_t kMachineTypeItem = 0x00;
constexpr std::uint8_t kSerialNumberItem = 0x01;
constexpr std::uint8_t kNameItem = 0x0B;

constexpr std::uint8_t kChassisSelector = 0x05;
constexpr std::uint8_t kPlatform253ChassisSelector = 0x0D;

constexpr std::uint8_t kFirstSlotBus = 0x0F;
constexpr std::uint8_t kOtherSlotsBus = 0x0D;
constexpr std::uint8_t kPsuSlaveAddress = 0xD0;

// Registers of a PSU, and how many bytes are read of each.
constexpr std::uint8_t kPsuVersionRegister = 0xFC;
constexpr std::uint8_t kPsuVersionReadCount = 2;
constexpr std::uint8_t kPsuManufacturerRegister = 0x99;  // PMBus MFR_ID
constexpr std::uint8_t kPsuManufacturerReadCount = 5;
constexpr std::uint8_t kPsuPositionRegister = 0xF0;
constexpr std::uint8_t kPsuPositionReadCount = 32;

// How many bytes the second generation puts in front of an answer.
constexpr std::size_t kIdentityPrefixLength = 2;
constexpr std::size_t kVersionPrefixLength = 1;
constexpr std::size_t kPowerPrefixLength = 1;
constexpr std::size_t kNodeStatusPrefixLength = 1;

// The highest PSU that can be selected. It does not follow the number of slots.
constexpr int kHighestPsuFirstGeneration = 3;
constexpr int kHighestPsuPlatform253 = 9;
constexpr int kHighestPsuPlatform254 = 2;
constexpr std::uint8_t kSelectPsuLead = 0x00;

bool AdmitsIpmi(std::int32_t connectionKind) { return connectionKind == 1 || connectionKind == 7; }

// Connects with as many attempts as are allowed, without a pause between them. Returns what the
// last attempt returned, and counts no attempt at all as a failure worth retrying.
int Connect(IpmiClient& client, int attempts) {
  int result = kWorthRetrying;
  for (int attempt = 0; attempt < attempts && result == kWorthRetrying; ++attempt) {
    result = client.connect();
  }
  return result;
}

// Lasts that long however many signals are caught meanwhile, and leaves errno as it was. After a
// signal, sleep() returns only the whole seconds that are left, hence 0 in the last one, and tells
// nothing but by errno that it was cut short.
void Pause(unsigned int seconds) {
  const int errorBefore = errno;
  timespec end{};
  clock_gettime(CLOCK_MONOTONIC, &end);
  end.tv_sec += seconds;
  errno = 0;
  if (sleep(seconds) != 0 || errno == EINTR) {
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
    }
  }
  errno = errorBefore;
}

IPMICOMMAND OemRequest(std::uint8_t command, std::vector<std::uint8_t> data) {
  IPMICOMMAND request;
  request.netFn = kOemNetworkFunction;
  request.cmd = command;
  request.data = std::move(data);
  return request;
}

// "1 time", "2 times", and so on.
std::string Times(int count) { return std::to_string(count) + (count == 1 ? " time" : " times"); }

}  // namespace

struct SMMInventoryImpl::Answer {
  std::vector<std::uint8_t> bytes;
  std::uint8_t completionCode = 0;

  [[nodiscard]] bool IsUsable(std::size_t minimumLength) const {
    return completionCode == 0 && bytes.size() >= minimumLength;
  }
};

SMMInventoryImpl::SMMInventoryImpl(const TavrinConnection::ConnectionInfo& info)
    : TavrinConnection::ConnectionInfo(info) {
  // An SMM whose generation cannot be found out is taken for what smmType holds already.
  SMMInfo smmInfo(*this);
  smmInfo.GetSmmType(smmType);

  if (GetSMMStatusImp(smmStatus) == StatusCode::Success) {
    SMM_LOG(kDebug) << " GetSMMStatus success, platformId =0x"
                    << Hex(static_cast<std::uint32_t>(smmStatus.platformId));
    psuSlotCount = static_cast<std::uint64_t>(smmStatus.psuSlotCount);
    nodeCount = NodeCountOf(smmStatus.platformId);
  }
}

int SMMInventoryImpl::SendIpmiCmd(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                                  std::uint8_t& completionCode) {
  if (!AdmitsIpmi(connectionKind)) {
    return StatusCode::ConnectionKindNotAdmitted;
  }

  IpmiClient client(address, userName, password, std::to_string(port), kCipherSuite);
  const int error =
      Connect(client, GetGlobalConfigValue(connectAttemptsKey, kDefaultConnectAttempts));
  if (error != kConnected) {
    response.clear();
    completionCode = kNoAnswer;
    SMM_LOG(kError) << "connect failed with error:" << std::to_string(error);
    return StatusCode::NotConnected;
  }

  // Whether the answer is of use, or came at all, is for the query to judge.
  client.send(request, response, completionCode);
  client.disconnect();

  SMM_LOG(kDebug) << "Send impi cmd suceess: FN=0x" << Hex(request.netFn) << " cmd=0x"
                  << Hex(request.cmd) << " data=" << HexRendering(request.data);
  SMM_LOG(kDebug) << "Response=" << RawRendering(response);
  SMM_LOG(kDebug) << "Response=" << HexRendering(response);
  return StatusCode::Success;
}

void SMMInventoryImpl::TrimSmm2Response(std::vector<std::uint8_t>& response, std::size_t count) {
  SMM_LOG(kDebug) << "it is smm2...";
  if (response.size() < count) {
    // Callers catch exactly this for such an answer.
    throw std::bad_alloc();
  }
  response.erase(response.begin(), response.begin() + static_cast<std::ptrdiff_t>(count));
  SMM_LOG(kDebug) << "New response=" << RawRendering(response);
  SMM_LOG(kDebug) << "New response=" << HexRendering(response);
}

int SMMInventoryImpl::SendAndTrim(const IPMICOMMAND& request, std::size_t prefixLength,
                                  Answer& answer) {
  const int status = SendIpmiCmd(request, answer.bytes, answer.completionCode);
  if (status == StatusCode::Success && IsSecondGeneration()) {
    TrimSmm2Response(answer.bytes, prefixLength);
  }
  return status;
}

template <typename Announce>
bool SMMInventoryImpl::SendUntilAcknowledged(const IPMICOMMAND& request, Answer& answer,
                                             Announce announce) {
  for (int attempt = 1; attempt <= kAcknowledgeAttempts; ++attempt) {
    announce(attempt);
    SendIpmiCmd(request, answer.bytes, answer.completionCode);
    if (answer.completionCode == 0 && answer.bytes.size() == 1) {
      return true;
    }
    Pause(kSecondsBetweenAttempts);
  }
  return false;
}

int SMMInventoryImpl::GetSmmMT(std::string& machineType) {
  const IPMICOMMAND request = OemRequest(kIdentityCommand, {kIdentitySelector, kMachineTypeItem});
  Answer answer;
  const int status = SendAndTrim(request, kIdentityPrefixLength, answer);
  if (status != StatusCode::Success) {
    return status;
  }
  if (!answer.IsUsable(kMachineTypeLength)) {
    SMM_LOG(kError) << "Get smm mt failed with error code:"
                    << std::to_string(answer.completionCode);
    return StatusCode::UnusableAnswer;
  }

  std::string text = DecodeMachineType(answer.bytes);
  if (!IsAlphanumeric(text)) {
    SMM_LOG(kWarning) << "[WARN]: SMM machine type is empty";
    return StatusCode::NoUsableResult;
  }
  machineType = std::move(text);
  return StatusCode::Success;
}

int SMMInventoryImpl::GetSmmSN(std::string& serialNumber) {
  const IPMICOMMAND request = OemRequest(kIdentityCommand, {kIdentitySelector, kSerialNumberItem});
  Answer answer;
  const int status = SendAndTrim(request, kIdentityPrefixLength, answer);
  if (status != StatusCode::Success) {
    return status;
  }
  if (!answer.IsUsable(kSerialNumberMinimumLength)) {
    SMM_LOG(kError) << "Get smm sn failed with error code:"
                    << std::to_string(answer.completionCode);
    return StatusCode::UnusableAnswer;
  }

  serialNumber = DecodeSerialNumber(answer.bytes);
  return StatusCode::Success;
}

int SMMInventoryImpl::GetSmmVersion(std::string& version) {
  Answer answer;
  const int status = SendAndTrim(OemRequest(kStatusCommand, {}), kVersionPrefixLength, answer);
  if (status != StatusCode::Success) {
    return status;
  }
  if (!answer.IsUsable(kVersionMinimumLength)) {
    SMM_LOG(kError) << "Get smm version failed with error code:"
                    << std::to_string(answer.completionCode);
    return StatusCode::UnusableAnswer;
  }

  version = DecodeVersion(answer.bytes);
  return StatusCode::Success;
}

int SMMInventoryImpl::GetSmmName(std::string& name) {
  const IPMICOMMAND request = OemRequest(kIdentityCommand, {kIdentitySelector, kNameItem});
  Answer answer;
  const int status = SendAndTrim(request, kIdentityPrefixLength, answer);
  if (status != StatusCode::Success) {
    return status;
  }
  if (!answer.IsUsable(kNameMinimumLength)) {
    SMM_LOG(kError) << "Get smm name failed with error code:"
                    << std::to_string(answer.completionCode);
    return StatusCode::UnusableAnswer;
  }

  name = DecodeName(answer.bytes);
  return StatusCode::Success;
}

std::uint8_t SMMInventoryImpl::ChassisSelector() const {
  return smmStatus.platformId == kPlatform253 ? kPlatform253ChassisSelector : kChassisSelector;
}

int SMMInventoryImpl::GetChassisPowerConsumption(ChassisPowerCon& out) {
  const IPMICOMMAND request = OemRequest(kPowerCommand, {ChassisSelector()});
  Answer answer;
  const int status = SendAndTrim(request, kPowerPrefixLength, answer);
  if (status != StatusCode::Success) {
    return status;
  }
  if (!answer.IsUsable(kPowerLength)) {
    SMM_LOG(kError) << "Get smm chassis power consumption failed with error code:"
                    << std::to_string(answer.completionCode);
    return StatusCode::UnusableAnswer;
  }

  out = DecodePower(answer.bytes);
  SMM_LOG(kDebug) << PowerText(out);
  return StatusCode::Success;
}

int SMMInventoryImpl::GetChassisPowerCap(ChassisPowerCap& out) {
  const IPMICOMMAND request = OemRequest(kPowerCapCommand, {ChassisSelector()});
  Answer answer;
  const int status = SendAndTrim(request, kPowerPrefixLength, answer);
  if (status != StatusCode::Success) {
    return status;
  }
  if (!answer.IsUsable(kPowerCapLength)) {
    SMM_LOG(kError) << "Get smm chassis power cap failed with error code:"
                    << std::to_string(answer.completionCode);
    return StatusCode::UnusableAnswer;
  }

  out = DecodePowerCap(answer.bytes);
  SMM_LOG(kDebug) << PowerCapText(out);
  out = WithoutAbsentCaps(std::move(out));
  return StatusCode::Success;
}

int SMMInventoryImpl::GetNodePowerConsumption(unsigned long node, ChassisPowerCon& out) {
  if (!HasNode(node)) {
    SMM_LOG(kError) << "node " << std::to_string(node) << "is wrong: need 1-"
                    << std::to_string(nodeCount);
    return StatusCode::UnusableAnswer;
  }

  const IPMICOMMAND request = OemRequest(kPowerCommand, {static_cast<std::uint8_t>(node)});
  Answer answer;
  const int status = SendIpmiCmd(request, answer.bytes, answer.completionCode);
  if (status != StatusCode::Success) {
    return status;
  }
  // An answer that has no byte to spare is taken as it is, unlike the chassis's.
  if (IsSecondGeneration() && answer.IsUsable(kPowerPrefixLength + kPowerLength)) {
    TrimSmm2Response(answer.bytes, kPowerPrefixLength);
  }
  if (!answer.IsUsable(kPowerLength)) {
    SMM_LOG(kError) << "Get smm chassis power consumption failed with error code:"
                    << std::to_string(answer.completionCode);
    return StatusCode::UnusableAnswer;
  }

  out = DecodePower(answer.bytes);
  SMM_LOG(kDebug) << PowerText(out);
  out = WithoutAbsentReadings(std::move(out));
  return StatusCode::Success;
}

int SMMInventoryImpl::GetPSUFanSpeed(std::vector<PSUFanSpeed>& out) {
  for (std::uint64_t slot = 1; slot <= psuSlotCount; ++slot) {
    Answer answer;
    const IPMICOMMAND request = OemRequest(kPsuFanCommand, {static_cast<std::uint8_t>(slot)});
    const int status = SendIpmiCmd(request, answer.bytes, answer.completionCode);
    if (status != StatusCode::Success) {
      return status;
    }

    const std::string name = "PSU" + std::to_string(slot);
    PSUFanSpeed fans;
    // The failure lines speak of the power cap. Callers read the log: its words are an interface.
    if (IsSecondGeneration()) {
      if (!answer.IsUsable(kSecondGenerationFanLength)) {
        SMM_LOG(kError) << "Get smm2 chassis power cap failed with error code:"
                        << std::to_string(answer.completionCode);
        continue;
      }
      fans = DecodeSecondGenerationFans(name, answer.bytes);
      SMM_LOG(kDebug) << SecondGenerationFansText(fans);
    } else {
      if (!answer.IsUsable(kFirstGenerationFanLength)) {
        SMM_LOG(kError) << "Get smm chassis power cap failed with error code:"
                        << std::to_string(answer.completionCode);
        continue;
      }
      fans = DecodeFirstGenerationFan(name, answer.bytes);
      SMM_LOG(kDebug) << FirstGenerationFanText(fans);
    }
    out.push_back(WithoutAbsentFans(std::move(fans)));
  }
  return StatusCode::Success;
}

IPMICOMMAND SMMInventoryImpl::PsuRegisterRead(std::uint64_t slot, std::uint8_t readCount,
                                              std::uint8_t psuRegister) const {
  if (IsSecondGeneration()) {
    return OemRequest(kPsuRegisterCommand,
                      {static_cast<std::uint8_t>(slot), readCount, psuRegister});
  }
  IPMICOMMAND request;
  request.netFn = kApplicationNetworkFunction;
  request.cmd = kMasterWriteReadCommand;
  request.data = {slot == 1 ? kFirstSlotBus : kOtherSlotsBus, kPsuSlaveAddress, readCount,
                  psuRegister};
  return request;
}

// The three register queries differ in what they log, and callers read the log: only the version
// and the manufacturer write a line for a failed exchange, and only the version and the position
// one for an unusable answer.

int SMMInventoryImpl::GetPSUVersion(std::map<int, std::string>& versions) {
  for (std::uint64_t slot = 1; slot <= psuSlotCount; ++slot) {
    Answer answer;
    const int status = SendIpmiCmd(PsuRegisterRead(slot, kPsuVersionReadCount, kPsuVersionRegister),
                                   answer.bytes, answer.completionCode);
    if (status != StatusCode::Success) {
      SMM_LOG(kError) << "Failed to send IPMI command with returns " << std::to_string(status);
      return status;
    }
    if (!answer.IsUsable(kPsuVersionMinimumLength)) {
      SMM_LOG(kError) << "Get psu firmware version failed with error code:"
                      << std::to_string(answer.completionCode);
      continue;
    }

    const std::string version = DecodePsuVersion(answer.bytes);
    versions[static_cast<int>(slot)] = version;
    SMM_LOG(kDebug) << "PSU slot " << std::to_string(slot) << " version:" << version;
  }
  return StatusCode::Success;
}

int SMMInventoryImpl::GetPSUManufacture(std::map<int, std::string>& manufacturers) {
  // The last slot alone decides what is returned; without any slot, the query could not run.
  int status = StatusCode::NoUsableResult;
  for (std::uint64_t slot = 1; slot <= psuSlotCount; ++slot) {
    Answer answer;
    status = SendIpmiCmd(PsuRegisterRead(slot, kPsuManufacturerReadCount, kPsuManufacturerRegister),
                         answer.bytes, answer.completionCode);
    if (status != StatusCode::Success) {
      SMM_LOG(kError) << "Failed to send IPMI command with returns " << std::to_string(status);
      return status;
    }
    if (!answer.IsUsable(kPsuManufacturerMinimumLength)) {
      continue;
    }
    if (smmType != SMM_FIRST_GENERATION && smmType != SMM_SECOND_GENERATION) {
      SMM_LOG(kWarning) << "[WARN]: PSU manufacture is empty";
      status = StatusCode::NoUsableResult;
      continue;
    }

    const std::string manufacturer = IsSecondGeneration()
                                         ? DecodeSecondGenerationPsuManufacturer(answer.bytes)
                                         : DecodeFirstGenerationPsuManufacturer(answer.bytes);
    manufacturers[static_cast<int>(slot)] = manufacturer;
    SMM_LOG(kDebug) << "PSU slot " << std::to_string(slot) << " manufacture:" << manufacturer;
  }
  return status;
}

int SMMInventoryImpl::GetPSUPosition(std::map<int, std::string>& positions) {
  for (std::uint64_t slot = 1; slot <= psuSlotCount; ++slot) {
    Answer answer;
    const int status =
        SendIpmiCmd(PsuRegisterRead(slot, kPsuPositionReadCount, kPsuPositionRegister),
                    answer.bytes, answer.completionCode);
    if (status != StatusCode::Success) {
      return status;
    }
    if (!answer.IsUsable(kPsuPositionMinimumLength)) {
      SMM_LOG(kError) << "Get psu position id failed with error code:"
                      << std::to_string(answer.completionCode);
      continue;
    }

    const std::string position = DecodePsuPosition(answer.bytes);
    positions[static_cast<int>(slot)] = position;
    SMM_LOG(kDebug) << "PSU slot " << std::to_string(slot) << " position:" << position;
  }
  return StatusCode::Success;
}

int SMMInventoryImpl::GetPSUFwInfo(std::vector<PSUFwInfo>& out) {
  std::map<int, std::string> versions;
  std::map<int, std::string> manufacturers;
  std::map<int, std::string> positions;
  int status = GetPSUVersion(versions);
  if (status == StatusCode::Success) {
    status = GetPSUManufacture(manufacturers);
  }
  if (status == StatusCode::Success) {
    status = GetPSUPosition(positions);
  }
  if (status != StatusCode::Success) {
    return status;
  }

  const int slotCount = static_cast<int>(psuSlotCount);
  for (int slot = 1; slot <= slotCount; ++slot) {
    const auto version = versions.find(slot);
    const auto manufacturer = manufacturers.find(slot);
    const auto position = positions.find(slot);
    if (version == versions.end() || manufacturer == manufacturers.end() ||
        position == positions.end()) {
      SMM_LOG(kDebug) << "PSU slot " << std::to_string(slot) << " has no PSU module.";
      continue;
    }
    out.push_back(ToPsuFwInfo(slot, version->second, manufacturer->second, position->second));
    SMM_LOG(kDebug) << PsuFwInfoText(out.back());
  }
  return StatusCode::Success;
}

int SMMInventoryImpl::GetPSUStatus(std::vector<PSUStatus>& out) {
  Answer answer;
  const int status =
      SendIpmiCmd(OemRequest(kPsuStatusCommand, {}), answer.bytes, answer.completionCode);
  if (status != StatusCode::Success) {
    return status;
  }

  // One record a PSU in any case, and before a line is written.
  out.clear();
  if (!answer.IsUsable(kPsuStatusMinimumLength)) {
    out.resize(psuSlotCount);
    SMM_LOG(kDebug) << "The gotted PSU status is :\n"
                    << "\nGet PSU statue failed with completionCode is "
                    << std::to_string(answer.completionCode) << ", response.size() is "
                    << std::to_string(answer.bytes.size());
    return StatusCode::UnusableAnswer;
  }

  const PsuStatusFlags flags = IsSecondGeneration() ? DecodeSecondGenerationPsuStatus(answer.bytes)
                                                    : DecodeFirstGenerationPsuStatus(answer.bytes);
  out.reserve(psuSlotCount);
  for (std::uint64_t index = 0; index < psuSlotCount; ++index) {
    out.push_back(ToPsuStatus(flags, index));
  }
  SMM_LOG(kDebug) << "The gotted PSU status is :\n" << PsuStatusFlagsText(flags, psuSlotCount);
  return StatusCode::Success;
}

// A selector out of range is not refused: the first generation gets the highest, the second none.
// Negative ones count as in range and travel as their low eight bits.
std::vector<std::uint8_t> SMMInventoryImpl::PsuSelectorData(int psu) const {
  if (!IsSecondGeneration()) {
    return {kSelectPsuLead, static_cast<std::uint8_t>(std::min(psu, kHighestPsuFirstGeneration))};
  }
  const bool isInRange = (smmStatus.platformId == kPlatform253 && psu <= kHighestPsuPlatform253) ||
                         (smmStatus.platformId == kPlatform254 && psu <= kHighestPsuPlatform254);
  if (isInRange) {
    return {kSelectPsuLead, static_cast<std::uint8_t>(psu)};
  }
  return {kSelectPsuLead};
}

int SMMInventoryImpl::SelectPSUImpl(int psu) {
  const IPMICOMMAND request = OemRequest(kSelectPsuCommand, PsuSelectorData(psu));
  Answer answer;
  // The line speaks of the PSU's status. Callers read the log: its words are an interface.
  const bool isAcknowledged = SendUntilAcknowledged(request, answer, [](int attempt) {
    SMM_LOG(kProgress) << "Try to get PSU status, start retry " << Times(attempt);
  });
  if (isAcknowledged) {
    SMM_LOG(kProgress) << "Succeeded select PSU ";
  }

  // Less than an acknowledgement will do in the end: an answer of any length with completion code
  // 0.
  if (answer.bytes.empty() || answer.completionCode != 0) {
    SMM_LOG(kWarning) << "response is empty or completionCode: "
                      << static_cast<char>(answer.completionCode);
    return StatusCode::NoUsableResult;
  }
  return StatusCode::Success;
}

int SMMInventoryImpl::GetNodeStatus(unsigned long node, NodeStatus& out) {
  if (!HasNode(node)) {
    SMM_LOG(kError) << "node " << std::to_string(node) << "is wrong: need 1-"
                    << std::to_string(nodeCount);
    return StatusCode::UnusableAnswer;
  }

  const IPMICOMMAND request = OemRequest(kNodeStatusCommand, {static_cast<std::uint8_t>(node)});
  Answer answer;
  const int status = SendIpmiCmd(request, answer.bytes, answer.completionCode);
  if (status != StatusCode::Success) {
    return status;
  }
  // An answer of any other length is taken as it is, and judged by the length of the first
  // generation.
  if (IsSecondGeneration() && answer.completionCode == 0 &&
      answer.bytes.size() == kNodeStatusPrefixLength + kNodeStatusLength) {
    TrimSmm2Response(answer.bytes, kNodeStatusPrefixLength);
  }
  if (answer.completionCode != 0 || answer.bytes.size() != kNodeStatusLength) {
    SMM_LOG(kDebug) << "The Node status is :"
                    << "\nGet Node statue failed with completionCode is "
                    << std::to_string(answer.completionCode) << ", response.size() is "
                    << std::to_string(answer.bytes.size());
    return StatusCode::UnusableAnswer;
  }

  const NodeStatusCodes codes = DecodeNodeStatus(answer.bytes);
  if (!IsKnownPowerState(codes.powerState)) {
    SMM_LOG(kError) << "Wrong result";
  }
  out = ToNodeStatus(codes);
  SMM_LOG(kDebug) << "The Node status is :" << NodeStatusCodesText(codes);
  return StatusCode::Success;
}

int SMMInventoryImpl::GetSMMStatusImp(SMMStatus& out) {
  const IPMICOMMAND request = OemRequest(kStatusCommand, {});
  Answer answer;
  // A full status answer is no acknowledgement, so that an SMM which gives one is asked six times
  // and the last of its answers counts.
  const bool isAcknowledged = SendUntilAcknowledged(request, answer, [](int attempt) {
    SMM_LOG(kProgress) << "Try to get SMM status, retry " << Times(attempt);
  });
  if (isAcknowledged) {
    SMM_LOG(kProgress) << "Succeeded get SMM Status";
  }

  int status = StatusCode::Success;
  if (answer.bytes.empty() || answer.completionCode != 0) {
    // Here, and in the PSU selection, the code goes out as the byte that it is, not as a number.
    SMM_LOG(kWarning) << "response is empty or completeCode: "
                      << static_cast<char>(answer.completionCode);
    status = StatusCode::NoUsableResult;
  }
  if (answer.bytes.size() < kSmmStatusMinimumLength) {
    SMM_LOG(kWarning) << "SMM Type is 0x" << Hex(static_cast<std::uint32_t>(smmType))
                      << "use default value";
    return status;
  }

  const SmmStatusAnswer decoded = DecodeSmmStatus(answer.bytes);
  const SMMStatus result = ToSmmStatus(decoded);
  out.platformId = result.platformId;
  if (IsEgs(decoded)) {
    SMM_LOG(kWarning) << "checked SMM2 Type is EGS, For EGS, set default value 6";
  }
  out.psuSlotCount = result.psuSlotCount;
  return status;
}

}  // namespace Tavrin
