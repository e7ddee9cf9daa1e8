#include "tools/smm-inventory/Passwords.h"

#include <fmt/format.h>
#include <unistd.h>

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "reading/Wiping.h"
#include "support/EscapeControlBytes.h"
#include "support/HostAndPort.h"
#include "tools/smm-inventory/Password.h"
#include "tools/smm-inventory/terminal/Capabilities.h"

namespace Tavrin {
namespace {

/// What a password is for: a file or a pipe has the same one for every user, the prompt one for
/// each.
using Source = std::pair<std::optional<std::string>, std::string>;

Source SourceOf(const Target& target) {
  const std::optional<std::string>& file = target.settings.passwordFile;
  const bool isAsked = !file || (*file == "-" && IsTerminal(STDIN_FILENO));
  return {file, isAsked ? target.settings.userName.value_or("") : ""};
}

/// The targets of one source, and what is asked for on a terminal.
struct Users {
  const Target* first = nullptr;
  std::size_t count = 0;

  [[nodiscard]] std::string Prompt() const {
    const std::string where =
        count == 1 ? AddressText(first->host, first->port) : fmt::format("{} enclosures", count);
    return fmt::format(
        "Password of {} at {}: ", EscapeControlBytes(first->settings.userName.value_or("")), where);
  }
};

/// In the order in which the sources come up among the targets.
std::vector<std::pair<Source, Users>> UsersBySource(const std::vector<Target>& targets) {
  std::vector<std::pair<Source, Users>> all;
  std::map<Source, std::size_t> places;
  for (const Target& target : targets) {
    const auto [place, isNew] = places.emplace(SourceOf(target), all.size());
    if (isNew) {
      all.push_back({place->first, {&target, 0}});
    }
    ++all[place->second].second.count;
  }
  return all;
}

}  // namespace

std::vector<EnclosureSettings> SettingsWithPasswords(const std::vector<Target>& targets) {
  std::vector<EnclosureSettings> all;
  all.reserve(targets.size());  // A move would leave copies of passwords behind.
  for (const Target& target : targets) {
    Apply(target, all.emplace_back());
  }
  for (const auto& [source, users] : UsersBySource(targets)) {
    std::string password;
    const WipedAtEnd wiped(password);
    ObtainPassword(source.first, users.Prompt(), password);
    for (std::size_t index = 0; index < targets.size(); ++index) {
      if (SourceOf(targets[index]) == source) {
        all[index].password = password;
      }
    }
  }
  return all;
}

}  // namespace Tavrin
