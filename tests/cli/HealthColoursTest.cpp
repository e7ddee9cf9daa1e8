#include "tools/smm-inventory/terminal/HealthColours.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace Tavrin {
namespace {

TEST(HealthColours, WordOfEachFaultHasItsOwnAndWhatIsWellHasNone) {
  const std::vector<std::pair<Severity, std::string>> table = {
      {Severity::Critical, "rack07  \x1b[31mWORD\x1b[0m  what\n"},
      {Severity::Warning, "rack07  \x1b[33mWORD\x1b[0m  what\n"},
      {Severity::Unknown, "rack07  \x1b[35mWORD\x1b[0m  what\n"},
      {Severity::Ok, "rack07  WORD  what\n"}};
  for (const auto& [severity, shown] : table) {
    const HealthLine line = {severity, "rack07  ", "WORD", "  what"};
    EXPECT_EQ(HealthOnTerminal({line}, true), shown);
    EXPECT_EQ(HealthOnTerminal({line}, false), "rack07  WORD  what\n");
  }
}

TEST(HealthColours, EachLineHasItsBreak) {
  EXPECT_EQ(HealthOnTerminal({{Severity::Critical, "a  ", "CRITICAL", "  what"},
                              {Severity::Ok, "b  ", "OK", ""}},
                             true),
            "a  \x1b[31mCRITICAL\x1b[0m  what\nb  OK\n");
  EXPECT_EQ(HealthOnTerminal({}, true), "");
}

}  // namespace
}  // namespace Tavrin
