#include "tools/smm-inventory/Reading.h"

#include <gmock/gmock.h>

#include <new>

#include "tests/cli/ScriptedEnclosure.h"
#include "tools/smm-inventory/Failure.h"

namespace Tavrin {
namespace {

using testing::ElementsAre;
using Texts = std::vector<std::string>;

class ReadingTest : public ScriptedEnclosure {
 protected:
  std::vector<Section> Read(const Task& task) {
    Enclosure enclosure = Construct();
    std::vector<Section> sections;
    ReadSections(enclosure, task, [&](const Section& section) { sections.push_back(section); });
    return sections;
  }
  Texts Titles(Command command) {
    Texts titles;
    for (const Section& section : Read({command, 1})) {
      titles.push_back(section.title);
    }
    return titles;
  }
};

struct CommandRow {
  Command command;
  Texts titles;
};

TEST_F(ReadingTest, CommandReadsItsSectionsAfterTheEnclosure) {
  const std::vector<CommandRow> table = {
      {Command::Identity, {"enclosure", "identity"}},
      {Command::Power, {"enclosure", "chassis power", "node power"}},
      {Command::Caps, {"enclosure", "power caps"}},
      {Command::Nodes, {"enclosure", "node status", "node power"}},
      {Command::Fans, {"enclosure", "PSU fans"}},
      {Command::Psus, {"enclosure", "PSU firmware", "PSU status"}},
      {Command::SelectPsu, {"enclosure", "PSU selection"}},
      {Command::All,
       {"enclosure", "identity", "chassis power", "power caps", "node status", "node power",
        "PSU fans", "PSU firmware", "PSU status"}},
  };
  for (const CommandRow& row : table) {
    EXPECT_EQ(Titles(row.command), row.titles);
  }
}

TEST_F(ReadingTest, EverythingIsAskedOnceAndInOrder) {
  Read({Command::All, 0});
  EXPECT_THAT(
      TheScript().asked,
      ElementsAre("construction", "PSU status", "machine type", "serial number", "firmware version",
                  "name", "chassis power", "power caps", "status of node 1", "status of node 2",
                  "status of node 3", "status of node 4", "power of node 1", "power of node 2",
                  "power of node 3", "power of node 4", "fans", "firmware"));
}

TEST_F(ReadingTest, SelectionIsMadeOfThePsuAskedFor) {
  Read({Command::SelectPsu, 3});
  EXPECT_THAT(TheScript().asked, ElementsAre("construction", "PSU status", "selection of PSU 3"));
}

TEST_F(ReadingTest, FailuresOfAllKindsHideNoOtherQuery) {
  TheScript().machineType = [](std::string&) { return StatusCode::NoUsableResult; };
  TheScript().chassisPower = [](ChassisPowerCon&) -> int { throw std::bad_alloc(); };
  TheScript().nodePower = [](unsigned long node, ChassisPowerCon&) {
    return node == 3 ? StatusCode::UnusableAnswer : StatusCode::Success;
  };
  TheScript().firmware = [](std::vector<PSUFwInfo>&) { return StatusCode::NotConnected; };
  const std::vector<Section> sections = Read({Command::All, 0});
  std::vector<std::string> failed;
  std::size_t succeeded = 0;
  for (const Section& section : sections) {
    for (const Query& query : section.queries) {
      const bool isGood = query.status == StatusCode::Success;
      succeeded += isGood ? 1 : 0;
      failed.insert(failed.end(), isGood ? 0 : 1, query.key);
    }
  }
  EXPECT_THAT(failed, ElementsAre("machineType", "chassisPower", "nodePower", "psuFirmware"));
  EXPECT_EQ(succeeded, 17U);
  EXPECT_EQ(ExitCodeOf(sections), ExitCode::QueryFailed);
}

TEST_F(ReadingTest, SmmThatWasLostFailsEveryQueryAndIsAskedOnce) {
  TheScript().construct = [] { EndUnanswered(FailureCause::Silence, "no answer"); };
  TheScript().psuStatus = [](std::vector<PSUStatus>&) { return StatusCode::NotConnected; };
  const std::vector<Section> sections = Read({Command::All, 0});
  EXPECT_THAT(TheScript().asked, ElementsAre("construction", "PSU status"));
  for (const Section& section : sections) {
    for (const Query& query : section.queries) {
      const bool isOfTheSmm = query.key != "generation";
      EXPECT_EQ(query.status, isOfTheSmm ? StatusCode::NotConnected : StatusCode::Success)
          << query.key;
    }
  }
}

TEST_F(ReadingTest, SlotWithoutARecordIsDescribedAllTheSame) {
  TheScript().fans = [](std::vector<PSUFanSpeed>& fans) {
    fans.push_back({"PSU1", "10", "20", "", "", "Normal"});
    return StatusCode::Success;
  };
  const Section fans = Read({Command::Fans, 0}).back();
  ASSERT_EQ(fans.queries.front().rows.size(), 2U);
  EXPECT_EQ(fans.queries.front().rows[1].fields.front().absence,
            "the SMM gave no usable answer for this slot");
}

}  // namespace
}  // namespace Tavrin
