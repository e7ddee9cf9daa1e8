#pragma once

#include <string>

#include "module/smm/smm_inventory/InventoryRecords.h"

namespace Tavrin::Answers {

// Each record as one line a member, its name in front. Bytes that are not printable ASCII are shown
// as \xNN.

std::string Text(const std::string& text);
std::string Text(const ChassisPowerCon& power);
std::string Text(const ChassisPowerCap& cap);
std::string Text(const PSUFanSpeed& fans);
std::string Text(const PSUFwInfo& firmware);
std::string Text(const PSUStatus& status);
std::string Text(const NodeStatus& status);
std::string Text(const SMMStatus& status);

/// The records one after the other.
template <typename Records>
std::string TextOfAll(const Records& records) {
  std::string text;
  for (const auto& record : records) {
    text += Text(record);
  }
  return text;
}

}  // namespace Tavrin::Answers
