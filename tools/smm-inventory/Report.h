#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tools/smm-inventory/Enclosure.h"

namespace Tavrin {

/// The exit codes of the tool.
namespace ExitCode {
constexpr int Success = 0;
constexpr int QueryFailed = 1;
constexpr int WrongUsage = 2;
constexpr int Exception = 3;
}  // namespace ExitCode

/// One value on its way to people.
struct Field {
  std::string label;
  QueryResult<std::string> result;  ///< The text is escaped where it came from a controller.
};

std::vector<Field> IdentityFields(const Identity& identity);
std::vector<Field> DetectionFields(const Detection& detection);

/// Writes one line a field.
void PrintFields(std::ostream& out, const std::vector<Field>& fields);

/// Writes one line for each way in which fields failed: which fields, the status in words, the
/// cause, and what to try next.
void PrintFailures(std::ostream& out, const std::vector<Field>& fields);

/// The exit code that the fields' statuses amount to.
int ExitCodeOf(const std::vector<Field>& fields);

}  // namespace Tavrin
