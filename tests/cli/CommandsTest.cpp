#include "tools/smm-inventory/Commands.h"

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <vector>

#include "reading/Reading.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(Commands, NameIsTakenInItsSpellingOnly) {
  for (const Command& command : Commands()) {
    EXPECT_EQ(FindCommand(command.name), &command);
  }
  for (const char* const name : {"", "Power", "power ", "pow", "select-psu 1"}) {
    EXPECT_EQ(FindCommand(name), nullptr);
  }
}

TEST(Commands, WordIsTakenForTheLikeliestCommandOrForNone) {
  const std::map<std::string, std::string> table = {
      {"powr", "power"},
      {"Power", "power"},
      {"powers", "power"},
      {"opwer", "power"},
      {"identitty", "identity"},
      {"node", "nodes"},
      {"psu", "psus"},
      {"fan", "fans"},
      {"cap", "caps"},
      {"al", "all"},
      {"selectpsu", "select-psu"},
      {"stray", ""},
      {"--frob", ""},
      {"", ""},
      {"7", ""},
      {"xl", ""},
      {"pppower", "power"},
      {"ppppower", ""},
  };
  for (const auto& [word, command] : table) {
    EXPECT_EQ(LikeliestCommand(word), command) << word;
  }
}

TEST(Commands, ListHasEachCommand) {
  for (const Command& command : Commands()) {
    EXPECT_THAT("\n" + CommandList(), HasSubstr("\n  " + std::string(command.name) + " "));
  }
}

TEST(Commands, HelpTellsUsageWhatIsReadOptionsAndAnExample) {
  for (const Command& command : Commands()) {
    const std::string name(command.name);
    const std::string help = CommandHelp(command);
    EXPECT_THAT(help, StartsWith("Usage: smm-inventory [OPTIONS] " + name));
    EXPECT_THAT(help, testing::ContainsRegex("\n(Reads|Selects) "));
    EXPECT_THAT(help, HasSubstr("\nOptions: "));
    EXPECT_THAT(help, testing::ContainsRegex("\nExample:\n  smm-inventory -H .* " + name));
  }
}

TEST(Commands, EachReadsItsParts) {
  const std::map<std::string, std::vector<Part>> table = {
      {"identity", {Part::Identity}},
      {"power", {Part::ChassisPower, Part::NodePower}},
      {"caps", {Part::PowerCaps}},
      {"nodes", {Part::NodeStatus, Part::NodePower}},
      {"fans", {Part::PsuFans}},
      {"psus", {Part::PsuFirmware, Part::PsuStatus}},
      {"select-psu", {Part::PsuSelection}},
  };
  for (const auto& [name, parts] : table) {
    EXPECT_EQ(FindCommand(name)->parts.Parts(), parts) << name;
  }
}

TEST(Commands, AllReadsWhatTheOthersReadInTheOrderOfTheParts) {
  std::set<Part> parts;
  for (const Command& command : Commands()) {
    if (command.name != "all" && command.name != "select-psu") {
      const std::vector<Part> those = command.parts.Parts();
      parts.insert(those.begin(), those.end());
    }
  }
  EXPECT_EQ(FindCommand("all")->parts.Parts(), std::vector<Part>(parts.begin(), parts.end()));
}

/// The rows of the README's table of commands, as CommandList() has them but for the blanks.
std::vector<std::string> CommandsInReadme() {
  std::ifstream file(README);
  std::vector<std::string> rows;
  std::string line;
  while (std::getline(file, line) && line != "| Command | What it is for |") {
  }
  std::getline(file, line);
  const std::regex row("\\| `(.*)` \\| (.*) \\|");
  while (std::getline(file, line) && !line.empty()) {
    rows.push_back(std::regex_replace(line, row, "$1 $2"));
  }
  return rows;
}

TEST(Commands, ReadmeListsThemAsTheHelpDoes) {
  const std::regex blanks("\\s+");
  std::string list;
  for (const std::string& row : CommandsInReadme()) {
    list += ' ' + row;
  }
  EXPECT_EQ(list + ' ', std::regex_replace(CommandList(), blanks, " "));
}

TEST(Commands, HelpFitsATerminal) {
  for (const Command& command : Commands()) {
    std::istringstream lines(CommandHelp(command) + CommandList());
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(line.size(), 100U) << line;
    }
  }
}

}  // namespace
}  // namespace Tavrin
