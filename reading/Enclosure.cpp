#include "reading/Enclosure.h"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "platform/ConnectionInfo.h"
#include "platform/standalone/globalconfig/ThreadConfig.h"
#include "platform/standalone/logger/ThreadLog.h"
#include "reading/Generation.h"
#include "reading/Inquiry.h"
#include "reading/LibraryObject.h"
#include "reading/LineListener.h"
#include "reading/LoginGuard.h"
#include "reading/Stopwatch.h"
#include "reading/Wiping.h"
#include "support/HostAndPort.h"

namespace Tavrin {
namespace {

// IPMI exchanges are admitted on kinds 1 and 7; 7 is what management tools use.
constexpr std::int32_t kConnectionKind = 7;

std::map<std::string, int> ConfigOf(const EnclosureSettings& settings) {
  std::map<std::string, int> config;
  const auto add = [&config](const char* key, const std::optional<int>& value) {
    if (value) {
      config.emplace(key, *value);
    }
  };
  add("IPMI_CIPHER_SUITE", settings.cipherSuite);
  add("IPMI_PRIVILEGE_LEVEL", settings.privilegeLevel);
  add("IPMI_WORKAROUND_FLAGS", settings.workaroundFlags);
  add("IPMI_CONNECT_RETRY_TIMES", settings.attempts);
  add("IPMI_SESSION_TIMEOUT_MS", settings.sessionTimeoutMs);
  add("IPMI_RETRANSMISSION_TIMEOUT_MS", settings.retransmissionTimeoutMs);
  return config;
}

void Fill(TavrinConnection::ConnectionInfo& info, const EnclosureSettings& settings) {
  info.address = settings.host;
  info.port = settings.port;
  info.userName = settings.userName;
  info.password = settings.password;
  info.connectionKind = kConnectionKind;
}

}  // namespace

struct Enclosure::State {
  using Ask = std::function<void(Inquiry&, Reading&)>;

  explicit State(const EnclosureSettings& given) : settings(given) {}

  /// Makes a pass: finds out the generation, and lets `ask` fill the reading behind the detection.
  Reading MakePass(Observer& observer, const Ask& ask);

  /// What comes behind the generation. The object stays for the next pass only when all went well.
  void Inquire(const Query<SMMIype>& generation, LoginGuard& guard, Observer& observer,
               const Ask& ask, Reading& reading);

  [[nodiscard]] Query<SMMIype> Generation() const;
  std::unique_ptr<LibraryObject> TakeObject(SMMIype generation, const LoginGuard& guard,
                                            Observer& observer);

  const EnclosureSettings settings;

  /// Of the pass before; none when the SMM was lost in it, or its status was not read.
  std::unique_ptr<LibraryObject> object;
};

Reading Enclosure::State::MakePass(Observer& observer, const Ask& ask) {
  const Stopwatch stopwatch;
  Reading reading;
  reading.address = AddressText(settings.host, settings.port);
  reading.readAt = stopwatch.Begin();
  Standalone::ThreadConfig config(ConfigOf(settings));
  LoginGuard guard(config);
  LineListener listener(observer, guard);
  const Standalone::ThreadLog log(
      listener.Threshold(), [&listener](const Standalone::LogLine& line) { listener.Take(line); });
  const Query<SMMIype> generation = Generation();
  if (generation.Succeeded()) {
    guard.Begin();
    Inquire(generation, guard, observer, ask, reading);
  } else {
    object.reset();
    reading.failure = generation;
  }
  reading.duration = stopwatch.Duration();
  return reading;
}

void Enclosure::State::Inquire(const Query<SMMIype>& generation, LoginGuard& guard,
                               Observer& observer, const Ask& ask, Reading& reading) {
  std::unique_ptr<LibraryObject> taken = TakeObject(generation.value, guard, observer);
  Inquiry inquiry(*taken, guard, observer);
  reading.detection = inquiry.ReadDetection(generation);
  observer.PartRead(reading, Part::Detection);
  ask(inquiry, reading);
  if (inquiry.WasAlwaysConnected()) {
    object = std::move(taken);
  }
}

Query<SMMIype> Enclosure::State::Generation() const {
  TavrinConnection::ConnectionInfo info;
  const WipedAtEnd password(info.password);
  Fill(info, settings);
  return FindGeneration(info);
}

std::unique_ptr<LibraryObject> Enclosure::State::TakeObject(SMMIype generation,
                                                            const LoginGuard& guard,
                                                            Observer& observer) {
  const std::optional<Layout> layout = LastLayout();
  // It goes by the generation, the platform and the slots of its construction, so it has to be
  // known to fit still. The platform's byte tells the generation, too.
  if (object && layout && object->layout == layout) {
    return std::move(object);
  }
  object.reset();
  TavrinConnection::ConnectionInfo info;
  const WipedAtEnd password(info.password);
  Fill(info, settings);
  auto constructed = ConstructObject(info, generation, guard, observer);
  constructed->layout = layout;
  return constructed;
}

Enclosure::Enclosure(const EnclosureSettings& settings)
    : state_(std::make_unique<State>(settings)) {}

Enclosure::~Enclosure() = default;

Reading Enclosure::Read(const std::vector<Part>& parts, Observer& observer) {
  return state_->MakePass(observer, [&](Inquiry& inquiry, Reading& reading) {
    for (const Part part : kPartsToAskFor) {
      if (std::find(parts.begin(), parts.end(), part) != parts.end()) {
        inquiry.Read(part, reading);
        observer.PartRead(reading, part);
      }
    }
  });
}

Reading Enclosure::SelectPsu(int psu, Observer& observer) {
  return state_->MakePass(observer, [&](Inquiry& inquiry, Reading& reading) {
    reading.psuSelection = inquiry.SelectPsu(psu);
    observer.PartRead(reading, Part::PsuSelection);
  });
}

}  // namespace Tavrin
