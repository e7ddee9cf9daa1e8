#include "tests/faults/FaultTest.h"

#include <algorithm>
#include <iostream>
#include <vector>

#include "platform/standalone/globalconfig/ConfigControl.h"

namespace Tavrin {
namespace {

using std::chrono::milliseconds;

/// What a busy machine may add to the time that something takes.
constexpr milliseconds kGrace{1000};

/// The serial number is refused without a byte of data, and the name gets no answer at all.
constexpr const char* kScenario = R"({"overrides": [
    {"command": "0xB0", "data": "05 01", "completionCode": "0xD5"},
    {"command": "0xB0", "data": "05 0B", "silent": true}]})";

const std::vector<std::string> kFirstGeneration = {"--generation", "1"};

TavrinConnection::ConnectionInfo Through(const Relay& relay, const SimulatedSmm& simulator,
                                         milliseconds sessionTimeout) {
  Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS",
                                   static_cast<int>(sessionTimeout.count()));
  return SettingsOf(simulator, relay.Port());
}

}  // namespace

FaultTest::FaultTest()
    : simulator(std::make_unique<SimulatedSmm>(kFirstGeneration, kScenario)),
      relay(simulator->Port()),
      inventory(Through(relay, *simulator, kSessionTimeout)) {}

FaultTest::Measured FaultTest::Run(SMMInventory& object, Query query) {
  lines.clear();
  const std::size_t descriptors = DescriptorsOfTheLibrary();
  const auto start = std::chrono::steady_clock::now();
  Measured measured{0, "as passed", {}};
  measured.status = (object.*query)(measured.text);
  measured.took =
      std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
  EXPECT_EQ(DescriptorsOfTheLibrary(), descriptors);
  std::cout << "status " << measured.status << " after " << FailedAttempts()
            << " failed attempts and " << measured.took.count() << " ms\n"
            << LogText();
  return measured;
}

/// What is not held for the simulator, whose output comes through two.
std::size_t FaultTest::DescriptorsOfTheLibrary() const {
  return OpenDescriptors() - (simulator ? 2 : 0);
}

SMMInventory FaultTest::Unread(const TavrinConnection::ConnectionInfo& settings) {
  Standalone::SetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", 0);
  SMMInventory object(settings);
  Standalone::SetGlobalConfigValue("IPMI_CONNECT_RETRY_TIMES", kAttempts);
  return object;
}

/// The client writes one line for each attempt that fails.
std::size_t FaultTest::FailedAttempts() const {
  return static_cast<std::size_t>(std::count_if(
      lines.begin(), lines.end(),
      [](const Standalone::LogLine& line) { return line.text.rfind("connect failed: ", 0) == 0; }));
}

int FaultTest::ExpectQuery(SMMInventory& object, const Outcome& expected, Query query) {
  const Measured measured = Run(object, query);
  EXPECT_EQ(measured.status, expected.status) << LogText();
  EXPECT_EQ(measured.text, expected.status == StatusCode::Success ? "1QA4" : "as passed");
  EXPECT_EQ(FailedAttempts(), expected.failedAttempts) << LogText();
  EXPECT_LE(measured.took.count(), (expected.bound + kGrace).count());
  return measured.status;
}

void FaultTest::ExpectMostQueries(int count, int successes) {
  int succeeded = 0;
  for (int i = 0; i < count; ++i) {
    const Measured measured = Run(inventory, &SMMInventory::GetSmmMT);
    succeeded += measured.status == StatusCode::Success ? 1 : 0;
    EXPECT_LE(measured.took.count(), (kSlowestQuery + kGrace).count());
    EXPECT_LE(FailedAttempts(), static_cast<std::size_t>(kAttempts));
  }
  EXPECT_GE(succeeded, successes);
}

void FaultTest::RestartController() {
  simulator.reset();
  simulator = std::make_unique<SimulatedSmm>(kFirstGeneration);
  relay.Lead(simulator->Port());
}

void FaultTest::ExpectRecovery() {
  relay.Heal();
  ExpectQuery({StatusCode::Success, 0, kSessionTimeout});
}

}  // namespace Tavrin
