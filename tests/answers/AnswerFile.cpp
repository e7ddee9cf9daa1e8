#include "tests/answers/AnswerFile.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Tavrin::Answers {
namespace {

Bytes ReadBytes(std::istream& text) {
  Bytes bytes;
  for (std::string word; text >> word;) {
    std::size_t used = 0;
    const unsigned long value = std::stoul(word, &used, 16);
    if (word.size() != 2 || used != 2) {
      throw std::runtime_error("\"" + word + "\" is no byte; expected two hexadecimal digits");
    }
    bytes.push_back(static_cast<std::uint8_t>(value));
  }
  return bytes;
}

void ReadLine(const std::string& line, AnswerFile& file) {
  std::istringstream text(line);
  std::string key;
  text >> key;
  if (key == "smmType") {
    text >> file.smmType;
  } else if (key == "platformId") {
    text >> file.platformId;
  } else if (key == "psuSlotCount") {
    text >> file.psuSlotCount;
  } else if (key == "argument") {
    text >> file.argument;
  } else if (key == "request") {
    file.exchanges.push_back({ReadBytes(text), {}});
  } else if (key == "answer" && !file.exchanges.empty()) {
    file.exchanges.back().answer = ReadBytes(text);
  } else if (!key.empty() && key[0] != '#') {
    throw std::runtime_error("\"" + line + "\" is no line of an answer file");
  }
  if (text.bad() || (text.fail() && !text.eof())) {
    throw std::runtime_error("\"" + line + "\" has no number; expected one behind the key");
  }
}

}  // namespace

std::vector<std::filesystem::path> FilesOfEnding(const std::string& ending) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(ANSWERS_DIRECTORY)) {
    if (entry.path().extension() == "." + ending) {
      paths.push_back(entry.path());
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

AnswerFile ReadAnswerFile(const std::filesystem::path& path) {
  std::ifstream input(path);
  AnswerFile file;
  file.operation = path.parent_path().filename();
  for (std::string line; std::getline(input, line);) {
    ReadLine(line, file);
  }
  return file;
}

}  // namespace Tavrin::Answers
