#include "tools/smm-inventory/Commands.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <string_view>
#include <vector>

#include "report/Health.h"

namespace Tavrin {
namespace {

constexpr std::array kCommands = {
    Command{"all", "", "Everything that the commands below read; the default",
            R"(Reads what identity, power, caps, nodes, fans and psus read.)",
            "-H 192.0.2.10 -U admin all", PartList(kPartsToAskFor)},
    Command{"identity", "", "Machine type, serial number, firmware version and name",
            R"(Reads machine type, serial number, firmware version and name of the SMM.)",
            "-H 192.0.2.10 -U admin identity", PartList(Part::Identity)},
    Command{
        "power", "", "Power readings of the chassis and of each node",
        R"(Reads minimum, average and maximum power of the chassis and of each node. The SMM states no
unit.)",
        "-H 192.0.2.10 -U admin --json power", PartList(Part::ChassisPower, Part::NodePower)},
    Command{
        "caps", "", "Power caps of the chassis",
        R"(Reads the power caps of the chassis: minimum and maximum of the range, protective, user's and
thermal cap. The SMM states no unit.)",
        "-H 192.0.2.10 -U admin caps", PartList(Part::PowerCaps)},
    Command{
        "nodes", "", "Status and power readings of each node",
        R"(Reads power state, width, height and permission of each node, and its minimum, average and
maximum power.)",
        "-H 192.0.2.10 -U admin nodes", PartList(Part::NodeStatus, Part::NodePower)},
    Command{
        "fans", "", "Fan readings of each PSU slot",
        R"(Reads speed and Pat value of the fans in each PSU slot, and their status. A first-generation
SMM reports one fan a PSU, as A.)",
        "-H 192.0.2.10 -U admin fans", PartList(Part::PsuFans)},
    Command{
        "psus", "", "Firmware and status flags of each PSU slot",
        R"(Reads firmware identifier, version and description of each PSU slot, and its flags: early
power-off warning (EPOW), throttle, presence and power good. A ninth PSU's flags are not
told by the SMM.)",
        "-H 192.0.2.10 -U admin psus", PartList(Part::PsuFirmware, Part::PsuStatus)},
    Command{
        kHealthCommand, "", "Whether each enclosure is well, and what is wrong, worst first",
        R"(Prints one line an enclosure, worst first: CRITICAL, WARNING, UNKNOWN or OK, and what is wrong and
where. Only what the SMM states is judged; what could not be read is UNKNOWN. --ignore leaves out
what a site knows of. The exit code is 0 when all are well, and 6 when a fault was found.)",
        "-H 'rack[01-40]' -U admin health", PartList(kHealthParts)},
    Command{
        "select-psu", " N",
        R"(Selects PSU N, from 1 to 9; says what was sent for N, and
whether the SMM acknowledged)",
        R"(Selects PSU N, from 1 to 9, and says what was sent for N and whether the SMM acknowledged it.
A first-generation SMM takes at most 3, which is sent for any greater number; platform 254 of
the second generation takes at most 2, and for a greater number none is sent. Without an
acknowledgement the request is made six times, which takes 18 seconds. This is the only
command that changes anything: -H names one SMM, and neither a range nor a group.)",
        "-H 192.0.2.10 -U admin select-psu 2", PartList(Part::PsuSelection), true},
    Command{
        "hosts", "", "The enclosures that -H, --exclude and --hosts-file name, one a line",
        R"(Prints host and port of each enclosure that -H, --exclude and --hosts-file name, in the order in
which they are asked: host:port, an IPv6 address in brackets. Nobody is asked anything.)",
        "-H 'rack[01-40],[2001:db8::1]' --exclude rack07 hosts", PartList()},
};

constexpr const char* kCommandHelp = R"(Usage: smm-inventory [OPTIONS] {}{}

{}

{}Options: {}.
smm-inventory --help lists all options; they are the same for every command.

Example:
  smm-inventory {}
)";

constexpr const char* kReadsFirst =
    R"(Like every command that reads it first shows what kind of enclosure it is: generation, platform id,
PSU slots and nodes.

)";

constexpr const char* kNeedsUser =
    "-H RANGE or --hosts-file FILE is required, and -U NAME unless that file says user=";
constexpr const char* kNeedsNoUser =
    "-H RANGE or --hosts-file FILE is required; neither user nor password is";
constexpr const char* kNeedsOneHost =
    "-H HOST is required, and -U NAME unless a --hosts-file says user= for that host";

/// How far apart a word and a command's name may be to count as one meant for the other.
constexpr std::size_t kMostTypingErrors = 2;

/// How many letters have to be put in, left out or exchanged to make one text of the other.
std::size_t Distance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (const char letter : from) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t exchanged = diagonal + (letter == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({exchanged, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

const char* NeedsOf(const Command& command) {
  if (command.isForOne) {
    return kNeedsOneHost;
  }
  return command.AsksNobody() ? kNeedsNoUser : kNeedsUser;
}

}  // namespace

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands(kCommands.begin(), kCommands.end());
  return commands;
}

const Command* FindCommand(std::string_view name) {
  const auto found =
      std::find_if(Commands().begin(), Commands().end(),
                   [name](const Command& candidate) { return candidate.name == name; });
  return found == Commands().end() ? nullptr : &*found;
}

std::string LikeliestCommand(const std::string& word) {
  const auto distance = [&word](const Command& command) { return Distance(word, command.name); };
  const auto nearest = std::min_element(
      Commands().begin(), Commands().end(),
      [&](const Command& one, const Command& other) { return distance(one) < distance(other); });
  const std::size_t errors = distance(*nearest);
  const bool isLike = errors <= kMostTypingErrors && errors < word.size() / 2 + 1;
  return isLike ? std::string(nearest->name) : "";
}

std::string CommandList() {
  constexpr std::size_t summaryColumn = 30;
  std::string list;
  for (const Command& command : Commands()) {
    list += fmt::format("  {:<{}}", fmt::format("{}{}", command.name, command.argument),
                        summaryColumn - 2);
    for (const char character : std::string_view(command.summary)) {
      list += character;
      list.append(character == '\n' ? summaryColumn : 0, ' ');
    }
    list += '\n';
  }
  return list;
}

std::string CommandHelp(const Command& command) {
  return fmt::format(kCommandHelp, command.name, command.argument, command.details,
                     command.AsksNobody() ? "" : kReadsFirst, NeedsOf(command), command.example);
}

}  // namespace Tavrin
