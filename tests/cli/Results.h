#pragma once

#include <string>
#include <vector>

#include "tools/smm-inventory/Enclosure.h"

namespace Tavrin {

// Results as the queries give them, for the tests of both reports.

template <typename Value>
QueryResult<Value> Good(const Value& value) {
  return {value, StatusCode::Success, {}};
}

template <typename Value>
QueryResult<Value> Refused(const Value& value = {}) {
  return {value, StatusCode::UnusableAnswer, {"its answer is empty", {}, 0, ""}};
}

inline Detection FullDetection() {
  return {Good(SMM_SECOND_GENERATION), Good<std::int32_t>(253), Good<std::size_t>(9),
          Good<unsigned long>(12)};
}

inline Identity FullIdentity() {
  return {Good<std::string>("1234"), Good<std::string>("J1 23"), Good<std::string>("ABC-1a.05"),
          Good<std::string>("")};
}

inline std::vector<PSUFanSpeed> FansOfBothGenerations() {
  return {{"PSU1", "1000", "N/A", "", "", "Abnormal"},
          {"PSU2", "10000", "50", "N/A", "7", "Normal"}};
}

/// Four manufacturer bytes that are no text in any encoding, the last one of them printable.
inline PSUFwInfo FirmwareOfRawBytes() {
  using std::string_literals::operator""s;
  return {"PSU1", "PSU\xff\0\x1b"s + "Da.01", "1.0a", "1", "Power Supply 1"};
}

}  // namespace Tavrin
