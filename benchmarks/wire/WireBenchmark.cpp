// What an exchange and a whole inventory cost over the wire, beside the ways a user would otherwise
// take: bare calls of FreeIPMI's library, and a process of ipmi-raw or of ipmitool for each
// command. All of them talk to one simulated enclosure, in turns, so that a busy machine slows all
// alike, and on one processor, so that placement does not decide. Prints JSON.
//
// usage: wire_benchmark

#include <sched.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/support/Median.h"
#include "benchmarks/support/Process.h"
#include "benchmarks/support/WholeInventory.h"
#include "benchmarks/wire/Alternatives.h"
#include "benchmarks/wire/LargestEnclosure.h"
#include "benchmarks/wire/OverheardConversation.h"
#include "module/smm/smm_inventory/SMMInventory.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "tests/doubles/Pauses.h"
#include "tests/support/Relay.h"

namespace Tavrin {
namespace {

using Json = nlohmann::ordered_json;
using Arguments = std::vector<std::string>;

constexpr int kRounds = 40;
/// An exchange takes a fraction of the time of a process, so a round has room for many pairs.
constexpr int kPairsOfARound = 50;
constexpr int kInventoryRounds = 5;
constexpr const char* kSuiteKey = "IPMI_CIPHER_SUITE";
/// -1 leaves the choice to the library, which asks for 3.
constexpr int kSuiteOfTheCaller = -1;
/// Authenticates the messages of a session and does not encrypt them.
constexpr int kReadableSuite = 2;

/// GetChassisPowerConsumption's request.
IPMICOMMAND ChassisPowerRequest() { return {0x98, {0x0D}, 0x32}; }

void QueryPower(SMMInventory& inventory) {
  ChassisPowerCon power;
  if (inventory.GetChassisPowerConsumption(power) != StatusCode::Success) {
    throw std::runtime_error("a query failed");
  }
}

/// The costs of one way, one a run.
class Samples {
 public:
  void Add(const Cost& cost) {
    wall_.push_back(cost.wallSeconds);
    processor_.push_back(cost.processorSeconds);
  }
  [[nodiscard]] Cost Median() const { return {Tavrin::Median(wall_), Tavrin::Median(processor_)}; }
  [[nodiscard]] const std::vector<double>& Wall() const { return wall_; }

 private:
  std::vector<double> wall_;
  std::vector<double> processor_;
};

Json ToJson(const Cost& cost) {
  return {{"wall_s", cost.wallSeconds}, {"processor_s", cost.processorSeconds}};
}

Cost Measure(const std::function<void()>& run) {
  const Meter meter;
  run();
  return meter.Read();
}

/// Calls both, the second one first at every other turn.
void InTurns(int turn, const std::function<void()>& first, const std::function<void()>& second) {
  const bool isEven = turn % 2 == 0;
  (isEven ? first : second)();
  (isEven ? second : first)();
}

double MedianRatio(const std::vector<double>& above, const std::vector<double>& below) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < above.size(); ++i) {
    ratios.push_back(above[i] / below[i]);
  }
  return Median(ratios);
}

Json CompareExchanges(const TavrinConnection::ConnectionInfo& settings, SMMInventory& inventory) {
  const IPMICOMMAND request = ChassisPowerRequest();
  const CommandLines commandLines(settings);
  Samples bare;
  Samples library;
  Samples ipmiRaw;
  Samples ipmitool;
  const auto runBare = [&] { bare.Add(Measure([&] { BareExchange(settings, request); })); };
  const auto runLibrary = [&] { library.Add(Measure([&] { QueryPower(inventory); })); };
  for (int round = 0; round < kRounds; ++round) {
    for (int pair = 0; pair < kPairsOfARound; ++pair) {
      InTurns(pair, runBare, runLibrary);
    }
    InTurns(
        round, [&] { ipmiRaw.Add(RunToEnd(commandLines.IpmiRaw(request))); },
        [&] { ipmitool.Add(RunToEnd(commandLines.Ipmitool(request))); });
  }
  const double libraryWall = library.Median().wallSeconds;
  return {{"bare", ToJson(bare.Median())},
          {"library", ToJson(library.Median())},
          {"ipmi_raw", ToJson(ipmiRaw.Median())},
          {"ipmitool", ToJson(ipmitool.Median())},
          {"library_to_bare_median_of_pairs", MedianRatio(library.Wall(), bare.Wall())},
          {"ipmi_raw_to_library", ipmiRaw.Median().wallSeconds / libraryWall},
          {"ipmitool_to_library", ipmitool.Median().wallSeconds / libraryWall}};
}

std::vector<RoundTrip> RoundTripsOf(Relay& relay, const std::function<void()>& run) {
  const OverheardConversation conversation(relay);
  run();
  return conversation.RoundTrips();
}

/// The same exchange twice: as it is, to count, and not encrypted, to tell what each datagram is
/// for.
Json CountRoundTrips(Relay& relay, SMMInventory& inventory,
                     const TavrinConnection::ConnectionInfo& throughRelay) {
  const auto query = [&inventory] { QueryPower(inventory); };
  const std::vector<RoundTrip> encrypted = RoundTripsOf(relay, query);
  Standalone::SetGlobalConfigValue(kSuiteKey, kReadableSuite);
  const std::vector<RoundTrip> readable = RoundTripsOf(relay, query);
  Standalone::SetGlobalConfigValue(kSuiteKey, kSuiteOfTheCaller);
  if (encrypted.empty() || readable.size() != encrypted.size()) {
    throw std::runtime_error("an encrypted exchange has another number of round trips, or none");
  }
  const CommandLines commandLines(throughRelay);
  const auto count = [&relay](const Arguments& arguments) {
    return RoundTripsOf(relay, [&arguments] { RunToEnd(arguments); }).size();
  };
  Json trips = Json::array();
  for (std::size_t i = 0; i < readable.size(); ++i) {
    trips.push_back({{"purpose", readable[i].purpose},
                     {"request_bytes", encrypted[i].requestBytes},
                     {"answer_bytes", encrypted[i].answerBytes}});
  }
  return {{"library", trips},
          {"ipmi_raw", count(commandLines.IpmiRaw(ChassisPowerRequest()))},
          {"ipmitool", count(commandLines.Ipmitool(ChassisPowerRequest()))}};
}

long PeakMemory(Arguments arguments) {
  arguments.insert(arguments.begin(), PEAK_MEMORY);
  const Listened listened = Listen(arguments);
  if (listened.exitCode != 0) {
    throw std::runtime_error("no memory was measured: " + arguments.at(1) + " failed");
  }
  return std::stol(listened.lines.back().text);
}

long PeakMemoryOfBiggest(const std::vector<Arguments>& lines) {
  long peak = 0;
  for (const Arguments& line : lines) {
    peak = std::max(peak, PeakMemory(line));
  }
  return peak;
}

Cost RunAll(const std::vector<Arguments>& lines) {
  Cost sum;
  for (const Arguments& line : lines) {
    sum = sum + RunToEnd(line);
  }
  return sum;
}

/// The commands of a whole inventory, as they pass the relay.
std::vector<IPMICOMMAND> CommandsOfInventory(Relay& relay,
                                             const TavrinConnection::ConnectionInfo& throughRelay) {
  Standalone::SetGlobalConfigValue(kSuiteKey, kReadableSuite);
  const OverheardConversation conversation(relay);
  ReadWholeInventory(throughRelay);
  Standalone::SetGlobalConfigValue(kSuiteKey, kSuiteOfTheCaller);
  return conversation.Commands();
}

Json CountInventory(Relay& relay, const TavrinConnection::ConnectionInfo& throughRelay) {
  const std::size_t sessionsBefore = relay.SessionsAskedFor();
  const std::uint64_t pausedBefore = Double::pausedSeconds;
  ReadWholeInventory(throughRelay);
  return {{"exchanges", relay.SessionsAskedFor() - sessionsBefore},
          {"paused_s", Double::pausedSeconds - pausedBefore}};
}

/// The processes that read a whole inventory in one way, one after the other.
struct Way {
  const char* name;
  std::vector<Arguments> direct;
  std::vector<Arguments> throughRelay;
  Samples samples = {};
};

Arguments LibraryLine(std::uint16_t port) { return {READ_ENCLOSURE, std::to_string(port)}; }

using Tool = Arguments (CommandLines::*)(const IPMICOMMAND& request) const;

std::vector<Arguments> LinesOf(Tool tool, const CommandLines& commandLines,
                               const std::vector<IPMICOMMAND>& commands) {
  std::vector<Arguments> lines;
  lines.reserve(commands.size());
  for (const IPMICOMMAND& command : commands) {
    lines.push_back((commandLines.*tool)(command));
  }
  return lines;
}

std::size_t DatagramsOf(Relay& relay, const std::vector<Arguments>& lines) {
  const OverheardConversation conversation(relay);
  RunAll(lines);
  return conversation.Datagrams();
}

Json CompareInventories(Relay& relay, const LargestEnclosure& smm) {
  const auto throughRelay = SettingsFor(relay.Port());
  const std::vector<IPMICOMMAND> commands = CommandsOfInventory(relay, throughRelay);
  Json result = CountInventory(relay, throughRelay);
  if (result["exchanges"] != commands.size()) {
    throw std::runtime_error("not every command of the inventory was overheard");
  }
  const CommandLines direct(SettingsFor(smm.Port()));
  const CommandLines relayed(throughRelay);
  std::array ways = {Way{"library", {LibraryLine(smm.Port())}, {LibraryLine(relay.Port())}},
                     Way{"ipmi_raw", LinesOf(&CommandLines::IpmiRaw, direct, commands),
                         LinesOf(&CommandLines::IpmiRaw, relayed, commands)},
                     Way{"ipmitool", LinesOf(&CommandLines::Ipmitool, direct, commands),
                         LinesOf(&CommandLines::Ipmitool, relayed, commands)}};
  for (int round = 0; round < kInventoryRounds; ++round) {
    for (Way& way : ways) {
      way.samples.Add(RunAll(way.direct));
    }
  }
  for (const Way& way : ways) {
    Json entry = ToJson(way.samples.Median());
    entry["peak_memory_kib"] = PeakMemoryOfBiggest(way.direct);
    entry["datagrams"] = DatagramsOf(relay, way.throughRelay);
    result[way.name] = entry;
  }
  return result;
}

/// Holds this process, and all that it starts from now on, on one processor. Left to the scheduler,
/// client and controller are by chance on one or on two, where an exchange takes half as long
/// again.
void HoldOnOneProcessor() {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof(allowed), &allowed) != 0) {
    throw std::runtime_error("the processors of this process are not known");
  }
  std::size_t first = 0;
  while (!CPU_ISSET(first, &allowed)) {
    ++first;
  }
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(first, &one);
  if (sched_setaffinity(0, sizeof(one), &one) != 0) {
    throw std::runtime_error("this process cannot be held on one processor");
  }
}

void Run() {
  HoldOnOneProcessor();
  ConfigureForSimulator();
  const LargestEnclosure smm;
  Relay relay(smm.Port());
  const auto direct = SettingsFor(smm.Port());
  const auto throughRelay = SettingsFor(relay.Port());
  SMMInventory inventory(direct);
  SMMInventory relayed(throughRelay);
  Json result;
  result["exchange"] = CompareExchanges(direct, inventory);
  result["round_trips"] = CountRoundTrips(relay, relayed, throughRelay);
  result["inventory"] = CompareInventories(relay, smm);
  std::cout << result.dump(2) << "\n";
}

}  // namespace
}  // namespace Tavrin

int main() {
  try {
    Tavrin::Run();
  } catch (const std::exception& exception) {
    std::cerr << "wire_benchmark: " << exception.what() << "\n";
    return EXIT_FAILURE;
  }
}
