#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "report/Health.h"
#include "support/EscapeControlBytes.h"

namespace Tavrin {
namespace {

constexpr std::string_view kEveryNumber = "*";

/// A kind that can be ignored, and how many there are at most of it.
struct NumberedKind {
  HealthKind kind;
  std::size_t highest;
};

constexpr std::array kNumberedKinds = {NumberedKind{HealthKind::Node, 12},
                                       NumberedKind{HealthKind::Psu, 9}};

[[noreturn]] void RefuseIgnored(const std::string& text, const std::string& expected) {
  throw std::invalid_argument(
      fmt::format("finding to ignore is \"{}\"; expected {}", EscapeControlBytes(text), expected));
}

/// The texts between colons.
std::vector<std::string> SplitAtColons(std::string_view text) {
  std::vector<std::string> pieces(1);
  for (const char c : text) {
    if (c == ':') {
      pieces.emplace_back();
    } else {
      pieces.back() += c;
    }
  }
  return pieces;
}

/// Nothing for every number.
std::optional<std::size_t> NumberIn(const std::string& piece, const NumberedKind& kind,
                                    const std::string& text) {
  if (piece == kEveryNumber) {
    return std::nullopt;
  }
  std::size_t number = 0;
  std::from_chars(piece.data(), piece.data() + piece.size(), number);
  if (number < 1 || number > kind.highest || fmt::to_string(number) != piece) {
    RefuseIgnored(text, fmt::format("{0}:NUMBER:RULE with a number from 1 to {1}, or * for each",
                                    KindWord(kind.kind), kind.highest));
  }
  return number;
}

void RequireRule(const std::string& piece, HealthKind kind, const std::string& text) {
  std::vector<std::string_view> names;
  for (const HealthRule& rule : HealthRules()) {
    if (rule.kind == kind) {
      names.push_back(rule.name);
    }
  }
  if (std::find(names.begin(), names.end(), piece) == names.end()) {
    RefuseIgnored(text, fmt::format("{}:NUMBER:RULE with a rule of {}", KindWord(kind),
                                    fmt::join(names, ", ")));
  }
}

}  // namespace

IgnoredFinding ParseIgnoredFinding(const std::string& text) {
  const std::vector<std::string> pieces = SplitAtColons(text);
  const auto* const kind = std::find_if(kNumberedKinds.begin(), kNumberedKinds.end(),
                                        [&pieces](const NumberedKind& candidate) {
                                          return KindWord(candidate.kind) == pieces.front();
                                        });
  if (pieces.size() != 3 || kind == kNumberedKinds.end()) {
    RefuseIgnored(text, "KIND:NUMBER:RULE with a kind of node or psu, such as psu:9:presence");
  }
  const std::optional<std::size_t> number = NumberIn(pieces[1], *kind, text);
  RequireRule(pieces[2], kind->kind, text);
  return {kind->kind, number, pieces[2]};
}

}  // namespace Tavrin
