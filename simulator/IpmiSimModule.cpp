// The module that ipmi_sim loads: it carries requests to the simulated controller and its replies
// back. ipmi_sim runs everything here on its one thread.

#include <algorithm>
#include <cstddef>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

extern "C" {
#include <OpenIPMI/mcserv.h>
}

#include "simulator/Controller.h"
#include "simulator/ModuleSettings.h"
#include "simulator/SimulatorLayout.h"

namespace Tavrin::Simulator {
namespace {

/// Marks a request in ipmi_sim's own records as one whose reply waits in the module.
constexpr long kRepliedHere = 1;

Scenario ScenarioOf(const ModuleSettings& settings) {
  EnclosureState enclosure = MakeEnclosure(settings.kind);
  return settings.scenario.empty()
             ? Scenario{std::move(enclosure), {}}
             : ParseScenario(settings.scenario, "scenario", std::move(enclosure));
}

struct Module {
  Module(sys_data_t* loader, ModuleSettings given)
      : system(loader), settings(std::move(given)), controller(ScenarioOf(settings)) {}

  sys_data_t* system;
  ModuleSettings settings;
  Controller controller;
  Reply reply;
  Bytes replyBytes;  ///< Completion code and data; outlives the call that sends them.
};

// ipmi_sim knows the module only by its C functions, and one process simulates one enclosure.
std::unique_ptr<Module> theModule;

Bytes WireBytes(const Answer& answer) {
  Bytes bytes = {answer.completionCode};
  bytes.insert(bytes.end(), answer.data.begin(), answer.data.end());
  return bytes;
}

/// An answer that waits for its time.
struct DelayedAnswer {
  channel_t* channel = nullptr;
  msg_t* message = nullptr;
  rsp_msg_t response = {};
  Bytes bytes;
  ipmi_timer_t* timer = nullptr;
};

void SendDelayed(void* callbackData) {
  const std::unique_ptr<DelayedAnswer> delayed(static_cast<DelayedAnswer*>(callbackData));
  delayed->channel->return_rsp(delayed->channel, delayed->message, &delayed->response);
  delayed->channel->free(delayed->channel, delayed->message);
  theModule->system->free_timer(delayed->timer);
}

/// Takes the message over and sends the answer later; false when ipmi_sim gives no timer.
bool Delay(channel_t* channel, msg_t* message, const rsp_msg_t& response) {
  auto delayed = std::make_unique<DelayedAnswer>();
  delayed->channel = channel;
  delayed->message = message;
  delayed->bytes = theModule->replyBytes;
  delayed->response = response;
  delayed->response.data = delayed->bytes.data();
  if (theModule->system->alloc_timer(theModule->system, SendDelayed, delayed.get(),
                                     &delayed->timer) != 0) {
    return false;
  }
  const auto milliseconds = theModule->reply.delay.count();
  timeval timeout = {milliseconds / 1000, (milliseconds % 1000) * 1000};
  theModule->system->start_timer(delayed->timer, &timeout);
  // The timer's callback owns the record from here on.
  static_cast<void>(delayed.release());
  return true;
}

/// Called by ipmi_sim for every response before it goes out. Returning non-zero means that the
/// message has been taken over: the only way to keep silent, since an empty response would be sent.
int HandleResponse(channel_t* channel, msg_t* message, rsp_msg_t* response) {
  if (message->oem_data != kRepliedHere) {
    return 0;
  }
  // Command handlers get a buffer of 36 bytes; here answers of any length can be put in place.
  response->data = theModule->replyBytes.data();
  response->data_len = static_cast<unsigned short>(theModule->replyBytes.size());
  if (theModule->reply.silent) {
    channel->free(channel, message);
    return 1;
  }
  const bool delayed = theModule->reply.delay.count() > 0 && Delay(channel, message, *response);
  return delayed ? 1 : 0;
}

void HandleCommand(lmc_data_t* /*controller*/, msg_t* message, unsigned char* responseData,
                   unsigned int* responseLength, void* /*callbackData*/) {
  const Request request = {message->netfn, message->cmd,
                           Bytes(message->data, message->data + message->len)};
  theModule->reply = theModule->controller.Handle(request);
  theModule->replyBytes = WireBytes(theModule->reply.answer);
  message->oem_data = kRepliedHere;
  responseData[0] = theModule->reply.answer.completionCode;
  *responseLength = 1;
}

int RegisterHandlers() {
  for (unsigned int command = 0; command <= 0xFF; ++command) {
    const int result = ipmi_emu_register_cmd_handler(kNetFnOem, static_cast<unsigned char>(command),
                                                     HandleCommand, nullptr);
    if (result != 0) {
      return result;
    }
  }
  return ipmi_emu_register_cmd_handler(kNetFnApplication, kMasterWriteRead, HandleCommand, nullptr);
}

/// Fills the field of a fixed length: the bytes, then 0x00.
void SetField(unsigned char* field, std::size_t length, std::string bytes) {
  bytes.resize(length);
  std::copy(bytes.begin(), bytes.end(), field);
}

}  // namespace
}  // namespace Tavrin::Simulator

extern "C" {

__attribute__((visibility("default"))) int ipmi_sim_module_print_version(sys_data_t* /*system*/,
                                                                         char* /*options*/) {
  std::cout << "simulated enclosure\n";
  return 0;
}

__attribute__((visibility("default"))) int ipmi_sim_module_init(sys_data_t* system,
                                                                const char* options) {
  using namespace Tavrin::Simulator;
  try {
    theModule = std::make_unique<Module>(system, ReadModuleSettings(options));
    return RegisterHandlers();
  } catch (const std::exception& error) {
    std::cerr << "simulated enclosure: " << error.what() << "\n";
    return 1;
  }
}

__attribute__((visibility("default"))) int ipmi_sim_module_post_init(sys_data_t* system) {
  using namespace Tavrin::Simulator;
  system->chan_set[kLanChannel]->oem.oem_handle_rsp = HandleResponse;
  user_t& user = system->mc_get_users(system->mc)[kUserNumber];
  SetField(user.username, sizeof user.username, theModule->settings.userName);
  SetField(user.pw, sizeof user.pw, theModule->settings.password);
  return 0;
}

}  // extern "C"
