#pragma once

namespace Tavrin {

/// The exit codes of the tool.
namespace ExitCode {
constexpr int Success = 0;
constexpr int QueryFailed = 1;
constexpr int WrongUsage = 2;
constexpr int Exception = 3;
constexpr int NobodyReached = 4;
constexpr int LoginRefused = 5;
constexpr int FaultFound = 6;
constexpr int Interrupted = 130;
}  // namespace ExitCode

}  // namespace Tavrin
