#include "tools/smm-inventory/FailedHostsFile.h"

#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>

#include "support/EscapeControlBytes.h"
#include "support/UsageError.h"
#include "tools/smm-inventory/Options.h"

namespace Tavrin {
namespace {

[[noreturn]] void Refuse(const std::string& path, const char* why) {
  throw UsageError(
      fmt::format("--failed-to is \"{}\", which {}; expected a file of its own that can be written",
                  EscapeControlBytes(path), why));
}

/// By whatever paths; one that is not there is nobody else's.
bool IsSameFile(const std::string& path, const std::optional<std::string>& other) {
  std::error_code error;
  return other && *other != "-" && std::filesystem::equivalent(path, *other, error);
}

}  // namespace

void RequireFailedHostsFile(const Options& options) {
  if (!options.failedTo) {
    return;
  }
  const std::string& path = *options.failedTo;
  if (path == "-") {
    Refuse(path, "is no file");
  }
  if (IsSameFile(path, options.hostsFile)) {
    Refuse(path, "is the hosts file that is read");
  }
  for (const Target& target : options.targets) {
    if (IsSameFile(path, target.settings.passwordFile)) {
      Refuse(path, "is a password file");
    }
  }
  if (!std::ofstream(path, std::ios::app)) {
    Refuse(path, "cannot be written");
  }
}

void WriteFailedHostsFile(const std::string& path, const std::string& lines) {
  std::ofstream file(path);
  file << lines << std::flush;
  if (!file) {
    Refuse(path, "cannot be written");
  }
}

}  // namespace Tavrin
