#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "reading/Cause.h"
#include "tools/smm-inventory/Section.h"

namespace Tavrin {

/// The exit codes of the tool.
namespace ExitCode {
constexpr int Success = 0;
constexpr int QueryFailed = 1;
constexpr int WrongUsage = 2;
constexpr int Exception = 3;
}  // namespace ExitCode

/// Writes one line for each way in which queries failed: which queries, why, and what to try next.
void PrintFailures(std::ostream& out, const std::vector<Section>& sections);

/// Writes the one line of a run that came to no query: where, why, and what to try next.
void PrintNothingRead(std::ostream& out, const std::string& address, int status,
                      const Cause& cause);

/// The exit code that the queries' statuses amount to.
int ExitCodeOf(const std::vector<Section>& sections);

}  // namespace Tavrin
