// What one run of smm-inventory takes over simulated enclosures of 12 nodes and 9 PSU slots, which
// share the processors with it, every pause waited for; and beside it ipmi-raw, which sends them
// the same commands without pauses, with a range of hosts and the fan-out of its own. The
// enclosures are at 127.0.1.1, 127.0.1.2 and so on. Prints JSON:
// - commands: how many the tool sends to each enclosure.
// - runs: over 1, 8 and 64 enclosures. wall_s, cpu_s and peak_memory_kib of the tool, and
//   simulators_cpu_s; ipmi_raw_s and ipmi_raw_sessions_s, with one session a host and with one for
//   each command, as the tool has it.
// - silent: a run over hosts of which none answers.
// - last_line: when the last line of an enclosure came in a run over 63, and in one over the same
//   with a host in front that does not answer.
//
// usage: fleet_simulated

#include <array>
#include <cstdlib>
#include <deque>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/support/Median.h"
#include "benchmarks/support/Process.h"
#include "benchmarks/wire/Alternatives.h"
#include "benchmarks/wire/LargestEnclosure.h"
#include "benchmarks/wire/OverheardConversation.h"
#include "support/TemporaryFile.h"
#include "tests/support/Relay.h"
#include "tests/support/UdpPort.h"

namespace Tavrin {
namespace {

using Json = nlohmann::ordered_json;
using Arguments = std::vector<std::string>;
using Commands = std::vector<IPMICOMMAND>;

constexpr std::array<std::size_t, 3> kCounts = {1, 8, 64};
constexpr std::size_t kMost = kCounts.back();
constexpr int kIpmiRawRounds = 3;

// What the tool ends with.
constexpr int kEverythingRead = 0;
constexpr int kSomethingNotRead = 1;
constexpr int kNobodyReached = 4;

/// Enclosures that share a port, so that one range names them.
class Simulators {
 public:
  Simulators() {
    for (std::size_t number = 1; number <= kMost; ++number) {
      const std::uint16_t port = simulators_.empty() ? 0 : simulators_.front().Port();
      simulators_.emplace_back("127.0.1." + std::to_string(number), port);
    }
  }

  /// The first ones. Their address is a range, as both tools write it.
  TavrinConnection::ConnectionInfo First(std::size_t count) const {
    TavrinConnection::ConnectionInfo settings = SettingsFor(simulators_.front().Port());
    settings.address = "127.0.1." + (count == 1 ? "1" : "[1-" + std::to_string(count) + "]");
    return settings;
  }

 private:
  std::deque<LargestEnclosure> simulators_;
};

std::string HostsOf(const TavrinConnection::ConnectionInfo& settings) {
  return settings.address + ":" + std::to_string(settings.port);
}

/// What a run of the tool took, and the lines that it printed.
struct ToolRun : Listened {
  long peakKib = 0;
};

/// Runs smm-inventory, each time for everything that it reads.
class Tool {
 public:
  /// Throws std::runtime_error unless the tool ends with that exit code.
  ToolRun Read(const std::string& hosts, int exitCode, const Arguments& options = {}) const {
    ToolRun run{Listen(Joined(Line(hosts), options))};
    if (run.exitCode != exitCode) {
      throw std::runtime_error("smm-inventory ended with exit code " +
                               std::to_string(run.exitCode) + "; expected " +
                               std::to_string(exitCode) + " for " + hosts);
    }
    run.peakKib = std::stol(run.lines.back().text);
    run.lines.pop_back();
    return run;
  }

 private:
  Arguments Line(const std::string& hosts) const {
    return {PEAK_MEMORY,       SMM_INVENTORY,
            "--host",          hosts,
            "--user",          user_.userName,
            "--password-file", password_.Path(),
            "--workaround",    "open-session-privilege",
            "--format",        "jsonl"};
  }

  const TavrinConnection::ConnectionInfo user_ = SettingsFor(0);
  TemporaryFile password_{user_.password + "\n"};
};

/// What the tool asks of an enclosure, as it passes a relay.
Commands CommandsOf(const Tool& tool) {
  const LargestEnclosure smm;
  Relay relay(smm.Port());
  const OverheardConversation conversation(relay);
  tool.Read(HostsOf(SettingsFor(relay.Port())), kEverythingRead,
            {"--no-ping", "--cipher-suite", "2"});
  return conversation.Commands();
}

/// The processes for the commands, one for all and one for each.
Json CompareIpmiRaw(const TavrinConnection::ConnectionInfo& hosts, const Commands& commands) {
  const CommandLines commandLines(hosts);
  const TemporaryFile requests(IpmiRawFile(commands));
  std::vector<double> inOneSession;
  for (int round = 0; round < kIpmiRawRounds; ++round) {
    inOneSession.push_back(RunToEnd(commandLines.IpmiRaw(requests)).wallSeconds);
  }
  double inSessions = 0;
  for (const IPMICOMMAND& command : commands) {
    inSessions += RunToEnd(commandLines.IpmiRaw(command)).wallSeconds;
  }
  return {{"ipmi_raw_s", Median(inOneSession)}, {"ipmi_raw_sessions_s", inSessions}};
}

Json ReadFirst(std::size_t count, const Simulators& simulators, const Tool& tool) {
  const double before = ProcessorSecondsOfSimulators(kMost);
  const ToolRun run = tool.Read(HostsOf(simulators.First(count)), kEverythingRead);
  const double ofSimulators = ProcessorSecondsOfSimulators(kMost) - before;
  if (run.lines.size() != count) {
    throw std::runtime_error("smm-inventory did not print a line for each enclosure");
  }
  return {{"enclosures", count},
          {"wall_s", run.cost.wallSeconds},
          {"cpu_s", run.cost.processorSeconds},
          {"simulators_cpu_s", ofSimulators},
          {"peak_memory_kib", run.peakKib}};
}

double SecondsForSilence(const Tool& tool) {
  const std::deque<UdpPort> silent(kMost);
  std::string hosts;
  for (const UdpPort& port : silent) {
    hosts += (hosts.empty() ? "127.0.0.1:" : ",127.0.0.1:") + port.Text();
  }
  return tool.Read(hosts, kNobodyReached).cost.wallSeconds;
}

/// When the last line came of those that are read. Throws std::runtime_error unless so many are.
double LastLine(const ToolRun& run, std::size_t count) {
  double last = 0;
  std::size_t linesRead = 0;
  for (const PrintedLine& line : run.lines) {
    if (!Json::parse(line.text).contains("failure")) {
      last = line.atSeconds;
      ++linesRead;
    }
  }
  if (linesRead != count) {
    throw std::runtime_error(std::to_string(linesRead) + " enclosures were read; expected " +
                             std::to_string(count));
  }
  return last;
}

Json CompareLastLines(const Simulators& simulators, const Tool& tool) {
  constexpr std::size_t kLiving = kMost - 1;
  const UdpPort silent;
  const std::string living = HostsOf(simulators.First(kLiving));
  const ToolRun without = tool.Read(living, kEverythingRead);
  const ToolRun with = tool.Read("127.0.0.1:" + silent.Text() + "," + living, kSomethingNotRead);
  return {{"enclosures", kLiving},
          {"without_silent_s", LastLine(without, kLiving)},
          {"with_silent_s", LastLine(with, kLiving)}};
}

void Measure() {
  const Tool tool;
  const Commands commands = CommandsOf(tool);
  Json result = {{"commands", commands.size()}};
  const Simulators simulators;
  for (const std::size_t count : kCounts) {
    Json run = ReadFirst(count, simulators, tool);
    run.update(CompareIpmiRaw(simulators.First(count), commands));
    result["runs"].push_back(run);
  }
  result["silent"] = {{"hosts", kMost}, {"wall_s", SecondsForSilence(tool)}};
  result["last_line"] = CompareLastLines(simulators, tool);
  std::cout << result.dump(2) << "\n";
}

}  // namespace
}  // namespace Tavrin

int main() {
  try {
    Tavrin::Measure();
  } catch (const std::exception& exception) {
    std::cerr << "fleet_simulated: " << exception.what() << "\n";
    return EXIT_FAILURE;
  }
}
