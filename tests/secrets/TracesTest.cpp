#include "tests/secrets/Traces.h"

#include <gmock/gmock.h>

namespace Tavrin {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string kSecret = "Zq7kT2mW9xVb4Hn6pR3s";

TEST(Traces, PartOfEightBytesIsNamed) {
  EXPECT_THAT(TracesOf(kSecret, "cause: W9xVb4Hn."), ElementsAre("text of W9xVb4Hn"));
}

struct Rendering {
  std::string text;
  std::string kind;
};

TEST(Traces, EveryRenderingIsFound) {
  const std::vector<Rendering> table = {
      {kSecret, "text"},
      {"x" + kSecret.substr(0, 8) + "y", "text"},
      {"x" + kSecret.substr(12) + "y", "text"},
      {"Response=Z q 7 k T 2 m W 9", "text"},
      {std::string("A=1\0P=2mW9xVb4", 14), "text"},
      {"5a71376b54326d573978566234486e3670523373", "hexadecimal"},
      {"5A71376B54326D573978566234486E3670523373", "hexadecimal"},
      {"data=0x5a 0x71 0x37 0x6b 0x54 0x32 0x6d 0x57", "hexadecimal"},
      {R"(\x5a\x71\x37\x6b\x54\x32\x6d\x57)", "hexadecimal"},
      {"5a:71:37:6b:54:32:6d:57", "hexadecimal"},
      {"WnE3a1QybVc5eFZiNEhuNnBSM3M=", "base64"},
      {"YTJtVzl4VmI0SG42cFIzc3o=", "base64"},
      {"YWIybVc5eFZiNEh6", "base64"},
      {"WnE3a1Qy\nbVc5eFZi", "base64"},
  };
  for (const Rendering& row : table) {
    const std::vector<std::string> traces = TracesOf(kSecret, row.text);
    EXPECT_THAT(traces, Not(IsEmpty())) << row.text;
    EXPECT_THAT(traces, Each(StartsWith(row.kind))) << row.text;
  }
}

TEST(Traces, OtherTextHasNone) {
  const std::vector<std::string> table = {"",
                                          "Zq7kT2m",
                                          "q7kT2mw9",
                                          "5a71376b54326d",
                                          "Mm1XOXhWYg==",
                                          "Yw8jL5nQ3cFd6Gt1zB4u",
                                          std::string(1000, 'Z')};
  for (const std::string& text : table) {
    EXPECT_THAT(TracesOf(kSecret, text), IsEmpty()) << text;
  }
}

}  // namespace
}  // namespace Tavrin
