#include "tools/smm-inventory/Ending.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

#include "reading/Query.h"
#include "report/Describe.h"
#include "support/HostAndPort.h"
#include "support/HostRange.h"
#include "tools/smm-inventory/ExitCode.h"

namespace Tavrin {
namespace {

using Standalone::FailureCause;

constexpr std::array<std::pair<Ending, std::string_view>, 9> kWords = {
    {{Ending::NotReached, "not reached"},
     {Ending::UserRefused, "user"},
     {Ending::PasswordRefused, "password"},
     {Ending::PrivilegeRefused, "privilege"},
     {Ending::TimedOut, "timed out"},
     {Ending::Stopped, "stopped"},
     {Ending::PartlyRead, "partly read"},
     {Ending::UnexpectedError, "unexpected error"},
     {Ending::NotRead, "not read"}}};

/// That of a reading which came to nothing.
Ending EndingBy(FailureCause kind) {
  switch (kind) {
    case FailureCause::HostName:
    case FailureCause::NameServer:
    case FailureCause::Unreachable:
    case FailureCause::Forbidden:
    case FailureCause::Silence:
      return Ending::NotReached;
    case FailureCause::UserNameRefused:
      return Ending::UserRefused;
    case FailureCause::PasswordRefused:
      return Ending::PasswordRefused;
    case FailureCause::PrivilegeRefused:
      return Ending::PrivilegeRefused;
    case FailureCause::TimeOver:
      return Ending::TimedOut;
    case FailureCause::Stopped:
      return Ending::Stopped;
    default:
      return Ending::NotRead;
  }
}

Ending EndingOf(const QueryOutcome& failure) {
  constexpr std::uint8_t insufficientPrivilege = 0xD4;
  if (failure.status == kExceptionStatus) {
    return Ending::UnexpectedError;
  }
  return failure.cause.completionCode == insufficientPrivilege ? Ending::PrivilegeRefused
                                                               : EndingBy(failure.cause.kind);
}

bool IsOneOf(Ending ending, std::initializer_list<Ending> some) {
  return std::find(some.begin(), some.end(), ending) != some.end();
}

std::vector<Target> TargetsThatFailed(const std::vector<Target>& targets,
                                      const std::vector<Ending>& endings) {
  std::vector<Target> failed;
  for (std::size_t index = 0; index < targets.size(); ++index) {
    if (endings[index] != Ending::Read) {
      failed.push_back(targets[index]);
    }
  }
  return failed;
}

std::string Folded(const std::vector<Target>& targets) {
  std::vector<HostAndPort> hosts;
  std::transform(targets.begin(), targets.end(), std::back_inserter(hosts), PlaceOf);
  return FoldHosts(hosts);
}

std::string CountsByWord(const std::vector<Ending>& endings) {
  std::vector<std::string> counts;
  for (const auto& [ending, word] : kWords) {
    const auto count = std::count(endings.begin(), endings.end(), ending);
    if (count > 0) {
      counts.push_back(fmt::format("{} {}", word, count));
    }
  }
  return fmt::format("{}", fmt::join(counts, ", "));
}

}  // namespace

Ending EndingOf(const Reading& reading) {
  if (reading.failure) {
    return EndingOf(*reading.failure);
  }
  const std::vector<Answer> answers = AllAnswers(reading);
  const auto failed = std::find_if(answers.begin(), answers.end(), [](const Answer& answer) {
    return !answer.outcome.Succeeded();
  });
  if (failed == answers.end()) {
    return Ending::Read;
  }
  const Ending ending = EndingBy(failed->outcome.cause.kind);
  const bool isTold =
      IsOneOf(ending, {Ending::UserRefused, Ending::PasswordRefused, Ending::PrivilegeRefused,
                       Ending::TimedOut, Ending::Stopped});
  return isTold ? ending : Ending::PartlyRead;
}

int ExitCodeOf(const std::vector<Ending>& endings) {
  const auto each = [&endings](std::initializer_list<Ending> some) {
    return std::all_of(endings.begin(), endings.end(),
                       [some](Ending ending) { return IsOneOf(ending, some); });
  };
  if (each({Ending::Read})) {
    return ExitCode::Success;
  }
  if (each({Ending::NotReached})) {
    return ExitCode::NobodyReached;
  }
  if (each({Ending::UnexpectedError})) {
    return ExitCode::Exception;
  }
  return each({Ending::UserRefused, Ending::PasswordRefused, Ending::PrivilegeRefused})
             ? ExitCode::LoginRefused
             : ExitCode::QueryFailed;
}

std::string SummaryLine(const std::vector<Target>& targets, const std::vector<Ending>& endings) {
  const std::vector<Target> failed = TargetsThatFailed(targets, endings);
  if (failed.empty()) {
    return "";
  }
  return fmt::format("failed {} of {}: {} ({})\n", failed.size(), targets.size(), Folded(failed),
                     CountsByWord(endings));
}

std::string FailedHosts(const std::vector<Target>& targets, const std::vector<Ending>& endings) {
  std::string lines;
  for (const Target& target : TargetsThatFailed(targets, endings)) {
    lines += AddressText(target.host, target.port) + (target.writtenSettings.empty() ? "" : " ") +
             target.writtenSettings + '\n';
  }
  return lines;
}

}  // namespace Tavrin
