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

const std::map<std::string, Command>& Names() {
  static const std::map<std::string, Command> names = {
      {"all", Command::All},   {"identity", Command::Identity},    {"power", Command::Power},
      {"caps", Command::Caps}, {"nodes", Command::Nodes},          {"fans", Command::Fans},
      {"psus", Command::Psus}, {"select-psu", Command::SelectPsu},
  };
  return names;
}

TEST(Commands, NameIsTakenInItsSpellingOnly) {
  for (const auto& [name, command] : Names()) {
    EXPECT_EQ(FindCommand(name), command);
  }
  for (const char* const name : {"", "Power", "power ", "pow", "select-psu 1"}) {
    EXPECT_EQ(FindCommand(name), std::nullopt);
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
  for (const auto& [name, command] : Names()) {
    EXPECT_THAT("\n" + CommandList(), HasSubstr("\n  " + name + " "));
  }
}

TEST(Commands, HelpTellsUsageWhatIsReadOptionsAndAnExample) {
  for (const auto& [name, command] : Names()) {
    const std::string help = CommandHelp(command);
    EXPECT_THAT(help, StartsWith("Usage: smm-inventory [OPTIONS] " + name));
    EXPECT_THAT(help, testing::ContainsRegex("\n(Reads|Selects) "));
    EXPECT_THAT(help, HasSubstr("\nOptions: "));
    EXPECT_THAT(help, testing::ContainsRegex("\nExample:\n  smm-inventory -H .* " + name));
  }
}

TEST(Commands, EachReadsItsParts) {
  using Parts = std::vector<Part>;
  EXPECT_EQ(PartsOf(Command::Identity), Parts({Part::Identity}));
  EXPECT_EQ(PartsOf(Command::Power), Parts({Part::ChassisPower, Part::NodePower}));
  EXPECT_EQ(PartsOf(Command::Caps), Parts({Part::PowerCaps}));
  EXPECT_EQ(PartsOf(Command::Nodes), Parts({Part::NodeStatus, Part::NodePower}));
  EXPECT_EQ(PartsOf(Command::Fans), Parts({Part::PsuFans}));
  EXPECT_EQ(PartsOf(Command::Psus), Parts({Part::PsuFirmware, Part::PsuStatus}));
  EXPECT_EQ(PartsOf(Command::SelectPsu), Parts({Part::PsuSelection}));
}

TEST(Commands, AllReadsWhatTheOthersReadInTheOrderOfTheParts) {
  std::set<Part> parts;
  for (const auto& [name, command] : Names()) {
    if (command != Command::SelectPsu) {
      const std::vector<Part> those = PartsOf(command);
      parts.insert(those.begin(), those.end());
    }
  }
  EXPECT_EQ(PartsOf(Command::All), std::vector<Part>(parts.begin(), parts.end()));
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
  for (const auto& [name, command] : Names()) {
    std::istringstream lines(CommandHelp(command) + CommandList());
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(line.size(), 100U) << line;
    }
  }
}

}  // namespace
}  // namespace Tavrin
