#include "platform/standalone/ipmi_client/Failure.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/standalone/ipmi_client/ConnectResult.h"

namespace Tavrin::Standalone {
namespace {

using std::chrono::milliseconds;

constexpr const char* kLowerPrivilege =
    "ask for a lower one (IPMI_PRIVILEGE_LEVEL: 2 user, 3 operator, 4 administrator), or set "
    "IPMI_WORKAROUND_FLAGS to 16 for a controller that takes the level only when the session opens";
constexpr const char* kCheckNetwork =
    "try again, and should it stay so, check the network, and that IPMI 2.0 is what answers at "
    "address and port";

struct Row {
  Trouble trouble;
  Failure failure;
};

const std::vector<Row>& Rows() {
  using ConnectResult::Failed;
  using ConnectResult::WorthRetrying;
  static const std::vector<Row> rows = {
      {Trouble::NoAnswer,
       {WorthRetrying, FailureCause::Silence, "no answer within the session time-out",
        "check address and port, and that IPMI over LAN is switched on, or allow more time "
        "(IPMI_SESSION_TIMEOUT_MS)"}},
      {Trouble::PortClosed,
       {WorthRetrying, FailureCause::Unreachable,
        "no answer within the session time-out: nobody listens at the port",
        "check address and port, and that IPMI over LAN is switched on"}},
      {Trouble::NoRoute,
       {WorthRetrying, FailureCause::Unreachable, "the network does not reach the controller",
        "check the address and this machine's network"}},
      {Trouble::NotPermitted,
       {Failed, FailureCause::Forbidden, "this machine does not permit sending there",
        "check the address and the local firewall"}},
      {Trouble::ResourcesShort,
       {Failed, FailureCause::Memory, "memory or file descriptors are short on this machine", ""}},
      {Trouble::RequestTooLong,
       {Failed, FailureCause::Other, "the request is too long for one datagram", ""}},
      {Trouble::SilentWhileOpening,
       {WorthRetrying, FailureCause::FellSilent,
        "the controller answered at first, then fell silent within the session time-out",
        "try again, or another cipher suite (IPMI_CIPHER_SUITE)"}},
      {Trouble::SilentWhileChecking,
       {WorthRetrying, FailureCause::FellSilent,
        "the controller fell silent while user name and password were checked",
        "try again, or check user name and password"}},
      {Trouble::SilentToRequest,
       {WorthRetrying, FailureCause::FellSilent,
        "no answer to the request within the session time-out",
        "connect again, or allow more time (IPMI_SESSION_TIMEOUT_MS)"}},
      {Trouble::DamagedAnswer,
       {WorthRetrying, FailureCause::DamagedAnswer,
        "no answer within the session time-out that could be read", kCheckNetwork}},
      {Trouble::OtherAnswer,
       {WorthRetrying, FailureCause::OtherAnswer,
        "no answer within the session time-out but another request's", kCheckNetwork}},
      {Trouble::Busy,
       {WorthRetrying, FailureCause::Busy, "the controller is busy", "try again later"}},
      {Trouble::NoFreeSession,
       {WorthRetrying, FailureCause::Busy, "the controller has no free session",
        "try again later"}},
      {Trouble::SuiteRefused,
       {WorthRetrying, FailureCause::SuiteRefused, "the controller does not allow the cipher suite",
        "try another (IPMI_CIPHER_SUITE)"}},
      {Trouble::Ipmi20Missing,
       {Failed, FailureCause::Ipmi20Missing, "the controller does not offer IPMI 2.0",
        "check its settings or its firmware"}},
      {Trouble::KeyMissing,
       {Failed, FailureCause::KeyMissing,
        "the controller asks for a key besides the password (K_g), which this client does not use",
        "clear it on the controller, or set IPMI_WORKAROUND_FLAGS to 1 for a controller that tells "
        "its capabilities wrongly"}},
      {Trouble::UserNameRefused,
       {ConnectResult::UserNameRefused, FailureCause::UserNameRefused,
        "the controller does not know the user", "check the user name"}},
      {Trouble::PasswordRefused,
       {ConnectResult::PasswordRefused, FailureCause::PasswordRefused,
        "the password does not match",
        "check it, or set IPMI_WORKAROUND_FLAGS to 16 for a controller that computes its proof "
        "with the level given when the session opens"}},
      {Trouble::PrivilegeRefused,
       {ConnectResult::PrivilegeRefused, FailureCause::PrivilegeRefused,
        "the controller does not grant the privilege level", kLowerPrivilege}},
      {Trouble::PrivilegeInsufficient,
       {ConnectResult::PrivilegeRefused, FailureCause::PrivilegeRefused,
        "the controller does not grant the privilege level (insufficient privilege)",
        kLowerPrivilege}},
      {Trouble::CrossedRepetition,
       {WorthRetrying, FailureCause::OtherAnswer,
        "the controller checked the proof of the password against another random number than the "
        "one that it had sent",
        "try again; should it stay so, ask less often (IPMI_RETRANSMISSION_TIMEOUT_MS), or set "
        "IPMI_WORKAROUND_FLAGS to 16"}},
      {Trouble::SessionForgotten,
       {WorthRetrying, FailureCause::Other,
        "the controller forgot the session while it was being opened", "try again"}},
      {Trouble::NotConnected, {Failed, FailureCause::Other, "no session is open", "connect first"}},
      {Trouble::NotPresent,
       {WorthRetrying, FailureCause::Silence,
        "no answer within 3 seconds, neither to a ping nor to a request",
        "check address and port, and that IPMI over LAN is switched on"}},
      {Trouble::NotListening,
       {WorthRetrying, FailureCause::Unreachable, "nobody listens at the port",
        "check address and port, and that IPMI over LAN is switched on"}},
      {Trouble::TimeOver,
       {ConnectResult::Interrupted, FailureCause::TimeOver,
        "the time given for this enclosure is over", ""}},
      {Trouble::Stopped, {ConnectResult::Interrupted, FailureCause::Stopped, "stopped", ""}},
      {Trouble::NoAttempt,
       {WorthRetrying, FailureCause::NoAttempt, "no attempt to connect was made", ""}},
  };
  return rows;
}

void ExpectSame(const Failure& failure, const Failure& expected) {
  EXPECT_EQ(failure.result, expected.result) << expected.words;
  EXPECT_EQ(failure.cause, expected.cause) << expected.words;
  EXPECT_EQ(failure.words, expected.words);
  EXPECT_EQ(failure.advice, expected.advice) << expected.words;
}

TEST(Failure, EachTroubleHasItsResultCauseWordsAndAdvice) {
  for (const Row& row : Rows()) {
    ExpectSame(FailureOf(row.trouble), row.failure);
  }
}

TEST(Failure, IsNoneUntilSomethingFails) {
  EXPECT_FALSE(Failure{});
  ExpectSame({}, {ConnectResult::Connected, FailureCause::None, "", ""});
}

TEST(Failure, LatenessIsToldInSeconds) {
  const std::map<int, std::string> latenesses = {
      {4500, "4.5"}, {4549, "4.5"}, {4550, "4.6"}, {12000, "12.0"}, {60, "0.1"}};
  for (const auto& [lateness, seconds] : latenesses) {
    ExpectSame(LateFailure(milliseconds(lateness)),
               {ConnectResult::WorthRetrying, FailureCause::Late,
                "the controller answers, but only " + seconds + " seconds after it was asked",
                "allow more time (IPMI_SESSION_TIMEOUT_MS)"});
  }
}

TEST(Failure, EachStatusOfAnOpeningSessionHasItsTrouble) {
  const std::map<int, Trouble> known = {
      {0x01, Trouble::NoFreeSession},     {0x02, Trouble::SessionForgotten},
      {0x04, Trouble::SuiteRefused},      {0x05, Trouble::SuiteRefused},
      {0x06, Trouble::SuiteRefused},      {0x07, Trouble::SuiteRefused},
      {0x08, Trouble::SessionForgotten},  {0x09, Trouble::PrivilegeRefused},
      {0x0A, Trouble::PrivilegeRefused},  {0x0B, Trouble::NoFreeSession},
      {0x0C, Trouble::UserNameRefused},   {0x0D, Trouble::UserNameRefused},
      {0x0F, Trouble::CrossedRepetition}, {0x10, Trouble::SuiteRefused},
      {0x11, Trouble::SuiteRefused}};
  for (int status = 1; status <= 0xFF; ++status) {
    const Failure failure = StatusFailure(static_cast<std::uint8_t>(status));
    const auto found = known.find(status);
    if (found != known.end()) {
      ExpectSame(failure, FailureOf(found->second));
    } else {
      EXPECT_EQ(failure.result, ConnectResult::Failed) << status;
      EXPECT_EQ(failure.cause, FailureCause::Other) << status;
      EXPECT_EQ(failure.advice, "") << status;
    }
  }
  EXPECT_EQ(StatusFailure(0x12).words,
            "the controller refuses to open a session, with status 0x12");
}

TEST(Failure, EachCompletionCodeOfAnOpeningSessionHasItsTrouble) {
  const std::map<int, Trouble> known = {{0x80, Trouble::PrivilegeRefused},
                                        {0x81, Trouble::PrivilegeRefused},
                                        {0xC0, Trouble::Busy},
                                        {0xC3, Trouble::Busy},
                                        {0xCE, Trouble::Busy},
                                        {0xCF, Trouble::Busy},
                                        {0xD2, Trouble::Busy},
                                        {0xD4, Trouble::PrivilegeInsufficient}};
  for (int code = 1; code <= 0xFF; ++code) {
    const Failure failure = CompletionCodeFailure("Close", static_cast<std::uint8_t>(code));
    const auto found = known.find(code);
    if (found != known.end()) {
      ExpectSame(failure, FailureOf(found->second));
    } else {
      EXPECT_EQ(failure.result, ConnectResult::Failed) << code;
      EXPECT_EQ(failure.cause, FailureCause::Other) << code;
      EXPECT_EQ(failure.advice, "") << code;
    }
  }
  EXPECT_EQ(CompletionCodeFailure("Close Session", 0xCC).words,
            "the controller refuses Close Session, with completion code 0xcc");
}

TEST(Failure, EachErrorOfTheSystemHasItsTrouble) {
  const std::map<int, Trouble> known = {
      {EPERM, Trouble::NotPermitted},      {EACCES, Trouble::NotPermitted},
      {ECONNREFUSED, Trouble::PortClosed}, {ENETUNREACH, Trouble::NoRoute},
      {EHOSTUNREACH, Trouble::NoRoute},    {ENETDOWN, Trouble::NoRoute},
      {EHOSTDOWN, Trouble::NoRoute},       {ENOMEM, Trouble::ResourcesShort},
      {ENOBUFS, Trouble::ResourcesShort},  {EMFILE, Trouble::ResourcesShort},
      {ENFILE, Trouble::ResourcesShort},   {EMSGSIZE, Trouble::RequestTooLong}};
  for (const auto& [error, trouble] : known) {
    ExpectSame(SystemFailure(error), FailureOf(trouble));
  }
  ExpectSame(SystemFailure(EINVAL),
             {ConnectResult::Failed, FailureCause::Other,
              "this machine cannot send to the controller (Invalid argument)", ""});
}

}  // namespace
}  // namespace Tavrin::Standalone
