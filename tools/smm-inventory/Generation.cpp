#include "tools/smm-inventory/Generation.h"

#include <string>

#include "platform/IpmiClient.h"
#include "platform/standalone/ipmi_client/ConnectRound.h"
#include "platform/standalone/smmcommoninfo/LastDetection.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

bool CanConnect(const TavrinConnection::ConnectionInfo& info) {
  IpmiClient client(info.address, info.userName, info.password, std::to_string(info.port),
                    Standalone::kLibraryCipherSuite);
  const bool isConnected = Standalone::ConnectAsTheLibrary(client);
  client.disconnect();
  return isConnected;
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
