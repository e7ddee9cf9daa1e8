#pragma once

namespace Tavrin {

struct Options;
struct RawOptions;

/// Throws UsageError unless the command line says which enclosures are meant.
void RequireHosts(const RawOptions& raw);

/// Reads the hosts file, where one is given, and writes into `options`, which is complete but for
/// them, the enclosures that the command is for: each with its own settings and, for what these
/// leave open, those of the command line. Throws UsageError where hosts or hosts file cannot be
/// used, where one is to be asked and has no user, and where the command is for one enclosure and
/// not exactly one is named.
void TakeTargets(const RawOptions& raw, Options& options);

}  // namespace Tavrin
