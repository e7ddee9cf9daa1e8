// What each operation of SMMInventory costs besides the waiting for the SMM, for both generations
// and with the log off (threshold 0) and at its most verbose (threshold 4). Doubles stand behind
// the platform, and pauses take no time.
//
// Beside the time of one query, each benchmark counts, per query:
// - allocations, allocated_bytes: everything that was asked of `operator new` from the call of the
//   operation to its end: by the library, by what the platform's signatures force (the vectors of
//   request and answer, the string for a source path), by the output argument, which is
//   a fresh one for each query, and by the logger, which keeps each line in a stream. The client
//   and the configuration allocate nothing of their own.
// - lines: log objects constructed. 0 at threshold 0, where nothing is to be composed either.
// - exchanges: requests sent.
// - above_double_ns, for a query of a single exchange with the log off: how much longer it takes
//   than the same calls of the client with the same arguments, made without the library.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/support/Median.h"
#include "module/smm/smm_inventory/SMMInventory.h"
#include "tests/doubles/Allocations.h"
#include "tests/doubles/Operations.h"
#include "tests/doubles/PlatformDouble.h"

namespace Tavrin {
namespace {

using Query = std::function<int(SMMInventory&)>;

int Construct(SMMInventory& /*inventory*/) {
  static const TavrinConnection::ConnectionInfo settings = Double::TestSettings();
  return SMMInventory(settings).GetNodeNub() > 0 ? StatusCode::Success : StatusCode::NoUsableResult;
}

int GetNodeNub(SMMInventory& inventory) {
  return inventory.GetNodeNub() > 0 ? StatusCode::Success : StatusCode::NoUsableResult;
}

/// The operation with a fresh output, and of the second node or PSU.
Query QueryOf(const Double::Operation<SMMInventory>& operation) {
  return [&operation](SMMInventory& inventory) {
    Double::Output output = operation.fresh;
    return operation.call(inventory, 2, output);
  };
}

/// What the library passes to its client.
constexpr unsigned long kCipherSuite = 3;

/// The client's part of an exchange, with the arguments that the library gives it.
class BareExchange {
 public:
  explicit BareExchange(IPMICOMMAND request) : request_(std::move(request)) {}

  void operator()() const {
    std::vector<std::uint8_t> response;
    std::uint8_t completionCode = 0;
    IpmiClient client(settings_.address, settings_.userName, settings_.password, port_,
                      kCipherSuite);
    benchmark::DoNotOptimize(client.connect());
    client.send(request_, response, completionCode);
    client.disconnect();
    benchmark::DoNotOptimize(response.data());
  }

 private:
  TavrinConnection::ConnectionInfo settings_ = Double::TestSettings();
  std::string port_ = std::to_string(settings_.port);
  IPMICOMMAND request_;
};

/// The time that one of many calls in a row takes.
template <typename Call>
double NanosecondsPerCall(Call call) {
  constexpr int kCalls = 500;
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < kCalls; ++i) {
    call();
  }
  const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - begin;
  return elapsed.count() / kCalls;
}

/// The median of many differences, each between two measurements right after one another, so that
/// what else the machine does disturbs both alike or one difference among many.
double NanosecondsAboveDouble(SMMInventory& inventory, const Query& query,
                              const BareExchange& bareExchange) {
  constexpr std::size_t kPairs = 101;
  std::vector<double> differences(kPairs);
  for (double& difference : differences) {
    const double whole = NanosecondsPerCall([&] { benchmark::DoNotOptimize(query(inventory)); });
    difference = whole - NanosecondsPerCall(bareExchange);
  }
  return Median(differences);
}

/// What one query does, with the same answers. To write it down takes allocations, too.
Double::Happenings HappeningsOf(SMMInventory& inventory, const Query& query) {
  Double::Platform& platform = Double::ThePlatform();
  const auto answerTo = std::exchange(platform.answerTo, nullptr);
  platform.improvise = [&answerTo] {
    Double::Exchange exchange;
    exchange.onRequest = [&answerTo](Double::Exchange& sent) {
      sent.response = answerTo(sent.Request());
    };
    return exchange;
  };
  platform.ForgetWhatHappened();
  query(inventory);
  platform.answerTo = answerTo;
  platform.improvise = nullptr;
  return platform;
}

void Measure(benchmark::State& state, SMMInventory inventory, const Query& query) {
  const Double::Happenings happenings = HappeningsOf(inventory, query);
  const AllocationCount allocationsBefore = AllocationsSoFar();
  const int status = query(inventory);
  const AllocationCount allocations = AllocationsSoFar();
  if (status != StatusCode::Success) {
    state.SkipWithError("the query failed");
    return;
  }

  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(query(inventory));
  }

  state.counters["allocations"] =
      static_cast<double>(allocations.allocations - allocationsBefore.allocations);
  state.counters["allocated_bytes"] =
      static_cast<double>(allocations.bytes - allocationsBefore.bytes);
  state.counters["lines"] = static_cast<double>(happenings.lines.size());
  state.counters["exchanges"] = static_cast<double>(happenings.exchanges.size());
  if (happenings.exchanges.size() == 1 && Double::ThePlatform().logThreshold == 0) {
    const BareExchange bareExchange(happenings.exchanges.front().Request());
    state.counters["above_double_ns"] = NanosecondsAboveDouble(inventory, query, bareExchange);
  }
}

void PlayEnclosure(SMMIype generation, std::int64_t logThreshold) {
  Double::ThePlatform().answerTo = Double::SampleAnswersOf(generation);
  Double::ThePlatform().smmType = generation;
  Double::ThePlatform().logThreshold = static_cast<unsigned int>(logThreshold);
}

void MeasureOperation(benchmark::State& state, const Query& query) {
  PlayEnclosure(state.range(0) == 2 ? SMM_SECOND_GENERATION : SMM_FIRST_GENERATION, state.range(1));
  Measure(state, SMMInventory(Double::TestSettings()), query);
}

/// The longest answer that is measured, where it is logged the most often: as it came and, on a
/// second-generation SMM, once more without the bytes in front. All of it is one text.
void MeasureLongAnswer(benchmark::State& state) {
  PlayEnclosure(SMM_SECOND_GENERATION, state.range(0));
  const SMMInventory inventory(Double::TestSettings());
  const Double::Bytes longest(256, 'n');
  Double::ThePlatform().answerTo = [&](const IPMICOMMAND&) -> const Double::Bytes& {
    return longest;
  };
  Measure(state, inventory, QueryOf(Double::OperationNamed<SMMInventory>("GetSmmName")));
}

void Register(const char* name, const Query& query) {
  benchmark::RegisterBenchmark(name, MeasureOperation, query)
      ->ArgNames({"generation", "threshold"})
      ->ArgsProduct({{1, 2}, {0, 4}});
}

/// Registers all, and says their names in the context of the results, so that a reader of these
/// misses none.
void RegisterAll() {
  Register("Construction", Construct);
  std::string names = "Construction";
  for (const auto& operation : Double::Operations<SMMInventory>()) {
    Register(operation.name, QueryOf(operation));
    names += std::string(" ") + operation.name;
  }
  Register("GetNodeNub", GetNodeNub);
  benchmark::AddCustomContext("operations", names + " GetNodeNub");
  benchmark::RegisterBenchmark("LongAnswer", MeasureLongAnswer)->ArgName("threshold")->Arg(4);
}

}  // namespace
}  // namespace Tavrin

int main(int argc, char** argv) {
  // A tenth of a second for each is plenty for queries of less than a microsecond. An option given
  // by the user comes later and wins.
  std::string minimumTime = "--benchmark_min_time=0.1";
  std::vector<char*> arguments(argv, argv + argc);
  arguments.insert(arguments.begin() + 1, minimumTime.data());
  arguments.push_back(nullptr);
  int count = argc + 1;

  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
    return 2;
  }
  Tavrin::RegisterAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
