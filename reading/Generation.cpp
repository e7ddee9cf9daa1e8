#include "reading/Generation.h"

#include <cstddef>
#include <string>
#include <vector>

#include "platform/IpmiClient.h"
#include "platform/standalone/ipmi_client/ConnectRound.h"
#include "platform/standalone/smmcommoninfo/LastDetection.h"
#include "reading/Stopwatch.h"

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

void Fail(Query<SMMIype>& generation, bool isKnown) {
  const Standalone::LastExchange& exchange = Standalone::GetLastExchange();
  generation.status = StatusCode::NotConnected;
  generation.cause = CauseOf(exchange);
  if (!isKnown && MayHaveConnected(exchange)) {
    generation.status = StatusCode::NoUsableResult;
    generation.cause.missing = "generation";
  }
}

constexpr std::size_t kSlotsByte = 13;

}  // namespace

std::optional<Layout> LastLayout() {
  const std::vector<std::uint8_t>& answer = Standalone::GetLastDetectionAnswer();
  return answer.size() > kSlotsByte
             ? std::optional<Layout>(std::in_place, answer.front(), answer[kSlotsByte])
             : std::nullopt;
}

Query<SMMIype> FindGeneration(const TavrinConnection::ConnectionInfo& info) {
  Query<SMMIype> generation;
  const Stopwatch stopwatch;
  const bool isKnown = SMMInfo(info).GetSmmType(generation.value) == 0;
  const bool isConfigured =
      Standalone::GetLastDetectionOutcome() == Standalone::DetectionOutcome::Configured;
  if (!isKnown || (isConfigured && !CanConnect(info))) {
    Fail(generation, isKnown);
  }
  stopwatch.Stamp(generation);
  return generation;
}

}  // namespace Tavrin
