#include "tools/smm-inventory/Generation.h"

#include <string>

#include "platform/GlobalConfig.h"
#include "platform/IpmiClient.h"
#include "platform/standalone/smmcommoninfo/LastDetection.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

// As the library connects for each of its exchanges.
constexpr unsigned long kCipherSuite = 3;
constexpr int kDefaultAttempts = 3;
constexpr int kConnected = 0;
constexpr int kWorthRetrying = 3;

bool CanConnect(const TavrinConnection::ConnectionInfo& info) {
  IpmiClient client(info.address, info.userName, info.password, std::to_string(info.port),
                    kCipherSuite);
  const int attempts = GetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", kDefaultAttempts);
  int result = kWorthRetrying;
  for (int attempt = 0; attempt < attempts && result == kWorthRetrying; ++attempt) {
    result = client.connect();
  }
  client.disconnect();
  return result == kConnected;
}

/// Whether an exchange can end so after its connection was opened.
bool MayHaveConnected(const Standalone::LastExchange& exchange) {
  switch (exchange.cause) {
    case FailureCause::FellSilent:
    case FailureCause::Late:
    case FailureCause::DamagedAnswer:
    case FailureCause::OtherAnswer:
      return true;
    default:
      return exchange.isAnswered;
  }
}

}  // namespace

QueryResult<SMMIype> FindGeneration(const TavrinConnection::ConnectionInfo& info) {
  SMMIype type = SMM_FIRST_GENERATION;
  const bool isKnown = SMMInfo(info).GetSmmType(type) == 0;
  const bool isConfigured =
      Standalone::GetLastDetectionOutcome() == Standalone::DetectionOutcome::Configured;
  if (isKnown && (!isConfigured || CanConnect(info))) {
    return {type, StatusCode::Success, {}};
  }
  const Standalone::LastExchange& exchange = Standalone::GetLastExchange();
  QueryResult<SMMIype> failed{type, StatusCode::NotConnected, CauseOf(exchange)};
  if (!isKnown && MayHaveConnected(exchange)) {
    failed.status = StatusCode::NoUsableResult;
    failed.cause.missing = "generation";
  }
  return failed;
}

}  // namespace Tavrin
