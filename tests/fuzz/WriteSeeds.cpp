// Turns the answers that are kept as files into inputs that the fuzzer of queries starts from, one
// file each in the directory named.
// usage: write_seeds DIRECTORY

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/answers/AnswerFile.h"
#include "tests/doubles/Operations.h"
#include "tests/doubles/PlatformDouble.h"

namespace Tavrin::Fuzz {
namespace {

/// FuzzQueries.cpp takes the bytes of answers from the front, and all numbers from the back.
std::string SeedOf(const Answers::AnswerFile& file) {
  std::string answers;
  std::string numbers;
  const auto add = [&](auto... more) { (numbers.push_back(static_cast<char>(more)), ...); };
  const auto addExchange = [&](int completionCode, const Answers::Bytes& answer) {
    constexpr int kConnects = 0;
    constexpr int kAnswers = 0;
    add(kConnects, kAnswers, completionCode, answer.size());
    answers.append(answer.begin(), answer.end());
  };

  // Connection kind, generation, log threshold and attempts, by their places in the lists there.
  add(0, file.smmType == 7 ? 2 : file.smmType, 0, 0);
  addExchange(0, Double::StatusAnswer(static_cast<std::uint8_t>(file.platformId),
                                      file.psuSlotCount == 9 ? 3 : 4));
  const auto& operation = Double::OperationNamed<SMMInventory>(file.operation);
  add(&operation - Double::Operations<SMMInventory>().data(), 0, file.argument - 1);
  for (const Answers::Exchange& exchange : file.exchanges) {
    addExchange(exchange.answer.at(0), {exchange.answer.begin() + 1, exchange.answer.end()});
  }
  return answers + std::string(numbers.rbegin(), numbers.rend());
}

void WriteSeeds(const std::filesystem::path& directory) {
  std::filesystem::create_directories(directory);
  for (const std::filesystem::path& path : Answers::FilesOfEnding("answer")) {
    const Answers::AnswerFile answers = Answers::ReadAnswerFile(path);
    std::ofstream file(directory / (answers.operation + '-' + path.stem().string()));
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file << SeedOf(answers);
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
