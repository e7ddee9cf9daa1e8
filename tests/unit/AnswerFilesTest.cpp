#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

#include "tests/unit/InventoryTest.h"

namespace Tavrin::Double {
namespace {

/// In the order of their names.
std::vector<std::filesystem::path> FilesOfEnding(const std::string& ending) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(ANSWERS_DIRECTORY)) {
    if (entry.path().extension() == ending) {
      paths.push_back(entry.path());
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

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

Bytes ReadBytes(std::istream& text) {
  Bytes bytes;
  for (unsigned int byte = 0; text >> std::hex >> byte;) {
    bytes.push_back(static_cast<std::uint8_t>(byte));
  }
  EXPECT_TRUE(text.eof()) << "expected bytes of two hexadecimal digits";
  return bytes;
}

/// A conversation that an SMM had, or could have; tests/answers/README.md tells the form.
struct AnswerFile {
  explicit AnswerFile(const std::filesystem::path& path) {
    std::istringstream lines(ContentOf(path));
    for (std::string key, rest; lines >> key && std::getline(lines, rest);) {
      std::istringstream text(rest);
      if (key == "request") {
        requests.push_back(ReadBytes(text));
      } else if (key == "answer") {
        answers.push_back(ReadBytes(text));
      } else if (key != "#") {
        EXPECT_TRUE(text >> numbers.at(key)) << key << " has no number";
      }
    }
    EXPECT_EQ(requests.size(), answers.size());
  }

  std::map<std::string, int> numbers = {
      {"smmType", 0}, {"platformId", 0}, {"psuSlotCount", 0}, {"argument", 0}};
  std::vector<Bytes> requests;  ///< Each as network function, command and data.
  std::vector<Bytes> answers;   ///< Each as completion code and data.
};

class AnswerFiles : public InventoryTest,
                    public testing::WithParamInterface<std::filesystem::path> {
 protected:
  AnswerFiles() {
    inventory.smmType = static_cast<SMMIype>(file.numbers.at("smmType"));
    inventory.smmStatus.platformId = file.numbers.at("platformId");
    inventory.psuSlotCount = static_cast<std::uint64_t>(file.numbers.at("psuSlotCount"));
    inventory.nodeCount = NodeCountOf(file.numbers.at("platformId"));
  }

  /// The text of the operation, from a client that does so with each answer of the file.
  std::string Play(Filling filling) {
    for (std::size_t i = 0; i < file.requests.size(); ++i) {
      const Bytes& request = file.requests[i];
      const Bytes& answer = file.answers.at(i);
      platform.Expect(request.at(0), request.at(1), {request.begin() + 2, request.end()},
                      {answer.begin() + 1, answer.end()}, answer.at(0));
      platform.script.back().filling = filling;
    }
    return Ask(GetParam().parent_path().filename(), file.numbers.at("argument"));
  }

  static std::string Expected() {
    std::filesystem::path expected = GetParam();
    return ContentOf(expected.replace_extension(".expected"));
  }

  const AnswerFile file{GetParam()};
};

TEST_P(AnswerFiles, GivesTheExpectedText) { EXPECT_EQ(Play(Filling::Replaces), Expected()); }

TEST_P(AnswerFiles, GivesTheExpectedTextAgainFromAClientThatAppends) {
  EXPECT_EQ(Play(Filling::Appends), Expected());
  EXPECT_EQ(Play(Filling::Appends), Expected());
}

INSTANTIATE_TEST_SUITE_P(Folder, AnswerFiles, testing::ValuesIn(FilesOfEnding(".answer")),
                         TestName);

TEST(AnswerFolder, EveryExpectedTextHasItsAnswer) {
  std::vector<std::filesystem::path> expected = FilesOfEnding(".expected");
  for (std::filesystem::path& path : expected) {
    path.replace_extension(".answer");
  }
  EXPECT_EQ(expected, FilesOfEnding(".answer"));
}

}  // namespace
}  // namespace Tavrin::Double
