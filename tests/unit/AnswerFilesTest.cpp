#include "tests/answers/AnswerFile.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "tests/unit/InventoryTest.h"

namespace Tavrin::Double {
namespace {

using Answers::AnswerFile;

std::string ContentOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Folder and file name without the ending, in letters and digits alone.
std::string TestName(const testing::TestParamInfo<std::filesystem::path>& info) {
  std::string name = info.param.parent_path().filename().string() + '_';
  for (const char character : info.param.stem().string()) {
    name += character == '-' ? '_' : character;
  }
  return name;
}

class AnswerFiles : public InventoryTest,
                    public testing::WithParamInterface<std::filesystem::path> {
 protected:
  AnswerFiles() {
    inventory.smmType = static_cast<SMMIype>(file.smmType);
    inventory.smmStatus.platformId = file.platformId;
    inventory.psuSlotCount = file.psuSlotCount;
    inventory.nodeCount = NodeCountOf(file.platformId);
  }

  /// The text of the operation, from a client that does so with each answer of the file.
  std::string Play(Filling filling) {
    for (const Answers::Exchange& exchange : file.exchanges) {
      platform.Expect(exchange.request.at(0), exchange.request.at(1),
                      {exchange.request.begin() + 2, exchange.request.end()},
                      {exchange.answer.begin() + 1, exchange.answer.end()}, exchange.answer.at(0));
      platform.script.back().filling = filling;
    }
    return Ask(file.operation, file.argument);
  }

  static std::string Expected() {
    std::filesystem::path expected = GetParam();
    return ContentOf(expected.replace_extension(".expected"));
  }

  const AnswerFile file = Answers::ReadAnswerFile(GetParam());
};

TEST_P(AnswerFiles, GivesTheExpectedText) { EXPECT_EQ(Play(Filling::Replaces), Expected()); }

TEST_P(AnswerFiles, GivesTheExpectedTextAgainFromAClientThatAppends) {
  EXPECT_EQ(Play(Filling::Appends), Expected());
  EXPECT_EQ(Play(Filling::Appends), Expected());
}

INSTANTIATE_TEST_SUITE_P(Folder, AnswerFiles, testing::ValuesIn(Answers::FilesOfEnding("answer")),
                         TestName);

TEST(AnswerFolder, EveryExpectedTextHasItsAnswer) {
  std::vector<std::filesystem::path> expected = Answers::FilesOfEnding("expected");
  for (std::filesystem::path& path : expected) {
    path.replace_extension(".answer");
  }
  EXPECT_EQ(expected, Answers::FilesOfEnding("answer"));
}

}  // namespace
}  // namespace Tavrin::Double
