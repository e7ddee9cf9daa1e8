#include "tests/fuzz/ConversationDouble.h"

#include <unistd.h>

#include <ctime>
#include <sstream>
#include <string>
#include <utility>

#include "platform/GlobalConfig.h"
#include "platform/Log.h"
#include "platform/SMMInfo.h"
#include "tests/fuzz/Require.h"

namespace Tavrin::Fuzz {

void Conversation::ForgetWhatHappened() {
  exchanges.clear();
  pauses = 0;
}

Conversation& TheConversation() {
  static Conversation conversation;
  return conversation;
}

}  // namespace Tavrin::Fuzz

namespace Tavrin {

using Fuzz::Require;
using Fuzz::TheConversation;

/// The connection byte: below 0xC0 it connects at once; below 0xE0 it does after 1 to 8 failures
/// that are worth retrying; below 0xF0 it fails for good; below 0xF8 it connects and no answer
/// comes; below 0xFC connect() throws; from there on send() does.
struct IpmiClient::State {
  std::uint8_t link = 0;
  int connects = 0;
  int lastResult = 3;
  bool sent = false;
  bool connected = false;

  [[nodiscard]] int NextResult() const {
    constexpr int kOtherFailure = -1;
    if (link >= 0xC0 && link < 0xE0) {
      return connects <= 1 + link % 8 ? 3 : 0;
    }
    if (link >= 0xE0 && link < 0xF0) {
      const int result = link % 16;
      return result == 0 || result == 3 ? kOtherFailure : result;
    }
    return 0;
  }
};

IpmiClient::IpmiClient(const std::string& address, const std::string& userName,
                       const std::string& password, const std::string& port,
                       unsigned long cipherSuite)
    : state_(new State) {
  Fuzz::Conversation& conversation = TheConversation();
  const TavrinConnection::ConnectionInfo& settings = conversation.settings;
  Require(address == settings.address && userName == settings.userName &&
              password == settings.password && port == std::to_string(settings.port) &&
              cipherSuite == 3,
          "a client gets the settings of its SMM");
  Require(conversation.openConnections == 0, "one connection is open at a time");
  conversation.exchanges.emplace_back();
  state_->link = conversation.fixedAnswer ? std::uint8_t{0} : conversation.input.Byte();
}

IpmiClient::~IpmiClient() {
  const Fuzz::Exchange& exchange = TheConversation().exchanges.back();
  TheConversation().openConnections -= state_->connected ? 1 : 0;
  if (exchange.faulted) {
    return;
  }
  Require(!state_->connected, "a connection is closed");
  Require(state_->sent == exchange.connected, "a request is sent over every connection");
  Require(state_->lastResult != 3 || state_->connects >= TheConversation().connectAttempts,
          "a connection is tried as often as configured");
}

int IpmiClient::connect() {
  Fuzz::Exchange& exchange = TheConversation().exchanges.back();
  Require(state_->lastResult == 3, "a connection is only tried again when that is worth it");
  ++state_->connects;
  Require(state_->connects <= TheConversation().connectAttempts,
          "a connection is tried no more often than configured");
  if (state_->link >= 0xF8 && state_->link < 0xFC) {
    exchange.faulted = true;
    throw Fuzz::PlatformFault();
  }
  state_->lastResult = state_->NextResult();
  state_->connected = state_->lastResult == 0;
  exchange.connected = state_->connected;
  TheConversation().openConnections += state_->connected ? 1 : 0;
  return state_->lastResult;
}

int IpmiClient::send(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                     std::uint8_t& completionCode) {
  Fuzz::Conversation& conversation = TheConversation();
  Fuzz::Exchange& exchange = conversation.exchanges.back();
  Require(state_->connected && !state_->sent, "one request is sent over a connection");
  state_->sent = true;
  exchange.request = request;
  if (state_->link >= 0xFC) {
    exchange.faulted = true;
    throw Fuzz::PlatformFault();
  }
  const bool answers = state_->link < 0xF0;
  if (conversation.fixedAnswer) {
    exchange.completionCode = 0;
    exchange.answer = *conversation.fixedAnswer;
  } else if (answers) {
    exchange.completionCode = conversation.input.Byte();
    exchange.answer = conversation.input.Bytes(conversation.input.Byte());
  }
  response = exchange.answer;
  completionCode = exchange.completionCode;
  return answers ? 0 : -1;
}

int IpmiClient::disconnect() {
  Require(state_->connected, "a connection is closed once");
  state_->connected = false;
  --TheConversation().openConnections;
  return 0;
}

int GetGlobalConfigValue(const std::string& key, int defaultValue) {
  Require(key == "IPMI_CONNECT_RETRY_TIMES" && defaultValue == 3,
          "the attempts are configured, and three by default");
  return TheConversation().connectAttempts;
}

struct Log::State {
  std::ostringstream text;
};

Log::Log(unsigned int level, const std::string& sourcePath, unsigned int line) : state_(new State) {
  Require(level >= 1 && level <= 4, "a line has a level from 1 to 4");
  Require(level <= TheConversation().logThreshold, "no line goes beyond the threshold");
  Require(sourcePath == "module/smm/smm_inventory/impl/SMMInventoryImpl" && line > 0,
          "a line says where it was written");
}

Log::~Log() { Require(!state_->text.str().empty(), "a line has a text"); }

std::ostream& Log::Stream() { return state_->text; }

unsigned int Log::GetMinLogLevel() { return TheConversation().logThreshold; }

struct SMMInfo::State {};

SMMInfo::SMMInfo(const TavrinConnection::ConnectionInfo& info) : state_(new State) {
  Require(info.address == TheConversation().settings.address &&
              info.connectionKind == TheConversation().settings.connectionKind,
          "the generation is asked of the same SMM");
}

SMMInfo::~SMMInfo() = default;

int SMMInfo::GetSmmType(SMMIype& type) {
  if (!TheConversation().knowsSmmType) {
    return -1;
  }
  type = static_cast<SMMIype>(TheConversation().smmType);
  return 0;
}

}  // namespace Tavrin

extern "C" unsigned int sleep(unsigned int seconds) {
  // The fuzzer watches its memory from a thread of its own, which does pause.
  if (gettid() != getpid()) {
    const timespec pause{seconds, 0};
    return static_cast<unsigned int>(nanosleep(&pause, nullptr));
  }
  Tavrin::Fuzz::Require(seconds == 3, "a pause lasts three seconds");
  ++Tavrin::Fuzz::TheConversation().pauses;
  return 0;
}
