#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tools/smm-inventory/UsageError.h"

namespace Tavrin {

/// The sentence with which `action` refuses; empty when it does not.
template <typename Action>
std::string RefusalOf(Action action) {
  try {
    action();
  } catch (const UsageError& error) {
    return error.what();
  }
  return {};
}

}  // namespace Tavrin
