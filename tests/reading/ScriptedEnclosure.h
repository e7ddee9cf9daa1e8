#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/standalone/logger/ThreadLog.h"
#include "reading/Enclosure.h"
#include "tests/doubles/PlatformDouble.h"

namespace Tavrin {

using Standalone::FailureCause;

/// What a pass asks, step by step: operations of SMMInventory and the following.
using Steps = std::vector<std::string>;
constexpr const char* kDetection = "detection";
constexpr const char* kConstruction = "construction";
constexpr const char* kConstructionInVain = "construction in vain";  ///< None of it connects.
constexpr const char* kInVain = "one exchange in vain";

/// What each pass over an SMM begins with that was not read before.
const Steps kBeginning = {kDetection, kConstruction, "GetPSUStatus"};

/// How often a construction reads the status.
constexpr std::size_t kStatusReads = 6;

// How many exchanges have been made then.
constexpr std::size_t kAfterDetection = 1;
constexpr std::size_t kAfterConstruction = kAfterDetection + kStatusReads;
constexpr std::size_t kAfterBeginning = kAfterConstruction + 1;

/// What each further pass begins with.
const Steps kBeginningAgain = {kDetection, "GetPSUStatus"};

const Steps kIdentitySteps = {"GetSmmMT", "GetSmmSN", "GetSmmVersion", "GetSmmName"};

Steps operator+(Steps first, const Steps& second);

/// One SMM, behind the client of the thread that makes it. It gives its generation's sample
/// answers, but for what a test changes.
class ScriptedSmm {
 public:
  /// Changes the answer to a request: the exchange holds that, and the answer as it is so far. May
  /// throw, or do something else at the time.
  using Answering = std::function<void(Double::Exchange&)>;

  explicit ScriptedSmm(SMMIype ofGeneration = SMM_FIRST_GENERATION);
  ~ScriptedSmm() { Double::UseOnThisThread(before_); }
  ScriptedSmm(const ScriptedSmm&) = delete;
  ScriptedSmm& operator=(const ScriptedSmm&) = delete;

  /// Changes the answers to whatever the operation of SMMInventory sends.
  void Change(const std::string& operation, Answering answering) {
    changes_.emplace_back(operation, std::move(answering));
  }

  /// Changes the answers to the status requests of a construction alone, and of the detection
  /// alone.
  void ChangeConstruction(const Answering& answering);
  void ChangeDetection(const Answering& answering);

  /// Opens no connection for so many exchanges of a pass, behind the first ones.
  void Lose(std::size_t first, FailureCause cause, const std::string& words,
            std::size_t count = SIZE_MAX);

  /// Takes every change and loss back.
  void Heal();

  /// The requests that have arrived since the pass began, and what came in vain.
  [[nodiscard]] std::vector<std::string> Asked() const;

  /// What Asked() gives after these steps. Operations on nodes ask all of them.
  std::vector<std::string> Requests(const Steps& steps, int psu = 1);

  SMMIype generation;
  Double::Platform platform;

 private:
  [[nodiscard]] Double::Exchange NextExchange() const;
  void Answer(Double::Exchange& exchange) const;

  Double::Platform* before_;
  std::vector<std::pair<std::string, Answering>> changes_;
  std::size_t lossBegin_ = 0;
  std::size_t lossCount_ = 0;
  FailureCause lossCause_ = FailureCause::None;
  std::string lossWords_;
};

/// Answers with these bytes.
ScriptedSmm::Answering Gives(const Double::Bytes& response, std::uint8_t completionCode = 0);

/// Refuses with 0xC1 and no bytes.
ScriptedSmm::Answering Refuses(std::uint8_t completionCode = 0xC1);

/// Gives no answer to a request that got there.
ScriptedSmm::Answering FallsSilent(FailureCause cause, const std::string& words);

/// Throws in the place of an answer.
template <typename Exception>
ScriptedSmm::Answering Throws(const Exception& exception) {
  return [exception](Double::Exchange&) { throw exception; };
}

/// Keeps what an observer is told.
class Recorder : public Observer {
 public:
  [[nodiscard]] unsigned int LogLevel() const override { return logLevel; }
  void LineWritten(const Standalone::LogLine& line) override { lines.push_back(line.text); }
  void WaitBegins(const std::string& name) override { events.push_back(name); }
  void AttemptBegins(int number, int attempts) override {
    events.push_back("attempt " + std::to_string(number) + " of " + std::to_string(attempts));
  }
  void WaitEnds() override { events.emplace_back("end"); }
  void AttemptFailed(const Cause& cause) override { events.push_back("failed: " + cause.words); }
  void PartRead(const Reading& /*soFar*/, Part part) override { parts.push_back(part); }

  unsigned int logLevel = 0;
  std::vector<std::string> lines;
  std::vector<std::string> events;
  std::vector<Part> parts;
};

/// A test on a sound enclosure of the first generation; each test changes what it is about.
class ScriptedEnclosure : public testing::Test {
 protected:
  ScriptedEnclosure();

  /// One pass over an enclosure that was not read before.
  Reading Read(const std::vector<Part>& parts = {});
  Query<PsuSelection> SelectPsu(int psu);

  /// Expects that this is all that was asked in the last pass.
  void ExpectAsked(const Steps& steps, int psu = 1) {
    EXPECT_EQ(smm_.Asked(), smm_.Requests(steps, psu));
  }

  /// How often the client was told to connect in the last pass.
  [[nodiscard]] std::ptrdiff_t Connects() const;

  ScriptedSmm smm_;
  EnclosureSettings settings_;
  Recorder observer_;
};

const std::vector<Part> kEverything(kPartsToAskFor.begin(), kPartsToAskFor.end());

}  // namespace Tavrin
