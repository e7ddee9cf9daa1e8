#include "reading/LoginGuard.h"

#include "platform/IpmiClient.h"
#include "tests/reading/ScriptedEnclosure.h"

namespace Tavrin {
namespace {

using LoginGuardTest = ScriptedEnclosure;

TEST_F(LoginGuardTest, RefusalThatIsToldIsTheFirst) {
  Standalone::ThreadConfig config({});
  LoginGuard guard(config);
  guard.Begin();
  for (const char* const words : {"the first", "the second"}) {
    smm_.Lose(0, FailureCause::PasswordRefused, words);
    IpmiClient("", "", "", "623", 3).connect();
    guard.Look();
    ASSERT_TRUE(guard.Refusal());
    EXPECT_EQ(guard.Refusal()->words, "the first");
  }
}

}  // namespace
}  // namespace Tavrin
