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

/// What arrives, request by request: the operation of SMMInventory that sends it, and the number
/// that tells a node or a PSU.
using Steps = std::vector<std::string>;
constexpr const char* kStatus = "GetSmmVersion";  ///< Detection and construction send this, too.
constexpr const char* kInVain = "in vain";        ///< The exchange opens no connection.

inline Steps operator+(Steps first, const Steps& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/// How often a construction reads the status.
constexpr std::size_t kStatusReads = 6;

// How many exchanges have been made then.
constexpr std::size_t kAfterDetection = 1;
constexpr std::size_t kAfterConstruction = kAfterDetection + kStatusReads;
constexpr std::size_t kAfterBeginning = kAfterConstruction + 1;

/// What a pass begins with, over an SMM that was not read before.
const Steps kBeginning = Steps(kAfterConstruction, kStatus) + Steps{"GetPSUStatus"};

const Steps kIdentitySteps = {"GetSmmMT", "GetSmmSN", "GetSmmVersion", "GetSmmName"};

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
  ~ScriptedSmm() { Double::UseOnThisThread(nullptr); }
  ScriptedSmm(const ScriptedSmm&) = delete;
  ScriptedSmm& operator=(const ScriptedSmm&) = delete;

  /// Changes the answers to what an operation of SMMInventory sends; to the status requests of the
  /// detection, of a construction and of the version alike.
  void Change(const std::string& operation, Answering answering) {
    changes_.emplace_back(operation, std::move(answering));
  }
  void ChangeConstruction(const Answering& answering);

  /// Opens no connection for so many exchanges of a pass, behind the first ones.
  void Lose(std::size_t first, FailureCause cause, const std::string& words,
            std::size_t count = SIZE_MAX);

  /// Takes every change and loss back.
  void Heal();

  /// What has arrived since the pass began.
  [[nodiscard]] Steps Asked() const;

  SMMIype generation;
  Double::Platform platform;

 private:
  [[nodiscard]] Double::Exchange NextExchange() const;
  void Answer(Double::Exchange& exchange) const;

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

  ScriptedSmm smm_;
  EnclosureSettings settings_;
  Recorder observer_;
};

const std::vector<Part> kEverything(kPartsToAskFor.begin(), kPartsToAskFor.end());

}  // namespace Tavrin
