#include "tools/smm-inventory/LoginGuard.h"

#include "platform/standalone/globalconfig/ConfigControl.h"

namespace Tavrin {

void LoginGuard::Look() {
  const Standalone::LastExchange& exchange = Standalone::GetLastExchange();
  if (refusal_ || !IsLoginRefused(exchange.cause)) {
    return;
  }
  refusal_ = CauseOf(exchange);
  Standalone::SetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 0);
}

}  // namespace Tavrin
