#include <gmock/gmock.h>

#include "tests/cli/ProcessHelper.h"

namespace Tavrin {
namespace {

using testing::HasSubstr;
using testing::Not;
using Texts = std::vector<std::string>;

/// A simulated enclosure whose administrator's password is "sesame".
class Simulator {
 public:
  explicit Simulator(const Texts& kind, const std::string& overrides = "[]")
      : password_("sesame\n"),
        scenario_(R"({"overrides": )" + overrides + "}"),
        child_(Arguments(kind), {"PATH=/usr/bin:/bin:/usr/sbin"}) {
    const std::string ready = child_.ReadLine();
    address_ = ready.substr(ready.rfind(' ') + 1);
  }

  const std::string& Address() const { return address_; }

  Finished Read(const std::string& password = "sesame", const Texts& options = {}) const {
    Texts arguments = {
        "-H", address_, "-U", "admin", "-W", "open-session-privilege", "--password-file", "-"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunTool(arguments, {}, password + "\n");
  }

 private:
  Texts Arguments(const Texts& kind) const {
    Texts arguments = {SMM_SIMULATOR,    "--user",     "admin",         "--password-file",
                       password_.Path(), "--scenario", scenario_.Path()};
    arguments.insert(arguments.end(), kind.begin(), kind.end());
    return arguments;
  }

  TemporaryFile password_;
  TemporaryFile scenario_;
  Child child_;
  std::string address_;
};

TEST(ToolOnSimulator, FirstGenerationIsShownWhole) {
  const Simulator simulator({"--generation", "1"});
  const Finished finished = simulator.Read();
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
  const Simulator simulator({"--generation", "2", "--platform", "253"});
  const Finished finished = simulator.Read();
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
  const Simulator simulator({"--generation", "1"}, R"([
    {"command": "0xB0", "data": "05 00", "completionCode": "0xC1"}
  ])");
  const Finished finished = simulator.Read();
  EXPECT_EQ(finished.exitCode, 1) << finished.error;
  EXPECT_THAT(finished.output, HasSubstr("  machine type   not read\n"
                                         "  serial number  SIM10001\n"));
  EXPECT_THAT(finished.error,
              HasSubstr("smm-inventory: machine type not read: the SMM refused the request or gave "
                        "too short an answer (Get smm mt failed with error code:193); next: "));
}

TEST(ToolOnSimulator, AnswerShorterThanItsLeadingBytesIsToldInWords) {
  const Simulator simulator({"--generation", "2", "--platform", "254"}, R"([
    {"command": "0xB0", "data": "05 00", "response": "00"}
  ])");
  const Finished finished = simulator.Read();
  EXPECT_EQ(finished.exitCode, 3) << finished.error;
  EXPECT_THAT(finished.output, HasSubstr("  machine type   not read\n"
                                         "  serial number  SIM25401\n"
                                         "  generation     second\n"));
  EXPECT_THAT(finished.error,
              HasSubstr("smm-inventory: machine type not read: the library gave up with an "
                        "exception (the answer was shorter than the bytes that lead it"));
}

TEST(ToolOnSimulator, RefusedStatusLeavesDetectionUnread) {
  const Simulator simulator({"--generation", "1"}, R"([
    {"command": "0xA8", "completionCode": "0xC1"}
  ])");
  const Finished finished = simulator.Read();
  EXPECT_EQ(finished.exitCode, 1) << finished.error;
  EXPECT_THAT(finished.output, HasSubstr("  machine type   1QA4\n"));
  EXPECT_THAT(finished.output, HasSubstr("  nodes          not read\n"));
  EXPECT_THAT(finished.error,
              HasSubstr("platform id, PSU slots, nodes not read: the SMM gave no "
                        "usable answer (response is empty or completeCode: \\xc1)"));
}

TEST(ToolOnSimulator, WrongPasswordIsNamedAtOnceAndInTheEnd) {
  const Simulator simulator({"--generation", "1"});
  const Finished finished = simulator.Read("guess");
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_LT(finished.error.find("still trying"), finished.error.find("attempt 2 of 6"));
  EXPECT_THAT(finished.error, HasSubstr("no IPMI connection could be opened (connect failed: "));
  EXPECT_THAT(finished.error, HasSubstr("password"));
  EXPECT_THAT(finished.error, Not(HasSubstr("guess")));
}

TEST(ToolOnSimulator, MostVerboseRunShowsRequestsAndAnswersEscaped) {
  const Simulator simulator({"--generation", "1"},
                            R"([{"command": "0xB0", "data": "05 01", "response": "1b 5b 32 4a"}])");
  const Finished finished = simulator.Read("sesame", {"-vvv"});
  EXPECT_EQ(finished.exitCode, 0) << finished.error;
  EXPECT_THAT(finished.error, HasSubstr("FN=0x32 cmd=0xb0 data=0x5 0x1"));
  EXPECT_THAT(finished.error, HasSubstr("Response=\\x1b [ 2 J"));
  EXPECT_THAT(finished.error + finished.output, Not(HasSubstr("\x1b")));
  EXPECT_THAT(finished.error + finished.output, Not(HasSubstr("sesame")));
}

}  // namespace
}  // namespace Tavrin
