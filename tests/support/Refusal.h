#pragma once

#include <string>

#include "support/UsageError.h"

namespace Tavrin {

/// What the UsageError says that the call throws. Anything else that it throws passes.
template <typename Call>
std::string RefusalOf(Call call) {
  try {
    call();
  } catch (const UsageError& error) {
    return error.what();
  }
  return "nothing refused";
}

}  // namespace Tavrin
