#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Tavrin::Answers {

using Bytes = std::vector<std::uint8_t>;

/// One request, as network function, command and data, and its answer, as completion code and data.
struct Exchange {
  Bytes request;
  Bytes answer;
};

/// A conversation that an SMM had, or could have. The folders beside this file are named after the
/// operations of SMMInventory; each file `NAME.answer` in them holds lines of a key and its value:
///
///     # what this is
///     smmType 1
///     platformId 253
///     psuSlotCount 9
///     argument 3
///     request 32 98 0D
///     answer 00 0D 12 34 56 78 9A BC
///
/// `argument` is the node number or the PSU to select and is left out by other operations; request
/// and answer are hexadecimal and may come several times. `NAME.expected` beside it says what the
/// operation returns, and then what its output holds (see tests/doubles/RecordText.h). Texts and
/// numbers of the output are "before" and -1 when the operation is called, lists are empty.
struct AnswerFile {
  std::string operation;
  std::int32_t smmType = 0;
  std::int32_t platformId = 254;
  std::uint64_t psuSlotCount = 2;
  std::int16_t argument = 0;
  std::vector<Exchange> exchanges;
};

/// All files of that ending ("answer", "expected"), in the order of their names.
std::vector<std::filesystem::path> FilesOfEnding(const std::string& ending);

/// Throws std::runtime_error for a file that does not have that form.
AnswerFile ReadAnswerFile(const std::filesystem::path& path);

}  // namespace Tavrin::Answers
