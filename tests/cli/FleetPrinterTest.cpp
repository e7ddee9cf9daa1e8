#include "tools/smm-inventory/FleetPrinter.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/report/ExampleReading.h"
#include "tests/report/HealthyReading.h"
#include "tools/smm-inventory/ExitCode.h"

namespace Tavrin {
namespace {

using nlohmann::json;

/// What a run that reads enclosures of these names is to print, as the command line has it.
Options OptionsOf(const std::vector<std::string>& names, const char* command, const char* format) {
  Options options;
  options.task.command = FindCommand(command);
  options.format = FindFormat(format);
  for (const std::string& name : names) {
    options.targets.emplace_back().host = name;
  }
  return options;
}

/// What a call left on standard output and standard error, which are files meanwhile.
template <typename Call>
std::pair<std::string, std::string> OutputOf(Call call) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  call();
  const std::string output = testing::internal::GetCapturedStdout();
  return {output, testing::internal::GetCapturedStderr()};
}

/// A printer where no terminal is.
class FleetPrinterTest : public testing::Test {
 protected:
  void Begin(const Options& options) {
    options_ = options;
    OutputOf([this] { printer_.emplace(options_, console_); });
    for (std::size_t index = 0; index < options_.targets.size(); ++index) {
      printer_->EnclosureBegins(index);
    }
  }
  /// Returns what is printed when that reading ends.
  std::string End(std::size_t index, Reading reading) {
    return OutputOf([&] { printer_->EnclosureEnded(index, std::move(reading)); }).first;
  }
  struct RunEnd {
    int exitCode;
    std::string output;
    std::string error;
  };
  RunEnd Finish() {
    int exitCode = -1;
    const auto [output, error] = OutputOf([&] { exitCode = printer_->Finish(); });
    return {exitCode, output, error};
  }

  Options options_;
  std::ostringstream told_;
  Console console_{told_, false};
  std::optional<FleetPrinter> printer_;
};

TEST_F(FleetPrinterTest, HealthAsJsonIsPrintedAsEachEnds) {
  Begin(OptionsOf({"living", "dead"}, "health", "json"));
  const json first = json::parse(End(1, FailedReading()));
  EXPECT_EQ(first.at("index"), 1);
  EXPECT_EQ(first.at("health").at("severity"), "UNKNOWN");
  const json second = json::parse(End(0, HealthyReading()));
  EXPECT_EQ(second.at("index"), 0);
  EXPECT_EQ(second.at("health").at("severity"), "OK");
  EXPECT_EQ(Finish().output, "");
}

TEST_F(FleetPrinterTest, JsonOfAnotherCommandHasNoHealth) {
  Begin(OptionsOf({"a", "b"}, "nodes", "json"));
  EXPECT_FALSE(json::parse(End(0, HealthyReading())).contains("health"));
}

TEST_F(FleetPrinterTest, LogLineOfOneAmongSeveralBeginsWithItsName) {
  Options options = OptionsOf({"rack01", "rack02"}, "nodes", "text");
  options.verbosity = 1;
  Begin(options);
  for (const std::size_t index : {std::size_t{1}, std::size_t{0}}) {
    printer_->ObserverOf(index)->LineWritten({2, "source", 7, "lost"});
  }
  EXPECT_EQ(told_.str(), "rack02: [warning] source:7: lost\nrack01: [warning] source:7: lost\n");
}

TEST_F(FleetPrinterTest, LogLineOfOneAloneHasNoName) {
  Options options = OptionsOf({"rack01"}, "nodes", "text");
  options.verbosity = 1;
  Begin(options);
  printer_->ObserverOf(0)->LineWritten({2, "source", 7, "lost"});
  EXPECT_EQ(told_.str(), "[warning] source:7: lost\n");
}

TEST_F(FleetPrinterTest, RepeatedAttemptIsNotToldWhereNoTerminalIs) {
  Begin(OptionsOf({"rack01"}, "nodes", "text"));
  Observer* const observer = printer_->ObserverOf(0);
  observer->WaitBegins("reading");
  observer->AttemptBegins(1, 6);
  observer->AttemptFailed({"no answer", Standalone::FailureCause::Silence, 0, ""});
  observer->AttemptBegins(2, 6);
  observer->WaitEnds();
  printer_->TimePasses();
  End(0, HealthyReading());
  const RunEnd end = Finish();
  EXPECT_EQ(end.exitCode, ExitCode::Success);
  EXPECT_EQ(end.error, "");
  EXPECT_EQ(told_.str(), "");
}

TEST_F(FleetPrinterTest, UnwritableFileOfFailuresLeavesTheCodeOfWhatWasFound) {
  Reading silent = FailedReading();
  silent.failure->cause.kind = Standalone::FailureCause::Silence;
  const std::vector<std::pair<Reading, int>> table = {{silent, ExitCode::NobodyReached},
                                                      {HealthyReading(), ExitCode::Exception}};
  for (const auto& [reading, exitCode] : table) {
    Options options = OptionsOf({"rack01"}, "nodes", "text");
    options.failedTo = "/nowhere/failed";
    Begin(options);
    End(0, reading);
    const RunEnd end = Finish();
    EXPECT_EQ(end.exitCode, exitCode);
    EXPECT_THAT(end.error, testing::EndsWith(
                               "smm-inventory: --failed-to is \"/nowhere/failed\", which cannot be "
                               "written; expected a file of its own that can be written\n"));
  }
}

}  // namespace
}  // namespace Tavrin
