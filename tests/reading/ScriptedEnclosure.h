#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "reading/Enclosure.h"
#include "tests/doubles/PlatformDouble.h"

namespace Tavrin {

using Standalone::FailureCause;

/// What a pass asks, step by step: operations of SMMInventory and the following.
using Steps = std::vector<std::string>;
constexpr const char* kDetection = "detection";
constexpr const char* kConstruction = "construction";
constexpr const char* kInVain = "one exchange in vain";  ///< That opens no connection.

Steps operator+(Steps first, const Steps& second);

/// What a pass begins with, over an SMM that was not read before and over one that was.
const Steps kBeginning = {kDetection, kConstruction, "GetPSUStatus"};
const Steps kBeginningAgain = {kDetection, "GetPSUStatus"};

const Steps kIdentitySteps = {"GetSmmMT", "GetSmmSN", "GetSmmVersion", "GetSmmName"};

/// How often a construction reads the status.
constexpr std::size_t kStatusReads = 6;

// How many exchanges have been made then.
constexpr std::size_t kAfterDetection = 1;
constexpr std::size_t kAfterConstruction = kAfterDetection + kStatusReads;
constexpr std::size_t kAfterBeginning = kAfterConstruction + 1;

/// Changes the answer to a request: the exchange holds that, and the answer as it is so far. May
/// throw, or do something else at the time.
using Answering = std::function<void(Double::Exchange&)>;

/// Answers with these bytes.
Answering Gives(const Double::Bytes& response, std::uint8_t completionCode = 0);

/// Refuses without a byte.
inline Answering Refuses(std::uint8_t completionCode = 0xC1) { return Gives({}, completionCode); }

/// Gives no answer to a request that got there.
Answering FallsSilent(FailureCause cause, const std::string& words);

/// Throws in the place of an answer.
template <typename Exception>
Answering Throws(const Exception& exception) {
  return [exception](Double::Exchange&) { throw exception; };
}

/// One SMM, behind the clients of the thread that makes it. It gives its generation's sample
/// answers, but for what a test changes.
class ScriptedSmm {
 public:
  explicit ScriptedSmm(SMMIype ofGeneration = SMM_FIRST_GENERATION);
  ~ScriptedSmm() { Double::UseOnThisThread(before_); }
  ScriptedSmm(const ScriptedSmm&) = delete;
  ScriptedSmm& operator=(const ScriptedSmm&) = delete;

  /// Changes the answers to what that operation of SMMInventory sends, or to the status requests of
  /// the detection or of the construction alone.
  void Change(const std::string& step, Answering answering) {
    changes_.emplace_back(step, std::move(answering));
  }

  /// Opens no connection for so many exchanges of a pass, behind the first ones.
  void Lose(std::size_t first, FailureCause cause, const std::string& words,
            std::size_t count = SIZE_MAX);

  /// Takes every change and loss back.
  void Heal();

  /// The requests that have arrived since the pass began, and what came in vain.
  [[nodiscard]] std::vector<std::string> Asked() const;

  /// What Asked() gives after these steps. Operations on nodes ask all of them.
  [[nodiscard]] std::vector<std::string> Requests(const Steps& steps, int psu = 1) const;

  SMMIype generation;
  Double::Platform platform;

 private:
  [[nodiscard]] Double::Exchange NextExchange() const;
  void Answer(Double::Exchange& exchange) const;

  Double::Platform* before_;
  std::vector<std::pair<std::string, Answering>> changes_;
  std::size_t lossBegin_ = 0;
  std::size_t lossCount_ = 0;
  Double::Exchange lost_;
};

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
  ScriptedEnclosure() {
    Double::OnComplaint([](const std::string& text) { ADD_FAILURE() << text; });
  }

  /// One pass over an enclosure that was not read before.
  Reading Read(const std::vector<Part>& parts = {}) {
    smm_.platform.ForgetWhatHappened();
    return Enclosure(settings_).Read(parts, observer_);
  }
  Query<PsuSelection> SelectPsu(int psu) {
    smm_.platform.ForgetWhatHappened();
    return *Enclosure(settings_).SelectPsu(psu, observer_).psuSelection;
  }

  /// Expects that this is all that was asked in the last pass.
  void ExpectAsked(const Steps& steps, int psu = 1) const {
    EXPECT_EQ(smm_.Asked(), smm_.Requests(steps, psu));
  }

  ScriptedSmm smm_;
  EnclosureSettings settings_;
  Recorder observer_;
};

const std::vector<Part> kEverything = {Part::Identity,    Part::ChassisPower, Part::PowerCaps,
                                       Part::NodeStatus,  Part::NodePower,    Part::PsuFans,
                                       Part::PsuFirmware, Part::PsuStatus};

}  // namespace Tavrin
