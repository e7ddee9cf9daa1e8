#include "module/smm/smm_inventory/impl/SMMInventoryImpl.h"

#include <unistd.h>

#include <new>
#include <string>
#include <utility>

#include "module/smm/smm_inventory/StatusCode.h"
#include "module/smm/smm_inventory/impl/ByteText.h"
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

const std::string& SourcePath() {
  static const std::string path = "module/smm/smm_inventory/impl/SMMInventoryImpl";
  return path;
}

// A macro, so that each line carries the number of the place that writes it, and so that nothing
// behind it is composed for a line that is not written.
#define SMM_LOG(level)                   \
  if (Log::GetMinLogLevel() < (level)) { \
  } else                                 \
    Log((level), SourcePath(), __LINE__).Stream()

// What IpmiClient::connect() returns.
constexpr int kConnected = 0;
constexpr int kWorthRetrying = 3;

constexpr unsigned long kCipherSuite = 3;
constexpr int kDefaultConnectAttempts = 3;
constexpr std::uint8_t kNoAnswer = 0xFF;

constexpr int kAcknowledgeAttempts = 6;
constexpr unsigned int kSecondsBetweenAttempts = 3;

constexpr std::uint8_t kOemNetworkFunction = 0x32;
constexpr std::uint8_t kStatusCommand = 0xA8;
constexpr std::uint8_t kIdentityCommand = 0xB0;

constexpr std::uint8_t kIdentitySelector = 0x05;
constexpr std::uint8_t kMachineTypeItem = 0x00;
constexpr std::uint8_t kSerialNumberItem = 0x01;

// The second generation puts this many bytes in front of an identity answer.
constexpr std::size_t kIdentityPrefixLength = 2;

bool AdmitsIpmi(std::int32_t connectionKind) { return connectionKind == 1 || connectionKind == 7; }

// Connects with as many attempts as the configuration allows, without a pause between them. Returns
// what the last attempt returned, and counts no attempt at all as a failure worth retrying.
int Connect(IpmiClient& client) {
  const int attempts = GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", kDefaultConnectAttempts);
  int result = kWorthRetrying;
  for (int attempt = 0; attempt < attempts && result == kWorthRetrying; ++attempt) {
    result = client.connect();
  }
  return result;
}

IPMICOMMAND OemRequest(std::uint8_t command, std::vector<std::uint8_t> data) {
  IPMICOMMAND request;
  request.netFn = kOemNetworkFunction;
  request.cmd = command;
  request.data = std::move(data);
  return request;
}

// One byte is the whole answer of an SMM that merely acknowledges.
bool IsAcknowledgement(const std::vector<std::uint8_t>& response, std::uint8_t completionCode) {
  return completionCode == 0 && response.size() == 1;
}

}  // namespace

SMMInventoryImpl::SMMInventoryImpl(const TavrinConnection::ConnectionInfo& info)
    : TavrinConnection::ConnectionInfo(info) {
  // An SMM whose generation cannot be found out is taken for what smmType holds already.
  SMMInfo smmInfo(*this);
  static_cast<void>(smmInfo.GetSmmType(smmType));

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
  const int error = Connect(client);
  if (error != kConnected) {
    response.clear();
    completionCode = kNoAnswer;
    SMM_LOG(kError) << "connect failed with error:" << std::to_string(error);
    return StatusCode::NotConnected;
  }

  // Whether the answer is of use, or came at all, is for the query to judge.
  static_cast<void>(client.send(request, response, completionCode));
  static_cast<void>(client.disconnect());

  SMM_LOG(kDebug) << "Send impi cmd suceess: FN=0x" << Hex(request.netFn) << " cmd=0x"
                  << Hex(request.cmd) << " data=" << HexRendering(request.data);
  SMM_LOG(kDebug) << "Response=" << RawRendering(response);
  SMM_LOG(kDebug) << "Response=" << HexRendering(response);
  return StatusCode::Success;
}

void SMMInventoryImpl::TrimSmm2Response(std::vector<std::uint8_t>& response, std::size_t count) {
  SMM_LOG(kDebug) << "it is smm2...";
  if (response.size() < count) {
    // What callers have always got for such an answer, and what they catch.
    throw std::bad_alloc();
  }
  response.erase(response.begin(), response.begin() + static_cast<std::ptrdiff_t>(count));
  SMM_LOG(kDebug) << "New response=" << RawRendering(response);
  SMM_LOG(kDebug) << "New response=" << HexRendering(response);
}

int SMMInventoryImpl::GetSmmMT(std::string& machineType) {
  const IPMICOMMAND request = OemRequest(kIdentityCommand, {kIdentitySelector, kMachineTypeItem});
  std::vector<std::uint8_t> response;
  std::uint8_t completionCode = 0;
  const int status = SendIpmiCmd(request, response, completionCode);
  if (status != StatusCode::Success) {
    return status;
  }
  if (IsSecondGeneration()) {
    TrimSmm2Response(response, kIdentityPrefixLength);
  }
  if (completionCode != 0 || response.size() < kMachineTypeLength) {
    SMM_LOG(kError) << "Get smm mt failed with error code:" << std::to_string(completionCode);
    return StatusCode::UnusableAnswer;
  }

  std::string text = DecodeMachineType(response);
  if (!IsAlphanumeric(text)) {
    SMM_LOG(kWarning) << "[WARN]: SMM machine type is empty";
    return StatusCode::NoUsableResult;
  }
  machineType = std::move(text);
  return StatusCode::Success;
}

int SMMInventoryImpl::GetSmmSN(std::string& serialNumber) {
  const IPMICOMMAND request = OemRequest(kIdentityCommand, {kIdentitySelector, kSerialNumberItem});
  std::vector<std::uint8_t> response;
  std::uint8_t completionCode = 0;
  const int status = SendIpmiCmd(request, response, completionCode);
  if (status != StatusCode::Success) {
    return status;
  }
  if (IsSecondGeneration()) {
    TrimSmm2Response(response, kIdentityPrefixLength);
  }
  if (completionCode != 0 || response.size() < kSerialNumberMinimumLength) {
    SMM_LOG(kError) << "Get smm sn failed with error code:" << std::to_string(completionCode);
    return StatusCode::UnusableAnswer;
  }

  serialNumber = DecodeSerialNumber(response);
  return StatusCode::Success;
}

int SMMInventoryImpl::GetSMMStatusImp(SMMStatus& out) {
  const IPMICOMMAND request = OemRequest(kStatusCommand, {});
  std::vector<std::uint8_t> response;
  std::uint8_t completionCode = 0;
  int status = StatusCode::Success;
  // A full status answer never counts as the acknowledgement that ends the attempts early: the SMM
  // is asked six times and its last answer is the one that counts.
  for (int attempt = 1; attempt <= kAcknowledgeAttempts; ++attempt) {
    SMM_LOG(kProgress) << "Try to get SMM status, retry " << std::to_string(attempt)
                       << (attempt == 1 ? " time" : " times");
    status = SendIpmiCmd(request, response, completionCode);
    if (IsAcknowledgement(response, completionCode)) {
      SMM_LOG(kProgress) << "Succeeded get SMM Status";
      break;
    }
    sleep(kSecondsBetweenAttempts);
  }

  if (response.empty() || completionCode != 0) {
    SMM_LOG(kWarning) << "response is empty or completeCode: " << static_cast<char>(completionCode);
    status = StatusCode::NoUsableResult;
  }
  if (response.size() < kSmmStatusMinimumLength) {
    SMM_LOG(kWarning) << "SMM Type is 0x" << Hex(static_cast<std::uint32_t>(smmType))
                      << "use default value";
    return status;
  }

  const SmmStatusAnswer answer = DecodeSmmStatus(response);
  if (IsEgs(answer)) {
    SMM_LOG(kWarning) << "checked SMM2 Type is EGS, For EGS, set default value 6";
  }
  out = ToSmmStatus(answer);
  return status;
}

}  // namespace Tavrin
