// Queries in conversation with an SMM that the input makes up. What is held against them is what
// SMMInventory.h says of every operation, and what the table of operations says of each; what they
// make of an answer is for the unit tests.

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "module/smm/smm_inventory/SMMInventory.h"
#include "tests/doubles/Operations.h"
#include "tests/doubles/PlatformDouble.h"

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

/// The sample answers of an SMM of the generation at hand; null when it is of neither.
const std::function<const Bytes&(const IPMICOMMAND&)>* SamplesOfThePlatform() {
  static const std::array samples = {SampleAnswersOf(SMM_FIRST_GENERATION),
                                     SampleAnswersOf(SMM_SECOND_GENERATION)};
  const auto generation = static_cast<std::size_t>(*ThePlatform().smmType);
  return generation < samples.size() ? &samples[generation] : nullptr;
}

/// What comes once there is a connection: an answer, none, or an exception, which can come before
/// the connection, too.
Exchange MakeUpExchange(FuzzedDataProvider& input) {
  enum class End { Answer, Sample, Silence, Exception };
  Exchange exchange;
  exchange.connectResults = MakeUpConnectResults(input);
  const End end = input.PickValueInArray({End::Answer, End::Sample, End::Silence, End::Exception});
  const auto* const samples = SamplesOfThePlatform();
  if (end == End::Sample && samples != nullptr) {
    exchange.onRequest = [samples](Exchange& sent) { sent.response = (*samples)(sent.Request()); };
  } else if (end == End::Silence) {
    exchange.completionCode = 0xFF;
    exchange.sendResult = -1;
  } else if (end == End::Exception && !exchange.connectResults.empty()) {
    exchange.connectResults.resize(exchange.Connects() ? exchange.connectResults.size() : 1);
    exchange.exception = std::make_exception_ptr(PlatformFault());
  } else {
    exchange.completionCode = input.ConsumeIntegral<std::uint8_t>();
    const std::size_t length = input.ConsumeIntegral<std::uint8_t>();
    exchange.response = input.ConsumeBytes<std::uint8_t>(length);
    exchange.response.resize(length);
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

/// Whether the operation is one to send anything: nodes are numbered from 1.
bool IsToSend(const Operation<SMMInventory>& operation, int argument, std::size_t nodes) {
  const bool isThere = static_cast<std::size_t>(argument) - 1 < nodes;
  return AdmitsExchanges() && (operation.argument != Argument::Node || isThere);
}

/// What SMMInventory.h and the table say of the operation's way to the SMM.
void CheckExchanges(const Operation<SMMInventory>& operation, int argument, std::size_t nodes) {
  constexpr std::size_t kAttempts = 6;
  constexpr unsigned int kSeconds = 3;
  const Platform& platform = ThePlatform();
  const auto& [ofTwoPsus, ofNinePsus, untilAcknowledged] = operation.exchanges;
  const std::size_t ofPsus = nodes == 12 ? ofNinePsus : ofTwoPsus;
  Require(platform.exchanges.size() <= (untilAcknowledged ? kAttempts : ofPsus),
          "no more is sent than the table says");
  Require(platform.exchanges.empty() != IsToSend(operation, argument, nodes),
          "something is sent when the kind of connection admits it and the node exists");
  Require(platform.openConnections == 0, "no connection stays open");
  const std::size_t pauses = platform.pauses.size();
  Require(platform.pauses == std::vector<unsigned int>(pauses, kSeconds) &&
              pauses <= (untilAcknowledged ? kAttempts : 0),
          "pauses of three seconds are only between attempts to be acknowledged");
}

/// The outcome, and the output behind it.
std::pair<int, std::string> SampleOutcome(SMMInventory& inventory,
                                          const Operation<SMMInventory>& operation, int argument) {
  Output output = operation.fresh;
  const int outcome = operation.call(inventory, argument, output);
  return {outcome, Text(output)};
}

/// Whatever an SMM did, the same query gets its answer the next time.
void CheckSampleAnswer(SMMInventory& inventory, SMMInventory& unharmed,
                       const Operation<SMMInventory>& operation, int argument) {
  const auto* const samples = SamplesOfThePlatform();
  if (samples == nullptr) {
    return;
  }
  ThePlatform().answerTo = std::cref(*samples);
  const auto expected = SampleOutcome(unharmed, operation, argument);
  Require((expected.first == 0) == IsToSend(operation, argument, unharmed.GetNodeNub()),
          "a sample answer succeeds");
  Require(SampleOutcome(inventory, operation, argument) == expected,
          "a sample answer gives what it gives without a conversation before");
  ThePlatform().answerTo = nullptr;
}

/// `unharmed` heard the same in its construction, and since then sample answers alone.
void Ask(SMMInventory& inventory, SMMInventory& unharmed, const Operation<SMMInventory>& operation,
         int argument) {
  ThePlatform().ForgetWhatHappened();
  Output output = Marked(operation.fresh);
  const std::string before = Text(output);
  const std::size_t nodes = inventory.GetNodeNub();
  const int outcome = OutcomeOf([&] { return operation.call(inventory, argument, output); });

  Require(PossibleOutcomes(operation.exchanges).count(outcome) == 1,
          "a status is one that the last exchange stands for");
  CheckExchanges(operation, argument, nodes);
  // An exchange that throws has failed as well.
  const int told = outcome == kRaisesPlatformFault ? StatusCode::NotConnected : outcome;
  Require(told == 0 || told == operation.alsoWritesOn || Text(output) == before,
          "a failure leaves the output as it was");
  Require(inventory.GetNodeNub() == nodes, "the number of nodes stays what it was");
  CheckSampleAnswer(inventory, unharmed, operation, argument);
}

/// Hears the same in all its exchanges.
std::optional<SMMInventory> Construct(const Exchange& everyExchange) {
  ThePlatform().improvise = [&everyExchange] { return everyExchange; };
  const bool throws = AdmitsExchanges() && Throws(everyExchange);
  std::optional<SMMInventory> inventory;
  const int outcome = OutcomeOf([&] {
    inventory.emplace(ThePlatform().expectedSettings);
    return 0;
  });
  Require(outcome == (throws ? kRaisesPlatformFault : 0),
          "construction throws what the platform throws, and nothing else");
  return inventory;
}

void Converse(FuzzedDataProvider& input) {
  constexpr int kMostQueries = 4;
  MakeUpPlatform(input);
  const Exchange everyExchange = MakeUpExchange(input);
  std::optional<SMMInventory> inventory = Construct(everyExchange);
  std::optional<SMMInventory> unharmed = Construct(everyExchange);
  ThePlatform().improvise = [&input] { return MakeUpExchange(input); };

  const auto& operations = Operations<SMMInventory>();
  for (int i = 0; inventory && i < kMostQueries && input.remaining_bytes() > 0; ++i) {
    const auto place = input.ConsumeIntegralInRange<std::size_t>(0, operations.size() - 1);
    const int argument = static_cast<std::int16_t>(1 + input.ConsumeIntegral<std::uint16_t>());
    Ask(*inventory, *unharmed, operations[place], argument);
  }
}

}  // namespace
}  // namespace Tavrin::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  Tavrin::Fuzz::Converse(input);
  return 0;
}
