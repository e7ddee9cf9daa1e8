#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <vector>

#include "benchmarks/support/Median.h"
#include "benchmarks/support/Process.h"

namespace Tavrin {

/// What reading so many enclosures at once took, a value a round.
class Growth {
 public:
  explicit Growth(std::size_t enclosures) : enclosures_(enclosures) {}

  std::size_t Enclosures() const { return enclosures_; }
  bool IsEmpty() const { return wall_.empty(); }

  /// `ofOne` has to have the round already, unless it is this one.
  void Add(const Cost& cost, const Growth& ofOne) {
    wall_.push_back(cost.wallSeconds);
    processor_.push_back(cost.processorSeconds);
    ratio_.push_back(wall_.back() / ofOne.wall_.back());
  }

  /// The medians; the ratio is that of each round's time to the time for one enclosure in it.
  nlohmann::ordered_json ToJson() const {
    return {{"enclosures", enclosures_},
            {"wall_s", Median(wall_)},
            {"cpu_s", Median(processor_)},
            {"ratio", Median(ratio_)}};
  }

 private:
  std::size_t enclosures_;
  std::vector<double> wall_;
  std::vector<double> processor_;
  std::vector<double> ratio_;
};

}  // namespace Tavrin
