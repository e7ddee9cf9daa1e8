// Turns the answers that are kept as files, and the scenarios, into inputs that the fuzzers start
// from: one file each in the folders queries, decoders and parsers of the directory named.
// usage: write_seeds DIRECTORY

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/answers/AnswerFile.h"
#include "tests/doubles/Operations.h"

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

std::uint8_t PlaceOf(const std::string& operation) {
  const auto& operations = Double::Operations<SMMInventory>();
  return static_cast<std::uint8_t>(&Double::OperationNamed<SMMInventory>(operation) -
                                   operations.data());
}

/// What stands in front of the exchanges; see FuzzQueries.cpp for the places in its lists.
Bytes QueryHeader(const AnswerFile& file) {
  const std::uint8_t generation = file.smmType == 7 ? 2 : file.smmType == 1 ? 1 : 0;
  const std::uint8_t platform = file.platformId == 254 ? 1 : file.psuSlotCount == 9 ? 2 : 3;
  const std::uint8_t slots = file.psuSlotCount == 1 ? 2 : 0;
  const auto argument = static_cast<std::uint16_t>(file.argument);
  return {generation,
          platform,
          slots,
          0,
          0,
          0,
          1,
          PlaceOf(file.operation),
          static_cast<std::uint8_t>(argument % 256),
          static_cast<std::uint8_t>(argument / 256)};
}

void WriteAnswerSeeds(const fs::path& path, const fs::path& directory) {
  const AnswerFile file = Answers::ReadAnswerFile(path);
  const std::string name = file.operation + '-' + path.stem().string();
  Bytes query = QueryHeader(file);
  for (const Answers::Exchange& exchange : file.exchanges) {
    query.push_back(0);
    query.push_back(exchange.answer.at(0));
    query.push_back(static_cast<std::uint8_t>(exchange.answer.size() - 1));
    query.insert(query.end(), exchange.answer.begin() + 1, exchange.answer.end());

    Bytes decoded = exchange.answer;
    decoded[0] = 0;
    Write(directory / "decoders" / name, decoded);
  }
  Write(directory / "queries" / name, query);
}

void WriteScenarioSeed(const fs::path& path, const fs::path& directory) {
  std::ifstream file(path);
  Bytes seed = {'j'};
  seed.insert(seed.end(), std::istreambuf_iterator<char>(file), {});
  Write(directory / "parsers" / path.stem(), seed);
}

void WriteSeeds(const fs::path& directory) {
  for (const fs::path& path : Answers::FilesOfEnding("answer")) {
    WriteAnswerSeeds(path, directory);
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
