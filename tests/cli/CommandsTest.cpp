#include "tools/smm-inventory/Commands.h"

#include <gmock/gmock.h>

#include <map>
#include <sstream>
#include <vector>

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
