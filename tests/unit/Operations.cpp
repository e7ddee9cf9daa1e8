#include "tests/unit/Operations.h"

#include <new>
#include <vector>

#include "tests/answers/RecordText.h"

namespace Tavrin::Double {
namespace {

using Answers::Text;
using Answers::TextOfAll;

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

}  // namespace

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

}  // namespace Tavrin::Double
