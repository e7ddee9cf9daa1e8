#include "report/UtcTime.h"

#include <fmt/format.h>

#include <cstdint>

namespace Tavrin {
namespace {

constexpr std::int64_t kMillisecondsOfDay = 86'400'000;
constexpr std::int64_t kDaysOf400Years = 146'097;
constexpr std::int64_t kDaysFrom0000March1ToEpoch = 719'468;

/// The Gregorian date of a day, counted from 0000-03-01, as "YYYY-MM-DD". A year that begins in
/// March has its leap day last, and its months repeat every five: 153 days.
std::string DateText(std::int64_t day) {
  const std::int64_t era = day / kDaysOf400Years;
  const std::int64_t dayOfEra = day % kDaysOf400Years;
  const std::int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
  const std::int64_t dayOfMonth = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
  const std::int64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
  const std::int64_t year = 400 * era + yearOfEra + (month <= 2 ? 1 : 0);
  return fmt::format("{:04}-{:02}-{:02}", year, month, dayOfMonth);
}

}  // namespace

// gmtime_r(3), and fmt over it, go by TZ: with one that counts leap seconds ("right/UTC") the time
// comes out half a minute early.
std::string UtcTime(std::chrono::system_clock::time_point moment) {
  const std::int64_t sinceStart =
      std::chrono::floor<std::chrono::milliseconds>(moment.time_since_epoch()).count() +
      kDaysFrom0000March1ToEpoch * kMillisecondsOfDay;
  const std::int64_t ofDay = sinceStart % kMillisecondsOfDay;
  return fmt::format("{}T{:02}:{:02}:{:02}.{:03}Z", DateText(sinceStart / kMillisecondsOfDay),
                     ofDay / 3'600'000, ofDay / 60'000 % 60, ofDay / 1000 % 60, ofDay % 1000);
}

}  // namespace Tavrin
