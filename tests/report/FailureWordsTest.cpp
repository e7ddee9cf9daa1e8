#include "report/FailureWords.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <string>

#include "reading/Query.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

TEST(FailureWords, StatusHasItsName) {
  const std::map<int, std::string> table = {
      {StatusCode::Success, "Success"},
      {kExceptionStatus, "Exception"},
      {StatusCode::ConnectionKindNotAdmitted, "ConnectionKindNotAdmitted"},
      {StatusCode::NotConnected, "NotConnected"},
      {StatusCode::UnusableAnswer, "UnusableAnswer"},
      {StatusCode::NoUsableResult, "NoUsableResult"},
      {5, "NoUsableResult"},
  };
  for (const auto& [status, name] : table) {
    EXPECT_EQ(StatusName(status), name);
  }
}

TEST(FailureWords, ReasonIsWhatTheStatusMeansAndTheCauseInBrackets) {
  const std::map<int, std::string> table = {
      {kExceptionStatus, "the library gave up with an exception"},
      {StatusCode::ConnectionKindNotAdmitted, "the connection kind admits no IPMI exchange"},
      {StatusCode::NotConnected, "no IPMI connection could be opened"},
      {StatusCode::UnusableAnswer, "the SMM refused the request or gave an answer of unfit length"},
      {StatusCode::NoUsableResult, "the SMM gave no usable answer"},
  };
  for (const auto& [status, meaning] : table) {
    EXPECT_EQ(FailureReason(status, {}), meaning);
    EXPECT_EQ(FailureReason(status, {"x", FailureCause::None, 0, ""}), meaning + " (x)");
  }
}

TEST(FailureWords, CompletionCodeTellsTheReason) {
  const std::map<std::uint8_t, std::string> table = {
      {0xC0, "completion code 0xC0: busy"},
      {0xC1, "completion code 0xC1: command not known to the device"},
      {0xC3, "completion code 0xC3: timeout within the device"},
      {0xD2, "completion code 0xD2: firmware starting or being updated"},
      {0xD4, "completion code 0xD4: insufficient privilege"},
      {0xD5, "completion code 0xD5: not possible in the device's present state"},
      {0x01, "completion code 0x01"},
      {0xFF, "completion code 0xFF"},
  };
  for (const auto& [code, reason] : table) {
    EXPECT_EQ(FailureReason(StatusCode::UnusableAnswer,
                            {"its answer is empty", FailureCause::None, code, ""}),
              "the SMM refused the request (" + reason + ")");
  }
}

TEST(FailureWords, SilenceAfterTheConnectionIsNoRefusal) {
  const Cause cause{"no answer", FailureCause::FellSilent, 0, ""};
  for (const int status : {kExceptionStatus, 3, 4}) {
    EXPECT_EQ(FailureReason(status, cause), "the SMM gave no answer (no answer)");
  }
  EXPECT_EQ(FailureReason(StatusCode::NotConnected, cause),
            "no IPMI connection could be opened (no answer)");
}

TEST(FailureWords, WhatIsNotKnownStandsBeforeWhy) {
  EXPECT_EQ(FailureReason(StatusCode::NoUsableResult, {"", FailureCause::None, 0xC0, "platform"}),
            "the SMM's platform is not known, since the SMM refused the request (completion code "
            "0xC0: busy)");
}

}  // namespace
}  // namespace Tavrin
