// Queries in conversation with an SMM that the input makes up, once through the facade and once
// through the implementation. What is held against them is what SMMInventory.h says of every
// operation, and what the table of operations says of each; their values are for the unit tests.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "tests/doubles/Implementation.h"
#include "tests/doubles/Operations.h"
#include "tests/doubles/PlatformDouble.h"
#include "tests/fuzz/Require.h"

namespace Tavrin::Fuzz {
namespace {

using namespace Double;

/// What is thrown where a platform library may throw anything.
struct PlatformFault {};

// What stands for the status of an operation that throws instead of returning one.
constexpr int kRaisesBadAlloc = -1;
constexpr int kRaisesPlatformFault = -2;

/// Any other exception ends the fuzzer.
template <typename Call>
int OutcomeOf(Call call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return kRaisesBadAlloc;
  } catch (const PlatformFault&) {
    return kRaisesPlatformFault;
  }
}

/// How each attempt to connect ends, until one is not worth another.
std::vector<int> MakeUpConnectResults(FuzzedDataProvider& input) {
  constexpr int kWorthRetrying = 3;
  std::vector<int> results;
  int result = kWorthRetrying;
  for (int i = 0; i < ThePlatform().connectAttempts && result == kWorthRetrying; ++i) {
    result = input.PickValueInArray({0, kWorthRetrying, -1, 1});
    results.push_back(result);
  }
  return results;
}

/// What comes once there is a connection: an answer, none, or an exception, which can come before
/// the connection, too.
Exchange MakeUpExchange(FuzzedDataProvider& input) {
  enum class End { Answer, Silence, Exception };
  Exchange exchange;
  exchange.connectResults = MakeUpConnectResults(input);
  const End end = input.PickValueInArray({End::Answer, End::Silence, End::Exception});
  if (end == End::Answer) {
    exchange.completionCode = input.ConsumeIntegral<std::uint8_t>();
    const std::size_t length = input.ConsumeIntegral<std::uint8_t>();
    exchange.response = input.ConsumeBytes<std::uint8_t>(length);
    exchange.response.resize(length);
  } else if (end == End::Silence) {
    exchange.completionCode = 0xFF;
    exchange.sendResult = -1;
  } else if (exchange.Connects()) {
    exchange.exception = std::make_exception_ptr(PlatformFault());
  } else if (!exchange.connectResults.empty()) {
    exchange.connectResults.resize(1);
    exchange.exception = std::make_exception_ptr(PlatformFault());
  }
  return exchange;
}

void MakeUpPlatform(FuzzedDataProvider& input) {
  Platform& platform = ThePlatform();
  platform = {};
  platform.expectedSettings = TestSettings();
  platform.expectedSettings.connectionKind = input.PickValueInArray({7, 1, 0, 3, -1});
  platform.smmType = input.PickValueInArray({0, 1, 7});
  platform.logThreshold = input.PickValueInArray({4U, 0U, 1U, 2U, 3U});
  platform.connectAttempts = input.PickValueInArray({3, 1, 2, 8, 0, -1});
}

bool AdmitsExchanges() {
  const std::int32_t kind = ThePlatform().expectedSettings.connectionKind;
  return kind == 1 || kind == 7;
}

bool Throws(const Exchange& exchange) { return exchange.exception != nullptr; }

/// The statuses that StatusCode.h admits for how the last exchange went.
std::set<int> PossibleOutcomes(const Exchanges& exchanges) {
  using namespace StatusCode;
  if (ThePlatform().exchanges.empty()) {
    return AdmitsExchanges() ? std::set{UnusableAnswer}
                             : std::set{ConnectionKindNotAdmitted, UnusableAnswer, NoUsableResult};
  }
  const Exchange& last = ThePlatform().exchanges.back();
  if (Throws(last)) {
    return {kRaisesPlatformFault};
  }
  if (!last.Connects()) {
    return {NotConnected, NoUsableResult};
  }
  std::set<int> possible = {UnusableAnswer, NoUsableResult};
  const bool mayBeLeftOut = exchanges.ofNinePsus > 1 && !exchanges.untilAcknowledged;
  if (mayBeLeftOut || (last.completionCode == 0 && !last.response.empty())) {
    possible.insert(Success);
  }
  // At most two bytes are in front of an answer.
  if (ThePlatform().smmType == 1 && last.response.size() < 2) {
    possible.insert(kRaisesBadAlloc);
  }
  return possible;
}

/// What SMMInventory.h and the table say of the operation's way to the SMM.
template <typename Inventory>
void CheckExchanges(const Operation<Inventory>& operation, std::size_t nodes) {
  constexpr std::size_t kAttempts = 6;
  constexpr unsigned int kSeconds = 3;
  const Platform& platform = ThePlatform();
  const auto& [ofTwoPsus, ofNinePsus, untilAcknowledged] = operation.exchanges;
  const std::size_t ofPsus = nodes == 12 ? ofNinePsus : ofTwoPsus;
  Require(platform.exchanges.size() <= (untilAcknowledged ? kAttempts : ofPsus),
          "no more is sent than the table says");
  const bool sends = !platform.exchanges.empty();
  Require(AdmitsExchanges() ? sends || operation.argument == Argument::Node : !sends,
          "something is sent when the kind of connection admits it and the node exists");
  Require(platform.openConnections == 0, "no connection stays open");
  const std::size_t pauses = platform.pauses.size();
  Require(platform.pauses == std::vector<unsigned int>(pauses, kSeconds) &&
              pauses <= (untilAcknowledged ? kAttempts : 0),
          "pauses of three seconds are only between attempts to be acknowledged");
}

bool WasSent(const std::string& text) {
  const auto& exchanges = ThePlatform().exchanges;
  return std::any_of(exchanges.begin(), exchanges.end(), [&](const Exchange& exchange) {
    const Bytes& answer = exchange.response;
    return std::search(answer.begin(), answer.end(), text.begin(), text.end()) != answer.end();
  });
}

constexpr int kLargestNumber = 65535;

void CheckValue(const std::string& name, const std::string& value) {
  Require(IsPrintable(value) || name == "identifier", "a text is printable");
  Require(!IsDigits(value) || IsNumber(value, kLargestNumber) || WasSent(value),
          "digits are a number of two bytes in plain decimal, or the SMM's own");
}

void CheckValue(const std::string& /*name*/, std::int32_t value) {
  Require(value >= -1 && value <= kLargestNumber, "a number has two bytes, or is as it was");
}

bool IsMark(const std::string& value) { return value == "before"; }
bool IsMark(std::int32_t value) { return value == -1; }

// Each returns whether the output is as it was.

bool CheckOutput(const std::string& text) {
  CheckValue("text", text);
  return IsMark(text);
}

template <typename Record>
bool CheckOutput(const Record& record) {
  std::set<bool> marks;
  ForEachMember(record, [&](const char* name, const auto& value) {
    CheckValue(name, value);
    marks.insert(IsMark(value));
  });
  Require(marks.size() <= 1, "a record is written whole or not at all");
  return marks.count(true) == 1;
}

template <typename Record>
bool CheckOutput(const std::vector<Record>& records) {
  bool isAsItWas = true;
  for (const Record& record : records) {
    const bool isMarked = CheckOutput(record);
    Require(isAsItWas || !isMarked, "what a list held stays in front, or goes");
    isAsItWas = isMarked;
  }
  return isAsItWas;
}

template <typename Anything>
void AddRecord(Anything& /*noList*/) {}

template <typename Record>
void AddRecord(std::vector<Record>& records) {
  records.emplace_back();
}

/// Whatever an SMM did, the same query gets its answer the next time.
template <typename Inventory>
void CheckSampleAnswer(Inventory& inventory, const Operation<Inventory>& operation) {
  static const std::array answersOf = {SampleAnswersOf(SMM_FIRST_GENERATION),
                                       SampleAnswersOf(SMM_SECOND_GENERATION)};
  const auto generation = static_cast<std::size_t>(*ThePlatform().smmType);
  if (generation >= answersOf.size() || !AdmitsExchanges()) {
    return;
  }
  ThePlatform().answerTo = std::cref(answersOf[generation]);
  Output output = operation.fresh;
  Require(operation.call(inventory, 1, output) == 0 &&
              (output.index() == 0 || Text(output) != Text(operation.fresh)),
          "a sample answer succeeds and fills the output");
  ThePlatform().answerTo = nullptr;
}

/// Calls the operation and tells what came of it.
template <typename Inventory>
std::string Ask(Inventory& inventory, const Operation<Inventory>& operation, int argument) {
  ThePlatform().ForgetWhatHappened();
  Output output = operation.fresh;
  std::visit([](auto& filled) { AddRecord(filled); }, output);
  output = Marked(output);
  const std::string before = Text(output);
  const std::size_t nodes = inventory.GetNodeNub();
  const int outcome = OutcomeOf([&] { return operation.call(inventory, argument, output); });

  Require(PossibleOutcomes(operation.exchanges).count(outcome) == 1,
          "a status is one that the last exchange stands for");
  CheckExchanges(operation, nodes);
  std::visit([](const auto& filled) { CheckOutput(filled); }, output);
  // An exchange that throws has failed as well.
  const int told = outcome == kRaisesPlatformFault ? StatusCode::NotConnected : outcome;
  Require(told == 0 || told == operation.alsoWritesOn || Text(output) == before,
          "a failure leaves the output as it was");
  Require(inventory.GetNodeNub() == nodes, "the number of nodes stays what it was");

  std::string account = std::to_string(outcome) + '\n' + Text(output);
  for (const Line& line : ThePlatform().lines) {
    account += std::to_string(line.level) + line.text + '\n';
  }
  CheckSampleAnswer(inventory, operation);
  return account;
}

/// Tells all that came of it.
template <typename Inventory>
std::string Converse(const std::uint8_t* bytes, std::size_t size) {
  constexpr int kMostQueries = 4;
  FuzzedDataProvider input(bytes, size);
  MakeUpPlatform(input);
  // Construction hears the same in all its exchanges.
  const Exchange everyExchange = MakeUpExchange(input);
  ThePlatform().improvise = [&everyExchange] { return everyExchange; };
  const bool throws = AdmitsExchanges() && Throws(everyExchange);
  std::optional<Inventory> inventory;
  const int outcome = OutcomeOf([&] {
    inventory.emplace(ThePlatform().expectedSettings);
    return 0;
  });
  Require(outcome == (throws ? kRaisesPlatformFault : 0),
          "construction throws what the platform throws, and nothing else");
  ThePlatform().improvise = [&input] { return MakeUpExchange(input); };

  std::string account;
  const auto& operations = Operations<Inventory>();
  for (int i = 0; inventory && i < kMostQueries && input.remaining_bytes() > 0; ++i) {
    const auto place = input.ConsumeIntegralInRange<std::size_t>(0, operations.size() - 1);
    const int argument = static_cast<std::int16_t>(1 + input.ConsumeIntegral<std::uint16_t>());
    account += Ask(*inventory, operations[place], argument);
  }
  return account;
}

}  // namespace
}  // namespace Tavrin::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace Tavrin;
  Fuzz::Require(Fuzz::Converse<SMMInventory>(bytes, size) ==
                    Fuzz::Converse<Double::Implementation>(bytes, size),
                "the facade does what the implementation does");
  return 0;
}
