#include "tools/smm-inventory/terminal/FleetProgress.h"

#include <fmt/format.h>

#include <utility>

namespace Tavrin {
namespace {

constexpr std::size_t kShownNames = 3;

}  // namespace

FleetProgress::FleetProgress(Console& console, std::vector<std::string> names)
    : console_(console), names_(std::move(names)) {}

void FleetProgress::Ended(std::size_t index, bool isRead) {
  beingRead_.remove(index);
  ++done_;
  failed_ += isRead ? 0 : 1;
}

void FleetProgress::Show() {
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - begin_);
  console_.ShowStatus(fmt::format("{} of {} done, {} failed, {} s{}", done_, names_.size(), failed_,
                                  elapsed.count(), LongestNames()));
}

std::string FleetProgress::LongestNames() const {
  std::vector<std::string> names;
  for (const std::size_t index : beingRead_) {
    if (names.size() < kShownNames) {
      names.push_back(names_[index]);
    }
  }
  return names.empty() ? "" : fmt::format("; longest: {}", fmt::join(names, ", "));
}

}  // namespace Tavrin
