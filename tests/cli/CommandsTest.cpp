#include "tools/smm-inventory/Commands.h"

#include <gmock/gmock.h>

#include <fstream>
#include <map>
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

/// The words of the text, one blank behind each.
std::string WordsOf(const std::string& text) {
  std::istringstream stream(text);
  std::string words;
  for (std::string word; stream >> word;) {
    words += word + ' ';
  }
  return words;
}

/// The words of the README's table of commands, whose rows are "| `command` | what it is for |".
std::string CommandsInReadme() {
  std::ifstream file(README);
  std::string line;
  while (std::getline(file, line) && line != "| Command | What it is for |") {
  }
  std::getline(file, line);
  std::string words;
  while (std::getline(file, line) && !line.empty()) {
    const std::size_t between = line.find("` | ");
    words +=
        line.substr(3, between - 3) + ' ' + line.substr(between + 4, line.size() - between - 5);
  }
  return words;
}

TEST(Commands, ReadmeListsThemAsTheHelpDoes) {
  EXPECT_EQ(WordsOf(CommandsInReadme()), WordsOf(CommandList()));
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
