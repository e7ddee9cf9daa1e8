#pragma once

namespace Tavrin {

struct Reading;

/// The exit codes of the tool.
namespace ExitCode {
constexpr int Success = 0;
constexpr int QueryFailed = 1;
constexpr int WrongUsage = 2;
constexpr int Exception = 3;
}  // namespace ExitCode

/// QueryFailed where a query failed or none came about, else Success.
int ExitCodeOf(const Reading& reading);

}  // namespace Tavrin
