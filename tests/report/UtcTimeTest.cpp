#include "report/UtcTime.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <map>
#include <string>

namespace Tavrin {
namespace {

std::string TimeOf(std::int64_t milliseconds) {
  return UtcTime(std::chrono::system_clock::time_point(std::chrono::milliseconds(milliseconds)));
}

// The numbers are those of `date -u -d TIME +%s%3N`.
TEST(UtcTime, MomentIsWrittenToTheMillisecond) {
  const std::map<std::int64_t, std::string> table = {
      {0, "1970-01-01T00:00:00.000Z"},
      {1, "1970-01-01T00:00:00.001Z"},
      {-1, "1969-12-31T23:59:59.999Z"},
      {951'782'399'999, "2000-02-28T23:59:59.999Z"},
      {951'782'400'000, "2000-02-29T00:00:00.000Z"},
      {951'868'800'000, "2000-03-01T00:00:00.000Z"},
      {978'307'199'999, "2000-12-31T23:59:59.999Z"},
      {978'307'200'000, "2001-01-01T00:00:00.000Z"},
      {1'709'164'800'000, "2024-02-29T00:00:00.000Z"},
      {1'795'285'445'678, "2026-11-21T18:24:05.678Z"},
      {4'107'456'000'000, "2100-02-28T00:00:00.000Z"},
      {4'107'542'400'000, "2100-03-01T00:00:00.000Z"},
      {9'223'372'036'854, "2262-04-11T23:47:16.854Z"},
      {-9'223'372'036'854, "1677-09-21T00:12:43.146Z"},
  };
  for (const auto& [milliseconds, text] : table) {
    EXPECT_EQ(TimeOf(milliseconds), text);
  }
}

std::string TextByTheCLibrary(std::time_t seconds) {
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S.000Z", &parts);
  return text.data();
}

TEST(UtcTime, DaysAndMinutesAreThoseOfTheCLibrary) {
  constexpr std::time_t kDay = 86'400;
  constexpr std::time_t kLastDay = 106'000 * kDay;  // the clock ends two years later
  for (std::time_t seconds = 0; seconds < kLastDay; seconds += kDay) {
    ASSERT_EQ(TimeOf(seconds * 1000), TextByTheCLibrary(seconds));
  }
  for (std::time_t seconds = 0; seconds < kDay; seconds += 60) {
    ASSERT_EQ(TimeOf(seconds * 1000), TextByTheCLibrary(seconds));
  }
}

TEST(UtcTime, TimeZoneOfTheEnvironmentChangesNothing) {
  for (const char* const zone : {"right/UTC", "Asia/Tokyo"}) {
    setenv("TZ", zone, 1);
    tzset();
    EXPECT_EQ(TimeOf(1'795'285'445'678), "2026-11-21T18:24:05.678Z") << zone;
  }
  unsetenv("TZ");
  tzset();
}

TEST(UtcTime, FractionsOfAMillisecondAreCutOff) {
  using std::chrono::microseconds;
  const std::chrono::system_clock::time_point epoch;
  EXPECT_EQ(UtcTime(epoch + microseconds(1'999)), "1970-01-01T00:00:00.001Z");
  EXPECT_EQ(UtcTime(epoch - microseconds(1)), "1969-12-31T23:59:59.999Z");
}

}  // namespace
}  // namespace Tavrin
