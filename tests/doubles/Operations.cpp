#include "tests/doubles/Operations.h"

#include <algorithm>
#include <iterator>

namespace Tavrin::Double {
namespace {

void Mark(std::string& text) { text = "before"; }
void Mark(std::int32_t& number) { number = -1; }
void Mark(std::monostate& /*nothing*/) {}

template <typename Record>
void Mark(Record& record) {
  ForEachMember(record, [](const char* /*name*/, auto& value) { Mark(value); });
}

template <typename Record>
void Mark(std::vector<Record>& records) {
  for (Record& record : records) {
    Mark(record);
  }
}

bool IsFor(const IPMICOMMAND& request, const SampleAnswer& answer) {
  return answer.command == request.cmd &&
         (!answer.lastByte || (!request.data.empty() && request.data.back() == *answer.lastByte));
}

}  // namespace

std::string Text(const Output& output) {
  return std::visit([](const auto& filled) { return Text(filled); }, output);
}

Output Marked(Output output) {
  std::visit([](auto& filled) { Mark(filled); }, output);
  return output;
}

std::vector<std::string> OperationNames() {
  std::vector<std::string> names;
  for (const Operation<SMMInventory>& operation : Operations<SMMInventory>()) {
    names.emplace_back(operation.name);
  }
  return names;
}

const Operation<SMMInventory>& OperationThatSends(const IPMICOMMAND& request, SMMIype generation) {
  for (const Operation<SMMInventory>& operation : Operations<SMMInventory>()) {
    for (const SampleAnswer& answer : operation.answers) {
      if (answer.generation == generation && IsFor(request, answer)) {
        return operation;
      }
    }
  }
  throw std::logic_error("no operation sends the command " + std::to_string(request.cmd));
}

std::function<const std::vector<std::uint8_t>&(const IPMICOMMAND&)> SampleAnswersOf(
    SMMIype generation) {
  SampleAnswers answers;
  for (const Operation<SMMInventory>& operation : Operations<SMMInventory>()) {
    std::copy_if(operation.answers.begin(), operation.answers.end(), std::back_inserter(answers),
                 [=](const SampleAnswer& answer) { return answer.generation == generation; });
  }
  return [answers](const IPMICOMMAND& request) -> const std::vector<std::uint8_t>& {
    const auto found =
        std::find_if(answers.begin(), answers.end(),
                     [&](const SampleAnswer& answer) { return IsFor(request, answer); });
    if (found == answers.end()) {
      throw std::logic_error("no sample answers the command " + std::to_string(request.cmd));
    }
    return found->data;
  };
}

}  // namespace Tavrin::Double
