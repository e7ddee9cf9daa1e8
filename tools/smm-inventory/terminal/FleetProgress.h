#pragma once

#include <chrono>
#include <cstddef>
#include <list>
#include <string>
#include <vector>

#include "tools/smm-inventory/terminal/Console.h"

namespace Tavrin {

/// Shows in one line of a terminal how the reading of many enclosures goes on: how many are done
/// and failed, for how long it goes on, and which three are being read for the longest time.
class FleetProgress {
 public:
  /// `names` are for people, in the order of the enclosures; `console` outlives the progress.
  FleetProgress(Console& console, std::vector<std::string> names);

  /// The reading of that enclosure begins, or ended.
  void Begins(std::size_t index) { beingRead_.push_back(index); }
  void Ended(std::size_t index, bool isRead);

  /// Shows the line as it is now.
  void Show();

 private:
  [[nodiscard]] std::string LongestNames() const;

  Console& console_;
  std::vector<std::string> names_;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::list<std::size_t> beingRead_;  ///< In the order in which they began.
  std::size_t done_ = 0;
  std::size_t failed_ = 0;
};

}  // namespace Tavrin
