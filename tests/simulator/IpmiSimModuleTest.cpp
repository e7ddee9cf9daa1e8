#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

extern "C" {
#include <OpenIPMI/mcserv.h>
}

#include "simulator/Message.h"
#include "simulator/ModuleSettings.h"
#include "simulator/SimulatorLayout.h"
#include "support/TemporaryFile.h"

// What ipmi_sim finds in the module.
extern "C" int ipmi_sim_module_print_version(sys_data_t* system, char* options);
extern "C" int ipmi_sim_module_init(sys_data_t* system, const char* options);
extern "C" int ipmi_sim_module_post_init(sys_data_t* system);

// A timer's layout is ipmi_sim's own.
struct ipmi_timer_s {
  void (*callback)(void* data) = nullptr;
  void* data = nullptr;
  timeval timeout{};
  bool isRunning = false;
};

namespace Tavrin::Simulator {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// What the module did with ipmi_sim's things.
struct IpmiSim {
  std::map<std::pair<unsigned char, unsigned char>, cmd_handler_f> handlers;
  std::vector<Bytes> sent;
  std::vector<void*> freed;
  bool hasTimers = true;
  std::vector<ipmi_timer_t*> timers;  ///< Not yet given back.
  int registrations = 0;
  int refusedRegistration = -1;  ///< Counted from 0; none where it is negative.
};
IpmiSim ipmiSim;

int AllocateTimer(sys_data_t* /*system*/, void (*callback)(void*), void* data,
                  ipmi_timer_t** timer) {
  if (!ipmiSim.hasTimers) {
    return ENOMEM;
  }
  *timer = new ipmi_timer_t{callback, data};
  ipmiSim.timers.push_back(*timer);
  return 0;
}

int StartTimer(ipmi_timer_t* timer, timeval* timeout) {
  timer->timeout = *timeout;
  timer->isRunning = true;
  return 0;
}

void FreeTimer(ipmi_timer_t* timer) {
  ipmiSim.timers.erase(std::find(ipmiSim.timers.begin(), ipmiSim.timers.end(), timer));
  delete timer;
}

void ReturnResponse(channel_t* /*channel*/, msg_t* message, rsp_msg_t* response) {
  EXPECT_THAT(ipmiSim.freed, testing::Not(testing::Contains(message)));
  ipmiSim.sent.emplace_back(response->data, response->data + response->data_len);
}

void FreeMessage(channel_t* /*channel*/, void* message) { ipmiSim.freed.push_back(message); }

std::array<user_t, kUserNumber + 1> users;

user_t* Users(lmc_data_t* /*controller*/) { return users.data(); }

/// A scenario of one override, of none, or, without a list of them, no scenario at all.
std::string ScenarioOf(const std::optional<std::string>& overrides) {
  return overrides ? R"({"overrides": [)" + *overrides + "]}" : "";
}

/// The module, loaded for a first-generation enclosure, with an override where one is given.
class IpmiSimModule : public testing::Test {
 protected:
  explicit IpmiSimModule(const std::optional<std::string>& overrides = "")
      : settings_(WriteModuleSettings(
            {EnclosureKind::FirstGeneration, "admin", "sesame", ScenarioOf(overrides)})) {
    ipmiSim = IpmiSim{};
    std::memset(users.data(), 0xEE, sizeof users);
    channel_.return_rsp = ReturnResponse;
    channel_.free = FreeMessage;
    channels_[kLanChannel] = &channel_;
    system_.chan_set = channels_.data();
    system_.alloc_timer = AllocateTimer;
    system_.start_timer = StartTimer;
    system_.free_timer = FreeTimer;
    system_.mc_get_users = Users;
    EXPECT_EQ(Load(), 0);
    EXPECT_EQ(ipmi_sim_module_post_init(&system_), 0);
  }

  int Load() { return ipmi_sim_module_init(&system_, settings_.Path().c_str()); }

  /// Handles a request for the PSUs' flags as ipmi_sim does: by the handler of its command, and
  /// then, unless the module takes the message over, by sending the response and giving the message
  /// back.
  void HandlePsuFlags() {
    message_.netfn = kNetFnOem;
    message_.cmd = kGetPsuFlags;
    message_.oem_data = 0;
    std::array<unsigned char, 36> data{};
    data.fill(0xEE);
    unsigned int length = 0;
    ipmiSim.handlers.at({kNetFnOem, kGetPsuFlags})(nullptr, &message_, data.data(), &length,
                                                   nullptr);
    EXPECT_EQ(data.front(), 0x00);
    EXPECT_EQ(length, 1U);
    rsp_msg_t response{kNetFnOem + 1, kGetPsuFlags, static_cast<unsigned short>(length),
                       data.data()};
    if (channel_.oem.oem_handle_rsp(&channel_, &message_, &response) == 0) {
      ReturnResponse(&channel_, &message_, &response);
      FreeMessage(&channel_, &message_);
    }
  }

  msg_t message_{};
  sys_data_t system_{};
  channel_t channel_{};

 private:
  TemporaryFile settings_;
  std::array<channel_t*, kLanChannel + 1> channels_{};
};

const Bytes kPsuFlags = {0x00, 0x00, 0x00, 0x03, 0x03, 0xA5, 0x5A};

TEST_F(IpmiSimModule, AnswerIsLeftToIpmiSim) {
  HandlePsuFlags();
  EXPECT_THAT(ipmiSim.sent, ElementsAre(kPsuFlags));
  EXPECT_THAT(ipmiSim.freed, ElementsAre(&message_));
  EXPECT_THAT(ipmiSim.timers, IsEmpty());
}

TEST_F(IpmiSimModule, ServesTheOemFunctionAndMasterWriteRead) {
  EXPECT_EQ(ipmiSim.handlers.size(), 257U);
  for (int command = 0; command <= 0xFF; ++command) {
    EXPECT_EQ(ipmiSim.handlers.count({0x32, static_cast<unsigned char>(command)}), 1U) << command;
  }
  EXPECT_EQ(ipmiSim.handlers.count({0x06, 0x52}), 1U);
}

TEST_F(IpmiSimModule, NameAndPasswordAreTheUsers) {
  const user_t& user = users.at(2);
  EXPECT_EQ(std::string(user.username, user.username + sizeof user.username),
            "admin" + std::string(sizeof user.username - 5, '\0'));
  EXPECT_EQ(std::string(user.pw, user.pw + sizeof user.pw),
            "sesame" + std::string(sizeof user.pw - 6, '\0'));
}

TEST_F(IpmiSimModule, ResponseThatIpmiSimMadeStaysAsItIs) {
  std::array<unsigned char, 2> data = {0xD4, 0x17};
  message_.oem_data = 0;
  rsp_msg_t response{kNetFnOem + 1, kGetPsuFlags, 2, data.data()};
  EXPECT_EQ(channel_.oem.oem_handle_rsp(&channel_, &message_, &response), 0);
  EXPECT_EQ(response.data, data.data());
  EXPECT_EQ(response.data_len, 2);
}

TEST_F(IpmiSimModule, IsNotLoadedWhereIpmiSimRefusesAHandler) {
  for (const int number : {0, 255, 256}) {
    ipmiSim = IpmiSim{};
    ipmiSim.refusedRegistration = number;
    EXPECT_EQ(Load(), EBUSY) << number;
  }
}

TEST_F(IpmiSimModule, IsNotLoadedWithSettingsOfNoKnownEnclosure) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(ipmi_sim_module_init(&system_, "/none"), 1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "simulated enclosure: /none names no known kind of enclosure\n");
}

TEST_F(IpmiSimModule, TellsWhatItIsWhenItsVersionIsAskedFor) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(ipmi_sim_module_print_version(&system_, nullptr), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "simulated enclosure\n");
}

class ModuleWithoutScenario : public IpmiSimModule {
 protected:
  ModuleWithoutScenario() : IpmiSimModule(std::nullopt) {}
};

TEST_F(ModuleWithoutScenario, AnswersAsAHealthyEnclosure) {
  HandlePsuFlags();
  EXPECT_THAT(ipmiSim.sent, ElementsAre(kPsuFlags));
}

class SilentModule : public IpmiSimModule {
 protected:
  SilentModule() : IpmiSimModule(R"({"command": "0x91", "silent": true})") {}
};

TEST_F(SilentModule, RequestIsGivenBackUnanswered) {
  HandlePsuFlags();
  EXPECT_THAT(ipmiSim.sent, IsEmpty());
  EXPECT_THAT(ipmiSim.freed, ElementsAre(&message_));
  EXPECT_THAT(ipmiSim.timers, IsEmpty());
}

class LateModule : public IpmiSimModule {
 protected:
  LateModule() : IpmiSimModule(R"({"command": "0x91", "delayMs": 1500})") {}
};

TEST_F(LateModule, RequestIsAnsweredAndGivenBackWhenItsTimeHasCome) {
  HandlePsuFlags();
  EXPECT_THAT(ipmiSim.sent, IsEmpty());
  EXPECT_THAT(ipmiSim.freed, IsEmpty());
  ASSERT_EQ(ipmiSim.timers.size(), 1U);
  const ipmi_timer_t& timer = *ipmiSim.timers.front();
  EXPECT_TRUE(timer.isRunning);
  EXPECT_EQ(timer.timeout.tv_sec, 1);
  EXPECT_EQ(timer.timeout.tv_usec, 500000);
  timer.callback(timer.data);
  EXPECT_THAT(ipmiSim.sent, ElementsAre(kPsuFlags));
  EXPECT_THAT(ipmiSim.freed, ElementsAre(&message_));
  EXPECT_THAT(ipmiSim.timers, IsEmpty());
}

class SlightlyLateModule : public IpmiSimModule {
 protected:
  SlightlyLateModule() : IpmiSimModule(R"({"command": "0x91", "delayMs": 1})") {}
};

TEST_F(SlightlyLateModule, RequestWaitsForItsMillisecond) {
  HandlePsuFlags();
  EXPECT_THAT(ipmiSim.sent, IsEmpty());
  ASSERT_EQ(ipmiSim.timers.size(), 1U);
  EXPECT_EQ(ipmiSim.timers.front()->timeout.tv_sec, 0);
  EXPECT_EQ(ipmiSim.timers.front()->timeout.tv_usec, 1000);
  ipmiSim.timers.front()->callback(ipmiSim.timers.front()->data);
}

class OnceLateModule : public IpmiSimModule {
 protected:
  OnceLateModule()
      : IpmiSimModule(R"({"command": "0x91", "delayMs": 60000, "times": 1},
                         {"command": "0x91", "response": "07"})") {}
};

TEST_F(OnceLateModule, LateAnswerStaysWhatItWasWhenOthersAreGivenMeanwhile) {
  HandlePsuFlags();
  HandlePsuFlags();
  EXPECT_THAT(ipmiSim.sent, ElementsAre(Bytes{0x00, 0x07}));
  ASSERT_EQ(ipmiSim.timers.size(), 1U);
  const ipmi_timer_t& timer = *ipmiSim.timers.front();
  ipmiSim.freed.clear();
  timer.callback(timer.data);
  EXPECT_THAT(ipmiSim.sent, ElementsAre(Bytes{0x00, 0x07}, kPsuFlags));
}

TEST_F(LateModule, RequestIsAnsweredAtOnceWhereThereIsNoTimer) {
  ipmiSim.hasTimers = false;
  HandlePsuFlags();
  EXPECT_THAT(ipmiSim.sent, ElementsAre(kPsuFlags));
  EXPECT_THAT(ipmiSim.freed, ElementsAre(&message_));
}

}  // namespace
}  // namespace Tavrin::Simulator

extern "C" int ipmi_emu_register_cmd_handler(unsigned char netFn, unsigned char command,
                                             cmd_handler_f handler, void* /*data*/) {
  Tavrin::Simulator::IpmiSim& ipmiSim = Tavrin::Simulator::ipmiSim;
  if (ipmiSim.registrations++ == ipmiSim.refusedRegistration) {
    return EBUSY;
  }
  EXPECT_TRUE(ipmiSim.handlers.insert({{netFn, command}, handler}).second);
  return 0;
}
