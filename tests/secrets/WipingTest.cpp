#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/IpmiClient.h"
#include "platform/SMMInfo.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/logger/LogControl.h"
#include "reading/Enclosure.h"
#include "reading/Wiping.h"
#include "tests/doubles/Allocations.h"
#include "tests/support/SimulatedSmm.h"
#include "tools/smm-inventory/Password.h"

namespace Tavrin {
namespace {

// One that a text keeps within itself, one that it keeps elsewhere, and one that is refused.
const std::vector<std::string> kSecrets = {"Zq7kT2mW9xVb", "Zq7kT2mW9xVb4Hn6pR3s",
                                           "Zq7kT2mW9xVb4Hn6pR3sXe9hM4rS"};

/// Looks into all memory that is given back while it lives. One at a time.
class FreedMemory {
 public:
  /// `secret` stays where it is meanwhile; its parts of eight bytes are what is looked for.
  explicit FreedMemory(std::string_view secret) : secret_(secret) {
    onlooker = this;
    onFree = [](const void* block, std::size_t size) { onlooker->LookInto(block, size); };
  }
  ~FreedMemory() { onFree = nullptr; }
  FreedMemory(const FreedMemory&) = delete;
  FreedMemory& operator=(const FreedMemory&) = delete;

  /// How many blocks were looked into, and how many of them held a part of the secret.
  std::size_t BlockCount() const { return blockCount_; }
  std::size_t TraceCount() const { return traceCount_; }

 private:
  void LookInto(const void* block, std::size_t size) {
    constexpr std::size_t kPartLength = 8;
    ++blockCount_;
    bool isTrace = false;
    for (std::size_t begin = 0; begin + kPartLength <= secret_.size(); ++begin) {
      isTrace = isTrace || memmem(block, size, &secret_[begin], kPartLength) != nullptr;
    }
    traceCount_ += isTrace ? 1 : 0;
  }

  inline static FreedMemory* onlooker = nullptr;
  std::string_view secret_;
  std::size_t blockCount_ = 0;
  std::size_t traceCount_ = 0;
};

/// Lines are composed at the highest log level, and dropped.
class Wiping : public testing::TestWithParam<std::string> {
 protected:
  Wiping() {
    Standalone::SetMinLogLevel(4);
    Standalone::SetLogLineHandler([](const Standalone::LogLine&) {});
    Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS", 200);
    Standalone::SetGlobalConfigValue("IPMI_WORKAROUND_FLAGS", 16);
  }
  ~Wiping() override { Standalone::SetLogLineHandler({}); }

  const std::string& Secret() const { return GetParam(); }
};

EnclosureSettings SettingsAt(std::uint16_t port, const std::string& password) {
  EnclosureSettings settings;
  settings.host = "127.0.0.1";
  settings.port = port;
  settings.userName = "admin";
  settings.password = password;
  return settings;
}

TEST_P(Wiping, TextThatIsNotWipedIsNoticed) {
  auto text = std::make_unique<std::string>(Secret());
  const FreedMemory freed(Secret());
  text.reset();
  EXPECT_EQ(freed.TraceCount(), 1U);
}

TEST_P(Wiping, ClientWipesItsCopyUnused) {
  auto client = std::make_unique<IpmiClient>("127.0.0.1", "admin", Secret(), "9", 3);
  const FreedMemory freed(Secret());
  client.reset();
  EXPECT_GT(freed.BlockCount(), 1U);
  EXPECT_EQ(freed.TraceCount(), 0U);
}

TEST_P(Wiping, ClientWipesItsCopyAfterAFailure) {
  const FreedMemory freed(Secret());
  auto client = std::make_unique<IpmiClient>("127.0.0.1", "admin", Secret(), "9", 3);
  EXPECT_NE(client->connect(), 0);
  client.reset();
  EXPECT_EQ(freed.TraceCount(), 0U);
}

TEST_P(Wiping, DetectionWipesItsCopy) {
  TavrinConnection::ConnectionInfo info;
  info.address = "127.0.0.1";
  info.port = 9;
  info.password = Secret();
  info.connectionKind = 7;
  const FreedMemory freed(Secret());
  SMMIype type = SMM_FIRST_GENERATION;
  EXPECT_NE(SMMInfo(info).GetSmmType(type), 0);
  EXPECT_EQ(freed.TraceCount(), 0U);
}

TEST_P(Wiping, EnclosureWipesItsCopiesOnEveryWay) {
  const FreedMemory freed(Secret());
  const auto leave = [this] {
    Observer nobody;
    auto enclosure = std::make_unique<Enclosure>(SettingsAt(9, Secret()));
    EXPECT_TRUE(enclosure->Read({}, nobody).failure);
    throw std::runtime_error("on the way");
  };
  EXPECT_THROW(leave(), std::runtime_error);
  EXPECT_EQ(freed.TraceCount(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Secrets, Wiping, testing::ValuesIn(kSecrets),
                         [](const testing::TestParamInfo<std::string>& secret) {
                           return "OfBytes" + std::to_string(secret.param.size());
                         });

TEST_F(Wiping, ClientWipesItsCopyAfterASession) {
  const std::string& secret = kSecrets[1];
  const SimulatedSmm simulator({"--generation", "1"}, R"({"overrides": []})", secret);
  Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS", 2000);
  const std::string port = std::to_string(simulator.Port());
  const FreedMemory freed(secret);
  auto client = std::make_unique<IpmiClient>("127.0.0.1", "admin", secret, port, 3);
  EXPECT_EQ(client->connect(), 0);
  std::vector<std::uint8_t> response;
  std::uint8_t completionCode = 0;
  EXPECT_EQ(client->send({0xA8, {}, 0x32}, response, completionCode), 0);
  client->disconnect();
  client.reset();
  EXPECT_EQ(freed.TraceCount(), 0U);
}

TEST_F(Wiping, EnclosureLeavesNoCopyButThatOfTheLibrarysObject) {
  const std::string& secret = kSecrets[1];
  const SimulatedSmm simulator({"--generation", "1"}, R"({"overrides": []})", secret);
  Standalone::SetGlobalConfigValue("IPMI_SESSION_TIMEOUT_MS", 2000);
  const FreedMemory freed(secret);
  Observer nobody;
  auto enclosure = std::make_unique<Enclosure>(SettingsAt(simulator.Port(), secret));
  EXPECT_TRUE(enclosure->Read({}, nobody).detection);
  EXPECT_EQ(freed.TraceCount(), 0U);
  enclosure.reset();
  EXPECT_EQ(freed.TraceCount(), 1U);
}

TEST_F(Wiping, ToolReadsAPasswordWithoutLeavingACopy) {
  const std::string& secret = kSecrets[1];
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  ASSERT_EQ(write(ends[1], secret.data(), secret.size()), static_cast<ssize_t>(secret.size()));
  close(ends[1]);
  const FreedMemory freed(secret);
  auto password = std::make_unique<std::string>();
  ReadPasswordLine(ends[0], "standard input", *password);
  EXPECT_EQ(*password, secret);
  WipeText(*password);
  password.reset();
  close(ends[0]);
  EXPECT_EQ(freed.TraceCount(), 0U);
}

}  // namespace
}  // namespace Tavrin
