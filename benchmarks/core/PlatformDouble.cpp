#include "benchmarks/core/PlatformDouble.h"

#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>

#include "platform/GlobalConfig.h"
#include "platform/Log.h"

namespace Tavrin::Double {
namespace {

constexpr std::uint8_t kMasterWriteReadCommand = 0x52;
constexpr std::uint8_t kPsuStatusCommand = 0x91;
constexpr std::uint8_t kPsuRegisterCommand = 0x92;
constexpr std::uint8_t kPowerCommand = 0x98;
constexpr std::uint8_t kPowerCapCommand = 0x9D;
constexpr std::uint8_t kPsuFanCommand = 0xA5;
constexpr std::uint8_t kNodeStatusCommand = 0xA7;
constexpr std::uint8_t kStatusCommand = 0xA8;
constexpr std::uint8_t kIdentityCommand = 0xB0;
constexpr std::uint8_t kSelectPsuCommand = 0xF4;

constexpr std::uint8_t kMachineTypeItem = 0x00;
constexpr std::uint8_t kSerialNumberItem = 0x01;
constexpr std::uint8_t kNameItem = 0x0B;

constexpr std::uint8_t kPsuVersionRegister = 0xFC;
constexpr std::uint8_t kPsuManufacturerRegister = 0x99;
constexpr std::uint8_t kPsuPositionRegister = 0xF0;

[[noreturn]] void FailFor(const char* what, std::uint8_t value) {
  throw std::logic_error("the platform's double has no answer for the " + std::string(what) + " " +
                         std::to_string(value));
}

Bytes BytesOf(const std::string& text) { return {text.begin(), text.end()}; }

// A register of 32 bytes, of which the first two are looked at.
Bytes Position() {
  Bytes position(32);
  position[0] = 0x0A;
  position[1] = 0x01;
  return position;
}

Answers FirstGenerationAnswers() {
  Answers answers;
  answers.status = {0x01, 0x05, 0xA1, 0xA2, 0xA3, 'F', 'G', 'E', 'N', '7', '0', 0, 0, 0};
  answers.machineType = BytesOf({'1', 'Q', 'A', '4', 0, 0, 0, 0});
  answers.serialNumber = BytesOf("  SIM100010001  ");
  answers.name = BytesOf("first rack, enclosure 17");
  answers.power = {0x34, 0x12, 0x78, 0x16, 0xBC, 0x1A};
  answers.powerCap = {0x62, 0x02, 0x48, 0x0D, 0x86, 0x0B, 0x34, 0x08, 0xC4, 0x09};
  answers.psuFan = {0x10, 0x27, 0x32, 0x02};
  answers.psuVersion = {0x0A, 0x01};
  answers.psuManufacturer = {0x04, 'A', 'B', 'C', 'D'};
  answers.psuPosition = Position();
  answers.psuStatus = {0x00, 0x02, 0x03, 0x01, 0x00, 0x00};
  answers.psuSelection = {0x00};
  answers.nodeStatus = {0x80, 0x01, 0x01, 0x00};
  return answers;
}

Answers SecondGenerationAnswers() {
  Answers answers;
  answers.status = {0xFD, 0x02, 0x1A, 0xB1, 0xB2, 0xB3, 'S', 'G', 'E', 'N', '3', '0', 0, 0x03};
  answers.machineType = BytesOf({0x05, 0x00, '2', 'Q', 'C', '9', 0, 0, 0, 0});
  answers.serialNumber = BytesOf("\x05\x01  SIM253012530  ");
  answers.name = BytesOf("\x05\x0Bsecond rack, enclosure 4");
  answers.power = {0xAA, 0x34, 0x12, 0x78, 0x16, 0xBC, 0x1A};
  answers.powerCap = {0xAA, 0xA2, 0x08, 0xE4, 0x25, 0x8C, 0x23, 0xB0, 0x1D, 0x6C, 0x20};
  answers.psuFan = {0xAA, 0x10, 0x27, 0x32, 0x20, 0x28, 0x33, 0x02};
  answers.psuVersion = {0x0A, 0x01};
  answers.psuManufacturer = {'A', 'B', 'C', 'D', 0x00};
  answers.psuPosition = Position();
  answers.psuStatus = {0x00, 0x11, 0x02, 0x33, 0x03, 0x55, 0x01, 0x77};
  answers.psuSelection = {0x00};
  answers.nodeStatus = {0xAA, 0x80, 0x02, 0x01, 0x20};
  return answers;
}

const Bytes& IdentityAnswer(std::uint8_t item) {
  const Answers& answers = ThePlatform().answers;
  switch (item) {
    case kMachineTypeItem:
      return answers.machineType;
    case kSerialNumberItem:
      return answers.serialNumber;
    case kNameItem:
      return answers.name;
    default:
      FailFor("identity item", item);
  }
}

const Bytes& RegisterAnswer(std::uint8_t psuRegister) {
  const Answers& answers = ThePlatform().answers;
  switch (psuRegister) {
    case kPsuVersionRegister:
      return answers.psuVersion;
    case kPsuManufacturerRegister:
      return answers.psuManufacturer;
    case kPsuPositionRegister:
      return answers.psuPosition;
    default:
      FailFor("PSU register", psuRegister);
  }
}

const Bytes& AnswerTo(const IPMICOMMAND& request) {
  const Answers& answers = ThePlatform().answers;
  switch (request.cmd) {
    case kMasterWriteReadCommand:
    case kPsuRegisterCommand:
      return RegisterAnswer(request.data.back());
    case kPsuStatusCommand:
      return answers.psuStatus;
    case kPowerCommand:
      return answers.power;
    case kPowerCapCommand:
      return answers.powerCap;
    case kPsuFanCommand:
      return answers.psuFan;
    case kNodeStatusCommand:
      return answers.nodeStatus;
    case kStatusCommand:
      return answers.status;
    case kIdentityCommand:
      return IdentityAnswer(request.data.back());
    case kSelectPsuCommand:
      return answers.psuSelection;
    default:
      FailFor("command", request.cmd);
  }
}

}  // namespace

Platform& ThePlatform() {
  static Platform platform;
  return platform;
}

Platform PlatformOf(SMMIype generation) {
  Platform platform;
  platform.generation = generation;
  platform.answers =
      generation == SMM_SECOND_GENERATION ? SecondGenerationAnswers() : FirstGenerationAnswers();
  return platform;
}

TavrinConnection::ConnectionInfo ConnectionSettings() {
  TavrinConnection::ConnectionInfo settings;
  settings.address = "192.0.2.17";
  settings.port = 623;
  settings.userName = "operator-7";
  settings.password = "correct horse";
  settings.connectionKind = 1;
  return settings;
}

Tally& TallyOfThisThread() {
  thread_local Tally tally;
  return tally;
}

}  // namespace Tavrin::Double

namespace Tavrin {

using Double::TallyOfThisThread;
using Double::ThePlatform;

struct IpmiClient::State {};

IpmiClient::IpmiClient(const std::string& /*address*/, const std::string& /*userName*/,
                       const std::string& /*password*/, const std::string& /*port*/,
                       unsigned long /*cipherSuite*/) {}

IpmiClient::~IpmiClient() = default;

int IpmiClient::connect() { return 0; }

int IpmiClient::send(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                     std::uint8_t& completionCode) {
  const Double::Platform& platform = ThePlatform();
  ++TallyOfThisThread().exchanges;
  if (platform.lastRequest != nullptr) {
    *platform.lastRequest = request;
  }
  if (platform.answerTime.count() != 0) {
    std::this_thread::sleep_for(platform.answerTime);
  }
  response = Double::AnswerTo(request);
  completionCode = 0;
  return 0;
}

int IpmiClient::disconnect() { return 0; }

int GetGlobalConfigValue(const std::string& /*key*/, int defaultValue) { return defaultValue; }

// The text is collected in a stream and handed over as a string, as a logger does that writes it.
struct Log::State {
  std::ostringstream text;
};

Log::Log(unsigned int /*level*/, const std::string& /*sourcePath*/, unsigned int /*line*/)
    : state_(std::make_unique<State>()) {
  ++TallyOfThisThread().lines;
}

Log::~Log() {
  const std::string text = state_->text.str();
  volatile const char* const written = text.data();
  static_cast<void>(*written);
}

std::ostream& Log::Stream() { return state_->text; }

unsigned int Log::GetMinLogLevel() { return ThePlatform().logThreshold; }

struct SMMInfo::State {};

SMMInfo::SMMInfo(const TavrinConnection::ConnectionInfo& /*info*/) {}

SMMInfo::~SMMInfo() = default;

int SMMInfo::GetSmmType(SMMIype& type) {
  type = ThePlatform().generation;
  return 0;
}

}  // namespace Tavrin

extern "C" unsigned int sleep(unsigned int /*seconds*/) { return 0; }
