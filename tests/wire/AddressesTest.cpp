// A host name with several addresses, which the system is made to know by taking the place of its
// getaddrinfo().

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netdb.h>

#include <string>
#include <vector>

#include "platform/IpmiClient.h"
#include "platform/standalone/globalconfig/ConfigControl.h"
#include "platform/standalone/ipmi_client/ConnectResult.h"
#include "tests/wire/WireTest.h"

namespace Tavrin {
namespace {

namespace ConnectResult = Standalone::ConnectResult;
using ::testing::HasSubstr;

constexpr const char* kName = "enclosure";
/// Both on this machine.
constexpr const char* kSilentAddress = "127.0.0.3";
constexpr const char* kControllersAddress = "127.0.0.1";

class Addresses : public WireTest {
 protected:
  Addresses()
      : simulator({"--generation", "1"}),
        client(kName, "admin", "sesame", std::to_string(simulator.Port()), 3) {}

  SimulatedSmm simulator;
  IpmiClient client;
};

TEST_F(Addresses, AttemptAfterOneThatFailedTakesTheNext) {
  ASSERT_EQ(client.connect(), ConnectResult::WorthRetrying);
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_THAT(lines[0].text, HasSubstr("host enclosure (127.0.0.3), port "));
  EXPECT_EQ(client.connect(), ConnectResult::Connected);
}

TEST_F(Addresses, AttemptAfterOneThatSucceededStaysThere) {
  ASSERT_EQ(client.connect(), ConnectResult::WorthRetrying);
  ASSERT_EQ(client.connect(), ConnectResult::Connected);
  EXPECT_EQ(client.connect(), ConnectResult::Connected);
}

TEST_F(Addresses, LineOfAnAttemptWithoutAnAddressDoesNotShowAnEarlierOne) {
  ASSERT_EQ(client.connect(), ConnectResult::WorthRetrying);
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", 4);
  EXPECT_EQ(client.connect(), ConnectResult::InvalidSetting);
  Standalone::SetGlobalConfigValue("IPMI_CIPHER_SUITE", -1);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_THAT(lines[1].text, HasSubstr("host enclosure, port "));
}

}  // namespace
}  // namespace Tavrin

/// The name stands for the two addresses; anything else is the system's to find.
extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints,
                           addrinfo** list) {
  using Find = int (*)(const char*, const char*, const addrinfo*, addrinfo**);
  static const auto find = reinterpret_cast<Find>(dlsym(RTLD_NEXT, "getaddrinfo"));
  if (std::string(node) != Tavrin::kName) {
    return find(node, service, hints, list);
  }
  if ((hints->ai_flags & AI_NUMERICHOST) != 0) {
    return EAI_NONAME;
  }
  find(Tavrin::kSilentAddress, service, hints, list);
  return find(Tavrin::kControllersAddress, service, hints, &(*list)->ai_next);
}
