#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tools/smm-inventory/Section.h"

namespace Tavrin {

/// The exit codes of the tool.
namespace ExitCode {
constexpr int Success = 0;
constexpr int QueryFailed = 1;
constexpr int WrongUsage = 2;
constexpr int Exception = 3;
}  // namespace ExitCode

/// The name of a query's status, as StatusCode has it.
std::string StatusName(int status);

/// Why a query of that status failed: the status in words and, where one is known, the cause.
std::string FailureReason(int status, const std::string& cause);

/// Writes one line for each way in which queries failed: which queries, why, and what to try next.
void PrintFailures(std::ostream& out, const std::vector<Section>& sections);

/// The exit code that the queries' statuses amount to.
int ExitCodeOf(const std::vector<Section>& sections);

}  // namespace Tavrin
