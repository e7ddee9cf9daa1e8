#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "support/Digits.h"
#include "support/HostRange.h"

namespace Tavrin {
namespace {

/// A host as it is written, taken apart: texts at even places, the numbers between them at odd
/// ones.
using Parts = std::vector<std::string>;

Parts PartsOf(const HostAndPort& place) {
  const std::string text = place.port ? AddressText(place.host, *place.port) : place.host;
  if (place.host.find(':') != std::string::npos) {
    return {text};
  }
  Parts parts(1);
  for (const char c : text) {
    const bool isInNumber = parts.size() % 2 == 0;
    if (IsDigit(c) != isInNumber) {
      parts.emplace_back();
    }
    parts.back() += c;
  }
  return parts;
}

/// A number can stand in brackets, except where these would be the first thing in the text.
bool CanVary(const Parts& parts, std::size_t place) {
  return place % 2 == 1 && parts[place].size() <= kMostDigits &&
         (place > 1 || !parts.front().empty());
}

/// Where the number stands that alone tells one from the other; 0 where nothing or more does.
std::size_t PlaceOfTheDifference(const Parts& one, const Parts& other) {
  if (one.size() != other.size()) {
    return 0;
  }
  const auto [first, ignored] = std::mismatch(one.begin(), one.end(), other.begin());
  if (first == one.end()) {
    return 0;
  }
  const auto place = static_cast<std::size_t>(first - one.begin());
  const bool isAlone = std::equal(first + 1, one.end(), other.begin() + (first - one.begin()) + 1);
  return isAlone && CanVary(one, place) && CanVary(other, place) ? place : 0;
}

/// Whether a range that begins with `first` and has come to `last` goes on with `next`.
bool GoesOn(const std::string& first, const std::string& last, const std::string& next) {
  const bool isAsWide = HasLeadingZero(first) ? next.size() == first.size() : !HasLeadingZero(next);
  return isAsWide && ValueOfDigits(next) == ValueOfDigits(last) + 1;
}

std::string Ranges(const std::vector<std::string>& numbers) {
  std::string text;
  for (auto first = numbers.begin(); first != numbers.end();) {
    auto last = first;
    while (last + 1 != numbers.end() && GoesOn(*first, *last, *(last + 1))) {
      ++last;
    }
    text += (text.empty() ? "" : ",") + *first + (last == first ? "" : '-' + *last);
    first = last + 1;
  }
  return text;
}

/// Hosts in a row that differ in one number.
class Fold {
 public:
  explicit Fold(Parts first) : parts_(std::move(first)) {}

  /// Takes one more, unless it differs otherwise.
  bool Take(const Parts& next) {
    const std::size_t place = PlaceOfTheDifference(parts_, next);
    if (place == 0 || (place_ != 0 && place != place_)) {
      return false;
    }
    if (place_ == 0) {
      numbers_.push_back(parts_[place]);
    }
    place_ = place;
    numbers_.push_back(next[place]);
    return true;
  }

  [[nodiscard]] std::string Text() const {
    std::string text;
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      text += place_ != 0 && i == place_ ? '[' + Ranges(numbers_) + ']' : parts_[i];
    }
    return text;
  }

 private:
  Parts parts_;
  std::size_t place_ = 0;  ///< 0 while there is one host.
  std::vector<std::string> numbers_;
};

}  // namespace

std::string FoldHosts(const std::vector<HostAndPort>& hosts) {
  std::vector<Fold> folds;
  for (const HostAndPort& host : hosts) {
    Parts parts = PartsOf(host);
    if (folds.empty() || !folds.back().Take(parts)) {
      folds.emplace_back(std::move(parts));
    }
  }
  std::string text;
  for (const Fold& fold : folds) {
    text += (text.empty() ? "" : ",") + fold.Text();
  }
  return text;
}

}  // namespace Tavrin
