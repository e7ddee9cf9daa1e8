#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "report/JsonFormat.h"
#include "tests/report/ExampleReading.h"
#include "tests/report/SchemaErrors.h"

namespace Tavrin {
namespace {

std::string LineOf(const Reading& reading, std::size_t index) {
  return JsonLinesFormat().several.enclosure({reading, index, "rack07", "row 1"}, {"0.1.0"});
}

TEST(JsonLinesFormat, SummarySaysThatALineComesAsItsEnclosureEnds) {
  EXPECT_EQ(JsonLinesFormat().summary, "One JSON line an enclosure as it ends");
}

TEST(JsonLinesFormat, LineBeginsWithHostAndPosition) {
  EXPECT_THAT(LineOf(ExampleReading(), 12),
              testing::StartsWith(R"({"host":"smm1:623","index":12,"schemaVersion":2,)"));
}

TEST(JsonLinesFormat, LineIsTheDocumentOfOneEnclosureWithoutLineBreaks) {
  for (const Reading& reading : {ExampleReading(), LostReading(), FailedReading()}) {
    const std::string line = LineOf(reading, 3);
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
    EXPECT_EQ(line.back(), '\n');
    nlohmann::json document = nlohmann::json::parse(line);
    document.erase("host");
    document.erase("index");
    EXPECT_EQ(document,
              nlohmann::json::parse(JsonFormat().document({reading, 0, "", ""}, {"0.1.0"})));
  }
}

TEST(JsonLinesFormat, OnlyEnclosureIsALineToo) {
  EXPECT_EQ(JsonLinesFormat().document({ExampleReading(), 0, "", ""}, {"0.1.0"}),
            LineOf(ExampleReading(), 0));
}

TEST(JsonLinesFormat, LinesFollowTheSchemaOfTheDocument) {
  nlohmann::json halfPlaced = nlohmann::json::parse(LineOf(ExampleReading(), 1));
  halfPlaced.erase("index");
  nlohmann::json misplaced = nlohmann::json::parse(LineOf(ExampleReading(), 1));
  misplaced["index"] = -1;
  const std::vector<std::string> errors =
      SchemaErrors({LineOf(ExampleReading(), 0), LineOf(LostReading(), 1),
                    LineOf(FailedReading(), 2), halfPlaced.dump(), misplaced.dump()});
  EXPECT_THAT(errors, testing::ElementsAre("", "", "", testing::HasSubstr("'index'"),
                                           testing::HasSubstr("index: -1")));
}

}  // namespace
}  // namespace Tavrin
