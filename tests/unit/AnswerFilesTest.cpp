#include "tests/answers/AnswerFile.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <new>
#include <set>

#include "tests/answers/RecordText.h"
#include "tests/unit/InventoryDouble.h"

namespace Tavrin::Double {
namespace {

using Answers::AnswerFile;
using Answers::Text;
using Answers::TextOfAll;

/// Calls an operation, and returns its status and its output as text.
using Operation = std::function<std::string(SMMInventoryImpl&, std::int16_t)>;

template <typename Output, typename Call>
std::string Outcome(Output& output, std::string (*describe)(const Output&), Call call) {
  std::string status;
  try {
    status = "status " + std::to_string(call());
  } catch (const std::bad_alloc&) {
    status = "raises std::bad_alloc";
  }
  return status + '\n' + describe(output);
}

template <typename Output>
std::string TextOfOne(const Output& output) {
  return Text(output);
}

template <typename Output>
Operation Single(int (SMMInventoryImpl::*operation)(Output&), Output before) {
  return [=](SMMInventoryImpl& inventory, std::int16_t /*argument*/) {
    Output output = before;
    return Outcome(output, TextOfOne<Output>, [&] { return (inventory.*operation)(output); });
  };
}

template <typename Output>
Operation OfNode(int (SMMInventoryImpl::*operation)(unsigned long, Output&), Output before) {
  return [=](SMMInventoryImpl& inventory, std::int16_t argument) {
    Output output = before;
    return Outcome(output, TextOfOne<Output>, [&] {
      return (inventory.*operation)(static_cast<unsigned long>(argument), output);
    });
  };
}

template <typename Record>
Operation List(int (SMMInventoryImpl::*operation)(std::vector<Record>&)) {
  return [=](SMMInventoryImpl& inventory, std::int16_t /*argument*/) {
    std::vector<Record> output;
    return Outcome(output, TextOfAll<std::vector<Record>>,
                   [&] { return (inventory.*operation)(output); });
  };
}

const std::map<std::string, Operation>& Operations() {
  using Impl = SMMInventoryImpl;
  const std::string before = "before";
  static const std::map<std::string, Operation> operations = {
      {"GetSmmMT", Single(&Impl::GetSmmMT, before)},
      {"GetSmmSN", Single(&Impl::GetSmmSN, before)},
      {"GetSmmVersion", Single(&Impl::GetSmmVersion, before)},
      {"GetSmmName", Single(&Impl::GetSmmName, before)},
      {"GetChassisPowerConsumption",
       Single(&Impl::GetChassisPowerConsumption, ChassisPowerCon{before, before, before})},
      {"GetChassisPowerCap",
       Single(&Impl::GetChassisPowerCap, ChassisPowerCap{before, before, before, before, before})},
      {"GetNodePowerConsumption",
       OfNode(&Impl::GetNodePowerConsumption, ChassisPowerCon{before, before, before})},
      {"GetPSUFanSpeed", List(&Impl::GetPSUFanSpeed)},
      {"GetPSUFwInfo", List(&Impl::GetPSUFwInfo)},
      {"GetPSUStatus", List(&Impl::GetPSUStatus)},
      {"SelectPSU",
       [](SMMInventoryImpl& inventory, std::int16_t argument) {
         return "status " + std::to_string(inventory.SelectPSUImpl(argument)) + '\n';
       }},
      {"GetNodeStatus", OfNode(&Impl::GetNodeStatus, NodeStatus{before, before, before, -1})},
      {"GetSMMStatus", Single(&Impl::GetSMMStatusImp, SMMStatus{-1, -1})},
  };
  return operations;
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

class AnswerFiles : public InventoryTest,
                    public testing::WithParamInterface<std::filesystem::path> {};

TEST_P(AnswerFiles, GivesTheExpectedText) {
  const AnswerFile file = Answers::ReadAnswerFile(GetParam());
  inventory.smmType = static_cast<SMMIype>(file.smmType);
  inventory.smmStatus.platformId = file.platformId;
  inventory.psuSlotCount = file.psuSlotCount;
  inventory.nodeCount = NodeCountOf(file.platformId);
  for (const Answers::Exchange& exchange : file.exchanges) {
    ASSERT_GE(exchange.request.size(), 2U);
    ASSERT_GE(exchange.answer.size(), 1U);
    platform.Expect(exchange.request[0], exchange.request[1],
                    {exchange.request.begin() + 2, exchange.request.end()},
                    {exchange.answer.begin() + 1, exchange.answer.end()}, exchange.answer[0]);
  }

  std::filesystem::path expected = GetParam();
  expected.replace_extension(".expected");
  EXPECT_EQ(Operations().at(file.operation)(inventory, file.argument), ContentOf(expected));
}

INSTANTIATE_TEST_SUITE_P(Folder, AnswerFiles, testing::ValuesIn(Answers::FilesOfEnding("answer")),
                         TestName);

TEST(AnswerFolder, EveryOperationHasAnswers) {
  std::set<std::string> folders;
  for (const std::filesystem::path& path : Answers::FilesOfEnding("answer")) {
    folders.insert(path.parent_path().filename());
  }
  std::set<std::string> operations;
  for (const auto& [name, operation] : Operations()) {
    operations.insert(name);
  }
  EXPECT_EQ(folders, operations);
}

TEST(AnswerFolder, EveryExpectedTextHasItsAnswer) {
  std::vector<std::filesystem::path> expected = Answers::FilesOfEnding("expected");
  for (std::filesystem::path& path : expected) {
    path.replace_extension(".answer");
  }
  EXPECT_EQ(expected, Answers::FilesOfEnding("answer"));
}

}  // namespace
}  // namespace Tavrin::Double
