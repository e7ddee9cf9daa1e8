#pragma once

namespace Tavrin {

struct Options;

/// Reads all enclosures of the options at once, prints what they gave, and returns the exit code.
/// Where a thread is left behind, which waits in a pause that nobody can cut short, it does not
/// return but ends the process.
int RunFleet(const Options& options);

}  // namespace Tavrin
