#include "support/HostRange.h"

#include <algorithm>
#include <cstdint>
#include <numeric>

#include "support/Digits.h"
#include "support/EscapeControlBytes.h"
#include "support/UsageError.h"

namespace Tavrin {
namespace {

/// Numbers that follow each other in even steps.
struct Run {
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  std::uint64_t step = 1;
  std::size_t width = 0;  ///< Digits of each, with zeros in front.
};

/// A stretch of an item: characters that stay, and the numbers in brackets behind them.
struct Stretch {
  std::string fixed;
  std::vector<Run> numbers;  ///< Empty where the item ends without brackets.
};

[[noreturn]] void Refuse(const std::string& thing, const std::string& text, std::size_t at,
                         const std::string& reason, const std::string& expected) {
  throw UsageError(thing + " is \"" + EscapeControlBytes(text) + "\", wrong at character " +
                   std::to_string(at + 1) + " (" + EscapeControlBytes(reason) + "); expected " +
                   expected);
}

[[noreturn]] void RefuseMany(const std::string& thing, const std::string& text) {
  throw UsageError(thing + " is \"" + EscapeControlBytes(text) + "\", which names more than " +
                   std::to_string(kMostHosts) + " hosts; expected at most that many");
}

/// Reads an item that holds brackets.
class RangeReader {
 public:
  explicit RangeReader(const std::string& text) : text_(text) {}

  std::vector<Stretch> Read() {
    std::vector<Stretch> stretches;
    while (at_ < text_.size()) {
      stretches.push_back({Fixed(), {}});
      if (at_ < text_.size()) {
        stretches.back().numbers = Bracketed();
      }
    }
    return stretches;
  }

 private:
  [[noreturn]] void RefuseAt(std::size_t at, const std::string& reason,
                             const std::string& expected) const {
    Refuse("host range", text_, at, reason, expected);
  }

  [[noreturn]] void RefuseHere(const std::string& expected) const {
    const std::string found =
        at_ < text_.size() ? '"' + text_.substr(at_, 1) + '"' : std::string("nothing");
    RefuseAt(at_, found + " stands there", expected);
  }

  [[nodiscard]] bool IsNext(char c) const { return at_ < text_.size() && text_[at_] == c; }

  bool Skip(char c) {
    const bool isNext = IsNext(c);
    at_ += isNext ? 1 : 0;
    return isNext;
  }

  std::string Fixed() {
    const std::size_t start = at_;
    at_ = std::min(text_.find_first_of("[]", start), text_.size());
    if (IsNext(']')) {
      RefuseHere("[ before it");
    }
    return text_.substr(start, at_ - start);
  }

  std::vector<Run> Bracketed() {
    const std::size_t opened = at_++;
    std::vector<Run> runs;
    do {
      runs.push_back(Numbers());
    } while (Skip(','));
    if (at_ == text_.size()) {
      RefuseAt(opened, "that bracket stays open", "] behind the numbers");
    }
    if (!Skip(']')) {
      RefuseHere(R"(a digit, "-", "/", "," or "]")");
    }
    return runs;
  }

  Run Numbers() {
    const std::size_t start = at_;
    const std::string first = Digits();
    if (!Skip('-')) {
      return {ValueOfDigits(first), ValueOfDigits(first), 1, first.size()};
    }
    const std::string last = Digits();
    Run run = {ValueOfDigits(first), ValueOfDigits(last), 1, WidthOf(first, last, start)};
    if (run.last < run.first) {
      RefuseAt(start, '"' + first + '-' + last + "\" is reversed", "the lower number first");
    }
    if (Skip('/')) {
      run.step = Step();
    }
    return run;
  }

  /// The width that leading zeros ask for; 0 where there are none.
  [[nodiscard]] std::size_t WidthOf(const std::string& first, const std::string& last,
                                    std::size_t start) const {
    if (!HasLeadingZero(first) && !HasLeadingZero(last)) {
      return 0;
    }
    if (first.size() != last.size()) {
      RefuseAt(start, '"' + first + '-' + last + "\" has a leading zero and two widths",
               "as many digits in both numbers");
    }
    return first.size();
  }

  std::uint64_t Step() {
    const std::size_t start = at_;
    const std::uint64_t step = ValueOfDigits(Digits());
    if (step == 0) {
      RefuseAt(start, "the step is 0", "at least 1");
    }
    return step;
  }

  std::string Digits() {
    const std::size_t start = at_;
    while (at_ < text_.size() && IsDigit(text_[at_])) {
      ++at_;
    }
    if (at_ == start) {
      RefuseHere("a number");
    }
    if (at_ - start > kMostDigits) {
      RefuseAt(start, std::to_string(at_ - start) + " digits stand there",
               "a number of at most " + std::to_string(kMostDigits));
    }
    return text_.substr(start, at_ - start);
  }

  const std::string& text_;
  std::size_t at_ = 0;
};

std::uint64_t CountOf(const Run& run) { return (run.last - run.first) / run.step + 1; }

/// How many texts the stretch stands for. Beyond kMostHosts it stops counting, so that no number
/// grows too large.
std::uint64_t CountOf(const Stretch& stretch) {
  std::uint64_t count = stretch.numbers.empty() ? 1 : 0;
  for (const Run& run : stretch.numbers) {
    count = std::min<std::uint64_t>(count + CountOf(run), kMostHosts + 1);
  }
  return count;
}

std::uint64_t CountOf(const std::vector<Stretch>& stretches) {
  return std::accumulate(stretches.begin(), stretches.end(), std::uint64_t{1},
                         [](std::uint64_t count, const Stretch& stretch) {
                           return std::min<std::uint64_t>(count * CountOf(stretch), kMostHosts + 1);
                         });
}

std::string TextAt(const Stretch& stretch, std::uint64_t index) {
  for (const Run& run : stretch.numbers) {
    if (index < CountOf(run)) {
      const std::string digits = std::to_string(run.first + index * run.step);
      const std::size_t zeros = std::max(run.width, digits.size()) - digits.size();
      return stretch.fixed + std::string(zeros, '0') + digits;
    }
    index -= CountOf(run);
  }
  return stretch.fixed;
}

std::string TextAt(const std::vector<Stretch>& stretches, std::uint64_t index) {
  std::string text;
  for (auto stretch = stretches.rbegin(); stretch != stretches.rend(); ++stretch) {
    const std::uint64_t count = CountOf(*stretch);
    text.insert(0, TextAt(*stretch, index % count));
    index /= count;
  }
  return text;
}

/// Two colons are an IPv6 address's, which holds no ranges: `2001:db8::[1-2]:623` would be read as
/// addresses that end in 623, not as a port.
bool HasRange(const std::string& item) {
  return item.front() != '[' && item.find_first_of("[]") != std::string::npos &&
         std::count(item.begin(), item.end(), ':') < 2;
}

void Expand(const std::string& item, std::vector<HostAndPort>& hosts) {
  if (!HasRange(item)) {
    hosts.push_back(ParseHost(item));
    return;
  }
  const std::vector<Stretch> stretches = RangeReader(item).Read();
  const std::uint64_t count = CountOf(stretches);
  if (count > kMostHosts) {
    RefuseMany("host range", item);
  }
  for (std::uint64_t index = 0; index < count; ++index) {
    hosts.push_back(ParseHost(TextAt(stretches, index)));
  }
}

}  // namespace

std::vector<std::string> SplitHostList(const std::string& text) {
  std::vector<std::string> items(1);
  bool isInside = false;
  for (std::size_t at = 0; at <= text.size(); ++at) {
    const bool isEnd = at == text.size() || (text[at] == ',' && !isInside);
    if (isEnd && items.back().empty()) {
      Refuse("host list", text, at, "nothing stands there", "a host");
    }
    if (at == text.size()) {
      break;
    }
    if (isEnd) {
      items.emplace_back();
      continue;
    }
    isInside = text[at] == '[' || (isInside && text[at] != ']');
    items.back() += text[at];
  }
  return items;
}

bool IsHostRange(const std::string& text) {
  return text.find(',') != std::string::npos || (!text.empty() && HasRange(text));
}

std::vector<HostAndPort> ExpandHosts(const std::string& text) {
  std::vector<HostAndPort> hosts;
  for (const std::string& item : SplitHostList(text)) {
    Expand(item, hosts);
    if (hosts.size() > kMostHosts) {
      RefuseMany("host list", text);
    }
  }
  return hosts;
}

}  // namespace Tavrin
