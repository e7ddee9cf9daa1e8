#include "tests/doubles/Operations.h"

namespace Tavrin::Double {
namespace {

void Mark(std::string& text) { text = "before"; }
void Mark(std::int32_t& number) { number = -1; }

template <typename Record>
void Mark(Record& record) {
  ForEachMember(record, [](const char* /*name*/, auto& value) { Mark(value); });
}

bool IsFor(const IPMICOMMAND& request, const SampleAnswer& answer) {
  return answer.command == request.cmd &&
         (!answer.lastByte || (!request.data.empty() && request.data.back() == *answer.lastByte));
}

struct Sample {
  const Operation<SMMInventory>& operation;
  const SampleAnswer& answer;
};

Sample SampleOf(const IPMICOMMAND& request, SMMIype generation) {
  for (const Operation<SMMInventory>& operation : Operations<SMMInventory>()) {
    for (const SampleAnswer& answer : operation.answers) {
      if (answer.generation == generation && IsFor(request, answer)) {
        return {operation, answer};
      }
    }
  }
  throw std::logic_error("no sample answers the command " + std::to_string(request.cmd));
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
  return SampleOf(request, generation).operation;
}

std::function<const std::vector<std::uint8_t>&(const IPMICOMMAND&)> SampleAnswersOf(
    SMMIype generation) {
  return [generation](const IPMICOMMAND& request) -> const std::vector<std::uint8_t>& {
    return SampleOf(request, generation).answer.data;
  };
}

}  // namespace Tavrin::Double
