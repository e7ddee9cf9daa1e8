#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <list>
#include <set>
#include <sstream>

#include "tests/cli/Tool.h"
#include "tests/support/Content.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {
namespace {

using nlohmann::json;
using namespace nlohmann::literals;
using testing::Each;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using Texts = std::vector<std::string>;

Texts Call(const SimulatedSmm& simulator, const Texts& options) {
  return Joined({SMM_INVENTORY}, CallArguments(simulator.Address(), options));
}

Finished Read(const SimulatedSmm& simulator, const std::string& password = "sesame",
              const Texts& options = {}) {
  return RunTool(CallArguments(simulator.Address(), options), {}, password + "\n");
}

/// What stands below the address for the first generation, in this order.
const Texts kSectionsOfTheFirst = {
    "enclosure\n"
    "  generation   first\n"
    "  platform id  254\n"
    "  PSU slots    2\n"
    "  nodes        4\n",
    "identity\n"
    "  machine type      1QA4\n"
    "  serial number     SIM10001\n"
    "  firmware version  FGEN7-1.05\n"
    "  name              simulated-first\n",
    "chassis power\n"
    "  minimum  625\n"
    "  average  1610\n"
    "  maximum  2790\n",
    "power caps\n"
    "  range minimum   610\n"
    "  range maximum   3400\n"
    "  protective cap  2950\n"
    "  user cap        2100\n"
    "  thermal cap     2500\n",
    "node status\n"
    "  node  power state  width  height  permission\n"
    "  1     Power ON     Half   2       17\n"
    "  2     Power ON     Full   1       18\n"
    "  3     Power ON     Half   2       19\n"
    "  4     Power ON     Full   1       20\n",
    "node power\n"
    "  node  minimum  average  maximum\n"
    "  1     119      341      613\n"
    "  2     128      352      626\n"
    "  3     137      363      639\n"
    "  4     146      374      652\n",
    "PSU fans\n"
    "  slot  name  speed A  Pat A  speed B  Pat B  status\n"
    "  1     PSU1  5490     61     -        -      Normal\n"
    "  2     PSU2  5780     62     -        -      Normal\n",
    "PSU firmware\n"
    "  slot  name  identifier   version  description\n"
    "  1     PSU1  PSUPAS1a.01  1.08     Power Supply 1\n"
    "  2     PSU2  PSUPAS2b.02  2.09     Power Supply 2\n",
    "PSU status\n"
    "  slot  EPOW         throttle     presence  power good\n"
    "  1     not trigger  not trigger  present   power good\n"
    "  2     not trigger  not trigger  present   power good\n",
};

/// What stands between empty lines.
Texts SectionsOf(const std::string& output) {
  Texts sections = {""};
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty()) {
      sections.emplace_back();
    } else {
      sections.back() += line + (lines.eof() ? "" : "\n");
    }
  }
  return sections;
}

std::string HeadingOf(const std::string& section) { return section.substr(0, section.find('\n')); }

std::set<std::string> HeadingsOf(const Texts& sections) {
  std::set<std::string> headings;
  std::transform(sections.begin(), sections.end(), std::inserter(headings, headings.end()),
                 HeadingOf);
  return headings;
}

/// A section that is not expected is left to the tests of its own query, wherever it stands.
TEST(ToolOnSimulator, FirstGenerationIsShownWhole) {
  const SimulatedSmm simulator({"--generation", "1"});
  const Finished finished = Read(simulator);
  EXPECT_EQ(finished.exitCode, 0) << finished.error;
  const Texts expected =
      Joined({simulator.Address() + "  OK\n", simulator.Address() + "\n"}, kSectionsOfTheFirst);
  Texts sections = SectionsOf(finished.output);
  EXPECT_EQ(HeadingsOf(sections).size(), sections.size()) << finished.output;
  const auto others = std::stable_partition(
      sections.begin(), sections.end(), [known = HeadingsOf(expected)](const std::string& section) {
        return known.count(HeadingOf(section)) == 1;
      });
  EXPECT_EQ(Texts(sections.begin(), others), expected);
  EXPECT_THAT(Texts(others, sections.end()), Each(MatchesRegex("[A-Za-z ]+\n(  [^\n]+\n)+")));
  EXPECT_EQ(finished.error, "");
}

struct Kind {
  const char* name;
  Texts options;
  std::string serialNumber;
  std::size_t slots;
  std::size_t nodes;
  json secondFanOfSlot2;
};

std::set<std::string> MembersOf(const json& object) {
  std::set<std::string> names;
  for (const auto& member : object.items()) {
    names.insert(member.key());
  }
  return names;
}

/// All queries that there are, but the selection, which is none of those that only read.
void ExpectEveryQuery(const json& document) {
  json queries = json::parse(ContentOf(SCHEMA)).at("/properties/queries/properties"_json_pointer);
  queries.erase("psuSelection");
  EXPECT_EQ(MembersOf(document.at("queries")), MembersOf(queries));
}

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

class ToolOnEveryKind : public testing::TestWithParam<Kind> {};

TEST_P(ToolOnEveryKind, DocumentHoldsTheWholeEnclosure) {
  const SimulatedSmm simulator(GetParam().options);
  const Finished finished = Read(simulator, "sesame", {"--json", "all"});
  EXPECT_EQ(finished.exitCode, 0) << finished.error;
  const json document = DocumentOf(finished);
  EXPECT_EQ(document.at("/address"_json_pointer), simulator.Address());
  ExpectEveryQuery(document);
  EXPECT_EQ(document.at("/queries/serialNumber/value"_json_pointer), GetParam().serialNumber);
  const json& queries = document.at("queries");
  EXPECT_EQ(queries.at("nodeStatus").size(), GetParam().nodes);
  EXPECT_EQ(queries.at("nodePower").size(), GetParam().nodes);
  EXPECT_EQ(queries.at("psuFirmware").at("slots").size(), GetParam().slots);
  EXPECT_EQ(queries.at("psuStatus").at("slots").size(), GetParam().slots);
  EXPECT_EQ(queries.at("/psuFans/slots/1/fields/speedB/value"_json_pointer),
            GetParam().secondFanOfSlot2);
}

/// A run with --json on an enclosure of its own; many can go on at once.
class DocumentRun {
 public:
  DocumentRun(const Texts& options, const std::filesystem::path& scenario)
      : name_(scenario.stem().string()),
        simulator_(options, ContentOf(scenario)),
        tool_(Call(simulator_, {"--json"}), {}, "sesame\n") {}

  const std::string& Name() const { return name_; }
  Finished Wait() { return tool_.Wait(); }

 private:
  std::string name_;
  SimulatedSmm simulator_;
  Child tool_;
};

TEST_P(ToolOnEveryKind, EveryReadyScenarioGivesADocumentOfTheSchema) {
  std::list<DocumentRun> runs;
  for (const auto& entry : std::filesystem::directory_iterator(SMM_SCENARIOS)) {
    runs.emplace_back(GetParam().options, entry.path());
  }
  EXPECT_FALSE(runs.empty());
  for (DocumentRun& run : runs) {
    SCOPED_TRACE(run.Name());
    const Finished finished = run.Wait();
    EXPECT_EQ(finished.exitCode, 0) << finished.error;
    ExpectEveryQuery(DocumentOf(finished));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ToolOnEveryKind,
    testing::Values(
        Kind{"First", {"--generation", "1"}, "SIM10001", 2, 4, nullptr},
        Kind{"Second253", {"--generation", "2", "--platform", "253"}, "SIM25301", 9, 12, 8910},
        Kind{"Second254", {"--generation", "2", "--platform", "254"}, "SIM25401", 2, 4, 8950}),
    [](const testing::TestParamInfo<Kind>& kind) { return kind.param.name; });

TEST(ToolOnSimulator, OddAnswersOfManyQueriesKeepTheDocumentWhole) {
  const SimulatedSmm simulator({"--generation", "2", "--platform", "254"}, R"({"overrides": [
    {"command": "0x92", "data": "01 05 99", "response": "ff 00 1b 80 00"},
    {"command": "0x92", "data": "02 02 fc", "completionCode": "0xC1"},
    {"command": "0x98", "data": "03", "response": "00 ff ff 00 00 01 00"},
    {"command": "0x9D", "response": "00 01"},
    {"command": "0xA5", "data": "02", "completionCode": "0xC1"},
    {"command": "0xA7", "data": "04", "response": "00 99 03 ff 20"},
    {"command": "0xB0", "data": "05 00", "response": "00"}
  ]})");
  const Finished finished = Read(simulator, "sesame", {"--json"});
  EXPECT_EQ(finished.exitCode, 1) << finished.error;
  const json document = DocumentOf(finished);
  EXPECT_EQ(document.at("/queries/machineType/statusName"_json_pointer), "Exception");
  EXPECT_EQ(document.at("/queries/serialNumber/value"_json_pointer), "SIM25401");
  EXPECT_EQ(document.at("/queries/powerCaps/statusName"_json_pointer), "UnusableAnswer");
  EXPECT_EQ(document.at("/queries/nodePower/2/fields/minPower/text"_json_pointer), "N/A");
  EXPECT_EQ(document.at("/queries/nodePower/2/fields/maxPower/value"_json_pointer), 1);
  EXPECT_EQ(document.at("/queries/nodeStatus/3/fields/powerState/value"_json_pointer), "fault");
  EXPECT_EQ(document.at("/queries/nodeStatus/3/fields/width/text"_json_pointer), "3");
  EXPECT_EQ(document.at("/queries/nodeStatus/3/fields/height/value"_json_pointer), nullptr);
  EXPECT_EQ(document.at("/queries/psuFans/slots/0/fields/name/value"_json_pointer), "PSU1");
  EXPECT_EQ(document.at("/queries/psuFans/slots/1/fields/name/value"_json_pointer), nullptr);
  EXPECT_EQ(document.at("/queries/psuFirmware/slots/0/fields/identifier/bytes/3"_json_pointer),
            255);
  EXPECT_EQ(document.at("/queries/psuFirmware/slots/0/fields/identifier/bytes/6"_json_pointer),
            128);
  EXPECT_EQ(document.at("/queries/psuFirmware/slots/1/fields/version/value"_json_pointer), nullptr);
}

TEST(ToolOnSimulator, MissingPsuIsShownInItsPlace) {
  const SimulatedSmm simulator({"--generation", "1"},
                               R"({"enclosure": {"psus": {"2": {"present": false}}}})");
  const Finished finished = Read(simulator, "sesame", {"psus"});
  EXPECT_EQ(finished.exitCode, 0) << finished.error;
  EXPECT_THAT(finished.output, HasSubstr("\n  2     not read  not read     not read  not read\n"));
  EXPECT_THAT(finished.output,
              HasSubstr("\n  2     not trigger  not trigger  not present  not power good\n"));
}

TEST(ToolOnSimulator, SelectionTellsWhatWasSentAndAcknowledged) {
  const SimulatedSmm simulator({"--generation", "1"});
  const Finished finished = Read(simulator, "sesame", {"select-psu", "7", "-vvv"});
  EXPECT_EQ(finished.exitCode, 0) << finished.error;
  EXPECT_THAT(finished.error, HasSubstr("cmd=0xf4 data=0x0 0x3"));
  EXPECT_THAT(finished.output, HasSubstr("\nPSU selection\n"
                                         "  asked for        7\n"
                                         "  sent             3\n"
                                         "  remark           3 was sent, the highest that a "
                                         "first-generation SMM takes; "));
  EXPECT_THAT(finished.output, HasSubstr("  acknowledgement  received\n"));
}

TEST(ToolOnSimulator, RefusedSelectionIsTriedSixTimesAndTold) {
  const SimulatedSmm simulator(
      {"--generation", "2", "--platform", "254"},
      R"({"overrides": [{"command": "0xF4", "data": "00", "completionCode": "0xC1"}]})");
  const Finished finished = Read(simulator, "sesame", {"--json", "-vvv", "select-psu", "3"});
  EXPECT_EQ(finished.exitCode, 1) << finished.error;
  EXPECT_EQ(CountOf("cmd=0xf4 data=", finished.error), 6);
  EXPECT_THAT(
      finished.error,
      HasSubstr("smm-inventory: acknowledgement of the PSU selection not read: the SMM refused "
                "the request (completion code 0xC1: command not known to the device); next: check "
                "that the device is an SMM\n"));
  const json document = DocumentOf(finished);
  EXPECT_EQ(document.at("/queries/psuSelection/statusName"_json_pointer), "NoUsableResult");
  EXPECT_EQ(document.at("/queries/psuSelection/fields/sent/text"_json_pointer), "none");
  EXPECT_EQ(document.at("/queries/psuSelection/fields/acknowledgement/value"_json_pointer),
            "missing");
}

TEST(ToolOnSimulator, RefusedQueryIsToldAndDoesNotHideTheOthers) {
  const SimulatedSmm simulator({"--generation", "1"}, R"({"overrides": [
    {"command": "0xB0", "data": "05 00", "completionCode": "0xD4"}
  ]})");
  const Finished finished = Read(simulator);
  EXPECT_EQ(finished.exitCode, 1) << finished.error;
  EXPECT_THAT(finished.output, HasSubstr("  machine type      not read\n"
                                         "  serial number     SIM10001\n"));
  EXPECT_THAT(
      finished.error,
      HasSubstr("smm-inventory: machine type not read: the SMM refused the request (completion "
                "code 0xD4: insufficient privilege); next: try a higher -L, "));
}

TEST(ToolOnSimulator, AnswerShorterThanItsLeadingBytesIsToldInWords) {
  const SimulatedSmm simulator({"--generation", "2", "--platform", "254"}, R"({"overrides": [
    {"command": "0xB0", "data": "05 00", "response": "00"}
  ]})");
  const Finished finished = Read(simulator, "sesame", {"identity"});
  EXPECT_EQ(finished.exitCode, 1) << finished.error;
  EXPECT_THAT(finished.output, HasSubstr("  machine type      not read\n"
                                         "  serial number     SIM25401\n"));
  EXPECT_THAT(finished.error,
              HasSubstr("smm-inventory: machine type not read: the library gave up with an "
                        "exception (its answer has 1 byte, which is shorter than what leads"));
}

TEST(ToolOnSimulator, RefusedStatusLeavesWhatTheLibraryAssumesUnread) {
  const SimulatedSmm simulator({"--generation", "1"}, R"({"overrides": [
    {"command": "0xA8", "delayMs": 1, "times": 1},
    {"command": "0xA8", "completionCode": "0xC1"}
  ]})");
  const Finished finished = Read(simulator, "sesame", {"nodes"});
  EXPECT_EQ(finished.exitCode, 1) << finished.error;
  EXPECT_THAT(finished.output, HasSubstr("  generation   first\n"));
  EXPECT_THAT(finished.output, HasSubstr("  nodes        not read\n"));
  EXPECT_THAT(finished.output, HasSubstr("  4     Power ON"));
  EXPECT_THAT(finished.error,
              HasSubstr("platform id, PSU slots, nodes not read: the SMM refused the request "
                        "(completion code 0xC1: "));
}

TEST(ToolOnSimulator, FlagsOfTheNinthPsuAreNotTold) {
  const SimulatedSmm simulator({"--generation", "2", "--platform", "253"});
  Child text(Call(simulator, {"psus"}), {}, "sesame\n");
  Child document(Call(simulator, {"psus", "--json"}), {}, "sesame\n");
  EXPECT_THAT(text.Wait().output,
              testing::EndsWith("\n  8     not trigger  not trigger  present   power good\n"
                                "  9     -            -            -         -\n"
                                "  The SMM's answer holds the flags of 8 PSUs only; those of any "
                                "later slot are not told.\n"));
  const json whole = DocumentOf(document.Wait());
  EXPECT_EQ(whole.at("/queries/psuStatus/slots/8/fields/present/value"_json_pointer), nullptr);
  EXPECT_EQ(whole.at("/queries/psuStatus/slots/7/fields/present/value"_json_pointer), true);
}

TEST(ToolOnSimulator, SecondGenerationWithoutAPlatformIsAskedNothingThatDependsOnIt) {
  const SimulatedSmm simulator({"--generation", "2", "--platform", "253"}, R"({"overrides": [
    {"command": "0xA8", "delayMs": 1, "times": 1},
    {"command": "0xA8", "completionCode": "0xC0"}
  ]})");
  const Finished finished = Read(simulator, "sesame", {"power", "--json"});
  EXPECT_EQ(finished.exitCode, 1) << finished.error;
  const json document = DocumentOf(finished);
  EXPECT_EQ(document.at("/queries/generation/value"_json_pointer), "second");
  EXPECT_EQ(document.at("/queries/platformId/value"_json_pointer), nullptr);
  EXPECT_EQ(document.at("/queries/chassisPower/fields/avgPower/value"_json_pointer), nullptr);
  EXPECT_EQ(document.at("/queries/nodePower/3/fields/avgPower/value"_json_pointer), 375);
  EXPECT_THAT(finished.error,
              HasSubstr("smm-inventory: chassis power not read: the SMM's platform is not known, "
                        "since the SMM refused the request (completion code 0xC0: busy); next: run "
                        "again in a minute\n"));
}

TEST(ToolOnSimulator, SecondGenerationThatTellsItsPlatformLateIsReadWhole) {
  const SimulatedSmm simulator({"--generation", "2", "--platform", "253"}, R"({"overrides": [
    {"command": "0xA8", "delayMs": 1, "times": 1},
    {"command": "0xA8", "completionCode": "0xC0", "times": 6}
  ]})");
  const Finished finished = Read(simulator, "sesame", {"power", "--json"});
  EXPECT_EQ(finished.exitCode, 0) << finished.error;
  const json document = DocumentOf(finished);
  EXPECT_EQ(document.at("/queries/chassisPower/fields/avgPower/value"_json_pointer), 5010);
}

TEST(ToolOnSimulator, MostVerboseRunShowsRequestsAndAnswersEscaped) {
  const SimulatedSmm simulator(
      {"--generation", "1"},
      R"({"overrides": [{"command": "0xB0", "data": "05 01", "response": "1b 5b 32 4a"}]})");
  const Finished finished = Read(simulator, "sesame", {"identity", "-vvv"});
  EXPECT_EQ(finished.exitCode, 0) << finished.error;
  EXPECT_THAT(finished.error, HasSubstr("FN=0x32 cmd=0xb0 data=0x5 0x1"));
  EXPECT_THAT(finished.error, HasSubstr("Response=\\x1b [ 2 J"));
  EXPECT_THAT(finished.error + finished.output, Not(HasSubstr("\x1b")));
  EXPECT_THAT(finished.error + finished.output, Not(HasSubstr("sesame")));
}

}  // namespace
}  // namespace Tavrin
