// Turns the answers that are kept as files, and the scenarios, into inputs that the fuzzers start
// from: one file each in the folders queries and parsers of the directory named.
// usage: write_seeds DIRECTORY

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/answers/AnswerFile.h"
#include "tests/doubles/Operations.h"
#include "tests/doubles/PlatformDouble.h"

namespace Tavrin::Fuzz {
namespace {

using Answers::AnswerFile;
using Answers::Bytes;
namespace fs = std::filesystem;

void Write(const fs::path& path, const Bytes& bytes) {
  fs::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

/// As FuzzQueries.cpp reads it: bytes of answers from the front, numbers from the back.
Bytes QuerySeedOf(const AnswerFile& file) {
  const auto& operation = Double::OperationNamed<SMMInventory>(file.operation);
  const auto place = &operation - Double::Operations<SMMInventory>().data();
  const int generation = file.smmType == 7 ? 2 : file.smmType;
  const int argument = file.argument + 1;
  Bytes answers;
  std::vector<std::ptrdiff_t> numbers = {0, generation, 0, 0};
  const auto add = [&](int completionCode, const Bytes& answer) {
    constexpr int kConnects = 0;
    constexpr int kAnswers = 0;
    const auto size = static_cast<std::ptrdiff_t>(answer.size());
    numbers.insert(numbers.end(), {kConnects, kAnswers, completionCode, size});
    answers.insert(answers.end(), answer.begin(), answer.end());
  };
  add(0, Double::StatusAnswer(static_cast<std::uint8_t>(file.platformId),
                              file.psuSlotCount == 9 ? 3 : 4));
  numbers.insert(numbers.end(), {place, argument / 256, argument % 256});
  for (const Answers::Exchange& exchange : file.exchanges) {
    add(exchange.answer.at(0), {exchange.answer.begin() + 1, exchange.answer.end()});
  }
  std::transform(numbers.rbegin(), numbers.rend(), std::back_inserter(answers),
                 [](std::ptrdiff_t number) { return static_cast<std::uint8_t>(number); });
  return answers;
}

void WriteScenarioSeed(const fs::path& path, const fs::path& directory) {
  std::ifstream file(path);
  Bytes seed = {'j'};
  seed.insert(seed.end(), std::istreambuf_iterator<char>(file), {});
  Write(directory / "parsers" / path.stem(), seed);
}

void WriteSeeds(const fs::path& directory) {
  for (const fs::path& path : Answers::FilesOfEnding("answer")) {
    const AnswerFile file = Answers::ReadAnswerFile(path);
    Write(directory / "queries" / (file.operation + '-' + path.stem().string()), QuerySeedOf(file));
  }
  for (const auto& entry : fs::directory_iterator(SCENARIOS_DIRECTORY)) {
    WriteScenarioSeed(entry.path(), directory);
  }
}

}  // namespace
}  // namespace Tavrin::Fuzz

int main(int argc, char** argv) {
  if (argc != 2) {
    return 2;
  }
  Tavrin::Fuzz::WriteSeeds(argv[1]);
  return 0;
}
