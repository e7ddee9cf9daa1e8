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

// "1 time", "2 times", and so on.
std::string Times(int count) { return std::to_string(count) + (count == 1 ? " time" : " times"); }

// Sends the request up to six times, with a pause after each, until the SMM acknowledges it with an
// answer of exactly one byte and completion code 0. Returns whether it did; the outputs hold the
// last answer in either case.
template <typename Announce>
bool SendUntilAcknowledged(SMMInventoryImpl& smm, const IPMICOMMAND& request,
                           std::vector<std::uint8_t>& response, std::uint8_t& completionCode,
                           Announce announce) {
  for (int attempt = 1; attempt <= kAcknowledgeAttempts; ++attempt) {
    announce(attempt);
    static_cast<void>(smm.SendIpmiCmd(request, response, completionCode));
    if (completionCode == 0 && response.size() == 1) {
      return true;
    }
    sleep(kSecondsBetweenAttempts);
  }
  return false;
}

}  // namespace

struct SMMInventoryImpl::Answer {
  std::vector<std::uint8_t> bytes;
  std::uint8_t completionCode = 0;

  [[nodiscard]] bool IsGood(std::size_t minimumLength) const {
    return completionCode == 0 && bytes.size() >= minimumLength;
  }
};

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

int SMMInventoryImpl::SendAndTrim(const IPMICOMMAND& request, std::size_t prefixLength,
                                  Answer& answer) {
  const int status = SendIpmiCmd(request, answer.bytes, answer.completionCode);
  if (status == StatusCode::Success && IsSecondGeneration()) {
    TrimSmm2Response(answer.bytes, prefixLength);
  }
  return status;
}

int SMMInventoryImpl::GetSmmMT(std::string& machineType) {
  const IPMICOMMAND request = OemRequest(kIdentityCommand, {kIdentitySelector, kMachineTypeItem});
  Answer answer;
  const int status = SendAndTrim(request, kIdentityPrefixLength, answer);
  if (status != StatusCode::Success) {
    return status;
  }
  if (!answer.IsGood(kMachineTypeLength)) {
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
  if (!answer.IsGood(kSerialNumberMinimumLength)) {
    SMM_LOG(kError) << "Get smm sn failed with error code:"
                    << std::to_string(answer.completionCode);
    return StatusCode::UnusableAnswer;
  }

  serialNumber = DecodeSerialNumber(answer.bytes);
  return StatusCode::Success;
}

int SMMInventoryImpl::GetSMMStatusImp(SMMStatus& out) {
  const IPMICOMMAND request = OemRequest(kStatusCommand, {});
  Answer answer;
  // A full status answer is no acknowledgement, so that an SMM which gives one is asked six times
  // and the last of its answers counts.
  if (SendUntilAcknowledged(*this, request, answer.bytes, answer.completionCode, [](int attempt) {
        SMM_LOG(kProgress) << "Try to get SMM status, retry " << Times(attempt);
      })) {
    SMM_LOG(kProgress) << "Succeeded get SMM Status";
  }

  int status = StatusCode::Success;
  if (answer.bytes.empty() || answer.completionCode != 0) {
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
  if (IsEgs(decoded)) {
    SMM_LOG(kWarning) << "checked SMM2 Type is EGS, For EGS, set default value 6";
  }
  out = ToSmmStatus(decoded);
  return status;
}

}  // namespace Tavrin
