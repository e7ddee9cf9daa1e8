#include <gmock/gmock.h>

#include "tests/cli/Tool.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;
using testing::Not;
using Texts = std::vector<std::string>;

Finished Read(const SimulatedSmm& simulator, const std::string& password = "sesame",
              const Texts& options = {}) {
  Texts arguments = {
      "-H", simulator.Address(), "-U", "admin", "-W", "open-session-privilege", "--password-file",
      "-"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return RunTool(arguments, {}, password + "\n");
}

TEST(ToolOnSimulator, FirstGenerationIsShownWhole) {
  const SimulatedSmm simulator({"--generation", "1"});
  const Finished finished = Read(simulator);
  EXPECT_EQ(finished.exitCode, 0) << finished.error;
  EXPECT_EQ(finished.output, simulator.Address() +
                                 "\n"
                                 "  machine type   1QA4\n"
                                 "  serial number  SIM10001\n"
                                 "  generation     first\n"
                                 "  platform id    254 (0xFE)\n"
                                 "  PSU slots      2\n"
                                 "  nodes          4\n");
  EXPECT_THAT(finished.error, HasSubstr("attempt 2 of 6"));
  EXPECT_THAT(finished.error, Not(HasSubstr("still trying")));
}

TEST(ToolOnSimulator, SecondGenerationOfPlatform253IsShownWhole) {
  const SimulatedSmm simulator({"--generation", "2", "--platform", "253"});
  const Finished finished = Read(simulator);
  EXPECT_EQ(finished.exitCode, 0) << finished.error;
  EXPECT_EQ(finished.output, simulator.Address() +
                                 "\n"
                                 "  machine type   2QC9\n"
                                 "  serial number  SIM25301\n"
                                 "  generation     second\n"
                                 "  platform id    253 (0xFD)\n"
                                 "  PSU slots      9\n"
                                 "  nodes          12\n");
}

TEST(ToolOnSimulator, RefusedQueryIsToldAndDoesNotHideTheOthers) {
  const SimulatedSmm simulator({"--generation", "1"}, R"({"overrides": [
    {"command": "0xB0", "data": "05 00", "completionCode": "0xC1"}
  ]})");
  const Finished finished = Read(simulator);
  EXPECT_EQ(finished.exitCode, 1) << finished.error;
  EXPECT_THAT(finished.output, HasSubstr("  machine type   not read\n"
                                         "  serial number  SIM10001\n"));
  EXPECT_THAT(finished.error,
              HasSubstr("smm-inventory: machine type not read: the SMM refused the request or gave "
                        "too short an answer (Get smm mt failed with error code:193); next: "));
}

TEST(ToolOnSimulator, AnswerShorterThanItsLeadingBytesIsToldInWords) {
  const SimulatedSmm simulator({"--generation", "2", "--platform", "254"}, R"({"overrides": [
    {"command": "0xB0", "data": "05 00", "response": "00"}
  ]})");
  const Finished finished = Read(simulator);
  EXPECT_EQ(finished.exitCode, 3) << finished.error;
  EXPECT_THAT(finished.output, HasSubstr("  machine type   not read\n"
                                         "  serial number  SIM25401\n"
                                         "  generation     second\n"));
  EXPECT_THAT(finished.error,
              HasSubstr("smm-inventory: machine type not read: the library gave up with an "
                        "exception (the answer was shorter than the bytes that lead it"));
}

TEST(ToolOnSimulator, RefusedStatusLeavesDetectionUnread) {
  const SimulatedSmm simulator({"--generation", "1"}, R"({"overrides": [
    {"command": "0xA8", "completionCode": "0xC1"}
  ]})");
  const Finished finished = Read(simulator);
  EXPECT_EQ(finished.exitCode, 1) << finished.error;
  EXPECT_THAT(finished.output, HasSubstr("  machine type   1QA4\n"));
  EXPECT_THAT(finished.output, HasSubstr("  nodes          not read\n"));
  EXPECT_THAT(finished.error,
              HasSubstr("platform id, PSU slots, nodes not read: the SMM gave no "
                        "usable answer (response is empty or completeCode: \\xc1)"));
}

TEST(ToolOnSimulator, WrongPasswordIsNamedAtOnceAndInTheEnd) {
  const SimulatedSmm simulator({"--generation", "1"});
  const Finished finished = Read(simulator, "guess");
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_LT(finished.error.find("still trying"), finished.error.find("attempt 2 of 6"));
  EXPECT_THAT(finished.error, HasSubstr("no IPMI connection could be opened (connect failed: "));
  EXPECT_THAT(finished.error, HasSubstr("password"));
  EXPECT_THAT(finished.error, Not(HasSubstr("guess")));
}

TEST(ToolOnSimulator, MostVerboseRunShowsRequestsAndAnswersEscaped) {
  const SimulatedSmm simulator(
      {"--generation", "1"},
      R"({"overrides": [{"command": "0xB0", "data": "05 01", "response": "1b 5b 32 4a"}]})");
  const Finished finished = Read(simulator, "sesame", {"-vvv"});
  EXPECT_EQ(finished.exitCode, 0) << finished.error;
  EXPECT_THAT(finished.error, HasSubstr("FN=0x32 cmd=0xb0 data=0x5 0x1"));
  EXPECT_THAT(finished.error, HasSubstr("Response=\\x1b [ 2 J"));
  EXPECT_THAT(finished.error + finished.output, Not(HasSubstr("\x1b")));
  EXPECT_THAT(finished.error + finished.output, Not(HasSubstr("sesame")));
}

}  // namespace
}  // namespace Tavrin
