#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <map>
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

void ReturnResponse(channel_t* /*channel*/, msg_t* /*message*/, rsp_msg_t* response) {
  ipmiSim.sent.emplace_back(response->data, response->data + response->data_len);
}

void FreeMessage(channel_t* /*channel*/, void* message) { ipmiSim.freed.push_back(message); }

std::array<user_t, kUserNumber + 1> users;

user_t* Users(lmc_data_t* /*controller*/) { return users.data(); }

/// The module, loaded for a first-generation enclosure, with an override where one is given.
class IpmiSimModule : public testing::Test {
 protected:
  explicit IpmiSimModule(const std::string& override = {})
      : settings_(WriteModuleSettings({EnclosureKind::FirstGeneration, "admin", "sesame",
                                       R"({"overrides": [)" + override + "]}"})) {
    ipmiSim = IpmiSim{};
    channel_.return_rsp = ReturnResponse;
    channel_.free = FreeMessage;
    channels_[kLanChannel] = &channel_;
    system_.chan_set = channels_.data();
    system_.alloc_timer = AllocateTimer;
    system_.start_timer = StartTimer;
    system_.free_timer = FreeTimer;
    system_.mc_get_users = Users;
    EXPECT_EQ(ipmi_sim_module_init(&system_, settings_.Path().c_str()), 0);
    EXPECT_EQ(ipmi_sim_module_post_init(&system_), 0);
  }

  /// Handles a request for the PSUs' flags as ipmi_sim does: by the handler of its command, and
  /// then, unless the module takes the message over, by sending the response and giving the message
  /// back.
  void HandlePsuFlags() {
    message_.netfn = kNetFnOem;
    message_.cmd = kGetPsuFlags;
    message_.oem_data = 0;
    std::array<unsigned char, 36> data{};
    unsigned int length = 0;
    ipmiSim.handlers.at({kNetFnOem, kGetPsuFlags})(nullptr, &message_, data.data(), &length,
                                                   nullptr);
    rsp_msg_t response{kNetFnOem + 1, kGetPsuFlags, static_cast<unsigned short>(length),
                       data.data()};
    if (channel_.oem.oem_handle_rsp(&channel_, &message_, &response) == 0) {
      ReturnResponse(&channel_, &message_, &response);
      FreeMessage(&channel_, &message_);
    }
  }

  msg_t message_{};

 private:
  TemporaryFile settings_;
  sys_data_t system_{};
  channel_t channel_{};
  std::array<channel_t*, kLanChannel + 1> channels_{};
};

const Bytes kPsuFlags = {0x00, 0x00, 0x00, 0x03, 0x03, 0xA5, 0x5A};

TEST_F(IpmiSimModule, AnswerIsLeftToIpmiSim) {
  HandlePsuFlags();
  EXPECT_THAT(ipmiSim.sent, ElementsAre(kPsuFlags));
  EXPECT_THAT(ipmiSim.freed, ElementsAre(&message_));
  EXPECT_THAT(ipmiSim.timers, IsEmpty());
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
  Tavrin::Simulator::ipmiSim.handlers[{netFn, command}] = handler;
  return 0;
}
