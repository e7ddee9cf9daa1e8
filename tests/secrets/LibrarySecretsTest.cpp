#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/secrets/ProcessWatch.h"
#include "tests/secrets/Traces.h"
#include "tests/support/SimulatedSmm.h"

namespace Tavrin {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using Texts = std::vector<std::string>;

struct CircumstanceOfLibrary {
  const char* name;
  std::string port;  ///< Empty for the simulated enclosure's.
  std::string user;
  std::string password;
  Texts environment;
  std::string words;  ///< What the log says of the circumstance.
};

void PrintTo(const CircumstanceOfLibrary& circumstance, std::ostream* out) {
  *out << circumstance.name;
}

class LibrarySecrets : public testing::TestWithParam<CircumstanceOfLibrary> {};

TEST_P(LibrarySecrets, PasswordIsToldNowhere) {
  const CircumstanceOfLibrary& given = GetParam();
  const SimulatedSmm simulator({"--generation", "1"}, R"({"overrides": []})", kPassword);
  Texts environment = {"TAVRIN_LOG_LEVEL=4", "IPMI_SESSION_TIMEOUT_MS=1000",
                       "IPMI_WORKAROUND_FLAGS=16"};
  // The first of a name holds.
  environment.insert(environment.begin(), given.environment.begin(), given.environment.end());
  const std::string port = given.port.empty() ? std::to_string(simulator.Port()) : given.port;
  Child program({SECRETS_PROBE, simulator.Host(), port, given.user}, environment,
                given.password + "\n");
  std::future<Watched> watch = Watch(program.Process());
  const Finished finished = program.Wait();
  const Watched watched = watch.get();
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_THAT(finished.error, AllOf(HasSubstr(given.words), TellsNoPassword()));
  EXPECT_THAT(watched.commandLines, AllOf(HasSubstr(given.user), TellsNoPassword()));
  EXPECT_THAT(watched.environments, AllOf(HasSubstr("TAVRIN_LOG_LEVEL=4"), TellsNoPassword()));
}

INSTANTIATE_TEST_SUITE_P(
    Circumstances, LibrarySecrets,
    testing::Values(
        CircumstanceOfLibrary{"Success", "", "admin", kPassword, {}, "Response="},
        CircumstanceOfLibrary{"WrongUser", "", "nobody", kPassword, {}, "user \"nobody\": "},
        CircumstanceOfLibrary{"WrongPassword", "", "admin", kWrongPassword, {}, "connect failed"},
        CircumstanceOfLibrary{"DeadHost",
                              "9",
                              "admin",
                              kPassword,
                              {"IPMI_SESSION_TIMEOUT_MS=200", "IPMI_CONNECT_RETRY_TIMES=1"},
                              "port 9"},
        CircumstanceOfLibrary{
            "RefusedSuite", "", "admin", kPassword, {"IPMI_CIPHER_SUITE=17"}, "cipher suite"},
        CircumstanceOfLibrary{"RefusedSetting",
                              "",
                              "admin",
                              kPassword,
                              {"IPMI_PRIVILEGE_LEVEL=9"},
                              "IPMI_PRIVILEGE_LEVEL"},
        CircumstanceOfLibrary{
            "OverlongPassword", "", "admin", kOverlongPassword, {}, "the password has 21 bytes"}),
    [](const testing::TestParamInfo<CircumstanceOfLibrary>& circumstance) {
      return circumstance.param.name;
    });

TEST(LibrarySecrets, PasswordThatTheUserPutIntoTheEnvironmentIsSeenThere) {
  Child program({SECRETS_PROBE, "127.0.0.1", "9", "admin"},
                {"IPMI_SESSION_TIMEOUT_MS=200", "IPMI_CONNECT_RETRY_TIMES=0",
                 std::string("IPMI_PASSWORD=") + kPassword},
                std::string(kPassword) + "\n");
  std::future<Watched> watch = Watch(program.Process());
  program.Wait();
  const Watched watched = watch.get();
  EXPECT_THAT(watched.environments, testing::Not(TellsNoPassword()));
  EXPECT_THAT(watched.commandLines, TellsNoPassword());
}

}  // namespace
}  // namespace Tavrin
