#pragma once

namespace Tavrin {

struct Options;

/// Reads all enclosures of the options at once, prints what they gave, and returns the exit code.
/// Threads can be left behind, in a pause that nobody can cut short; CountFleetThreads() tells.
int RunFleet(const Options& options);

}  // namespace Tavrin
