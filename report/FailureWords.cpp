#include "report/FailureWords.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "reading/Query.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

struct StatusWords {
  int status;
  const char* name;
  const char* meaning;
};

constexpr std::array<StatusWords, 6> kStatusWords = {{
    {StatusCode::Success, "Success", "the query succeeded"},
    {kExceptionStatus, "Exception", "the library gave up with an exception"},
    {StatusCode::ConnectionKindNotAdmitted, "ConnectionKindNotAdmitted",
     "the connection kind admits no IPMI exchange"},
    {StatusCode::NotConnected, "NotConnected", "no IPMI connection could be opened"},
    {StatusCode::UnusableAnswer, "UnusableAnswer",
     "the SMM refused the request or gave an answer of unfit length"},
    {StatusCode::NoUsableResult, "NoUsableResult", "the SMM gave no usable answer"},
}};

struct RefusalWords {
  std::uint8_t completionCode;
  const char* meaning;
};

constexpr std::array kRefusalWords = {
    RefusalWords{0xC0, ": busy"},
    RefusalWords{0xC1, ": command not known to the device"},
    RefusalWords{0xC3, ": timeout within the device"},
    RefusalWords{0xD2, ": firmware starting or being updated"},
    RefusalWords{0xD4, ": insufficient privilege"},
    RefusalWords{0xD5, ": not possible in the device's present state"},
};

const StatusWords& WordsOf(int status) {
  const auto* const words =
      std::find_if(kStatusWords.begin(), kStatusWords.end(),
                   [status](const StatusWords& candidate) { return candidate.status == status; });
  return words == kStatusWords.end() ? kStatusWords.back() : *words;
}

std::string RefusalText(std::uint8_t completionCode) {
  const auto* const words = std::find_if(kRefusalWords.begin(), kRefusalWords.end(),
                                         [completionCode](const RefusalWords& candidate) {
                                           return candidate.completionCode == completionCode;
                                         });
  return fmt::format("completion code 0x{:02X}{}", completionCode,
                     words == kRefusalWords.end() ? "" : words->meaning);
}

/// What ended on this side says nothing of connections and answers.
bool WasGivenUp(const Cause& cause) {
  return cause.kind == FailureCause::TimeOver || cause.kind == FailureCause::Stopped;
}

/// The status tells where a query failed, the cause more exactly why.
std::string MeaningOf(int status, const Cause& cause) {
  if (cause.completionCode != 0) {
    return "the SMM refused the request";
  }
  if (cause.kind != FailureCause::None && status != StatusCode::NotConnected) {
    return "the SMM gave no answer";
  }
  return WordsOf(status).meaning;
}

}  // namespace

std::string StatusName(int status) { return WordsOf(status).name; }

std::string FailureReason(int status, const Cause& cause) {
  const std::string start =
      cause.missing.empty() ? "" : fmt::format("the SMM's {} is not known, since ", cause.missing);
  if (WasGivenUp(cause)) {
    return start + cause.words;
  }
  const std::string text =
      cause.completionCode == 0 ? cause.words : RefusalText(cause.completionCode);
  return start + MeaningOf(status, cause) + (text.empty() ? "" : fmt::format(" ({})", text));
}

}  // namespace Tavrin
