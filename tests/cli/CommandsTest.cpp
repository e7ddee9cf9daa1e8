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
    EXPECT_THAT(help, testing::ContainsRegex("\n(Prints|Reads|Selects) "));
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
      {"health", {Part::NodeStatus, Part::PsuFans, Part::PsuStatus}},
      {"select-psu", {Part::PsuSelection}},
      {"hosts", {}},
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

TEST(Commands, HelpAsksForAUserWhereTheCommandAsksAnSmm) {
  for (const Command& command : Commands()) {
    const bool isHosts = command.name == "hosts";
    const std::string help = CommandHelp(command);
    EXPECT_EQ(help.find("neither user nor password") != std::string::npos, isHosts);
    EXPECT_EQ(help.find("-U ") == std::string::npos, isHosts);
    EXPECT_EQ(help.find("it first shows what kind of enclosure") == std::string::npos, isHosts);
  }
}

TEST(Commands, OnlySelectPsuIsForOneEnclosure) {
  for (const Command& command : Commands()) {
    EXPECT_EQ(command.isForOne, command.name == "select-psu");
  }
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
