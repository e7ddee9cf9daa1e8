#include "reading/LoginGuard.h"

namespace Tavrin {

void LoginGuard::Look() {
  const Standalone::LastExchange& exchange = Standalone::GetLastExchange();
  if (!hasBegun_ || refusal_ || !IsLoginRefused(exchange.cause)) {
    return;
  }
  refusal_ = CauseOf(exchange);
  config_.Set("IPMI_CONNECT_RETRY_TIMES", 0);
}

}  // namespace Tavrin
