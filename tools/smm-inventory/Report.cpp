#include "tools/smm-inventory/Report.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace Tavrin {
namespace {

struct StatusWords {
  int status;
  const char* meaning;
  const char* nextStep;
};

constexpr std::array<StatusWords, 5> kStatusWords = {{
    {kExceptionStatus, "the library gave up with an exception",
     "run again with -vvv and look at the answer"},
    {StatusCode::ConnectionKindNotAdmitted, "the connection kind admits no IPMI exchange",
     "report this as an error of the tool"},
    {StatusCode::NotConnected, "no IPMI connection could be opened",
     "check host, port, user and password, that the SMM allows IPMI over LAN, and try "
     "-L operator, -C 17 or -W open-session-privilege"},
    {StatusCode::UnusableAnswer, "the SMM refused the request or gave too short an answer",
     "check that the device is an SMM, and run again with -vvv to see the answer"},
    {StatusCode::NoUsableResult, "the SMM gave no usable answer",
     "run again; if it stays so, run with -vvv to see the answer"},
}};

const StatusWords& WordsOf(int status) {
  const auto* const words =
      std::find_if(kStatusWords.begin(), kStatusWords.end(),
                   [status](const StatusWords& candidate) { return candidate.status == status; });
  return words == kStatusWords.end() ? kStatusWords.back() : *words;
}

std::string FailureSentence(const QueryResult<std::string>& result) {
  const StatusWords& words = WordsOf(result.status);
  const std::string cause = result.cause.empty() ? "" : fmt::format(" ({})", result.cause);
  return fmt::format("not read: {}{}; next: {}", words.meaning, cause, words.nextStep);
}

std::string GenerationText(SMMIype type) {
  switch (type) {
    case SMM_FIRST_GENERATION:
      return "first";
    case SMM_SECOND_GENERATION:
      return "second";
  }
  return fmt::format("unknown (type {})", static_cast<int>(type));
}

std::string ControllerText(const std::string& text) {
  return text.empty() ? "(empty)" : Standalone::EscapeControlBytes(text);
}

template <typename Value, typename Render>
Field MakeField(const std::string& label, const QueryResult<Value>& result, Render render) {
  Field field{label, {"", result.status, result.cause}};
  if (result.status == StatusCode::Success) {
    field.result.value = render(result.value);
  }
  return field;
}

}  // namespace

std::vector<Field> IdentityFields(const Identity& identity) {
  return {MakeField("machine type", identity.machineType, ControllerText),
          MakeField("serial number", identity.serialNumber, ControllerText)};
}

std::vector<Field> DetectionFields(const Detection& detection) {
  const auto platformText = [](const SMMStatus& status) {
    return fmt::format("{} (0x{:X})", status.platformId, status.platformId);
  };
  const auto slotText = [](const SMMStatus& status) { return fmt::to_string(status.psuSlotCount); };
  const auto countText = [](unsigned long count) { return fmt::to_string(count); };
  return {MakeField("generation", detection.generation, GenerationText),
          MakeField("platform id", detection.status, platformText),
          MakeField("PSU slots", detection.status, slotText),
          MakeField("nodes", detection.nodeCount, countText)};
}

void PrintFields(std::ostream& out, const std::vector<Field>& fields) {
  for (const Field& field : fields) {
    const bool wasRead = field.result.status == StatusCode::Success;
    out << fmt::format("  {:<15}{}\n", field.label, wasRead ? field.result.value : "not read");
  }
  out << std::flush;
}

void PrintFailures(std::ostream& out, const std::vector<Field>& fields) {
  struct Failure {
    std::string labels;
    std::string sentence;
  };
  std::vector<Failure> failures;
  for (const Field& field : fields) {
    if (field.result.status == StatusCode::Success) {
      continue;
    }
    const std::string sentence = FailureSentence(field.result);
    if (!failures.empty() && failures.back().sentence == sentence) {
      failures.back().labels += ", " + field.label;
    } else {
      failures.push_back({field.label, sentence});
    }
  }
  for (const Failure& failure : failures) {
    out << "smm-inventory: " << failure.labels << ' ' << failure.sentence << '\n';
  }
}

int ExitCodeOf(const std::vector<Field>& fields) {
  int code = ExitCode::Success;
  for (const Field& field : fields) {
    if (field.result.status == kExceptionStatus) {
      return ExitCode::Exception;
    }
    if (field.result.status != StatusCode::Success) {
      code = ExitCode::QueryFailed;
    }
  }
  return code;
}

}  // namespace Tavrin
