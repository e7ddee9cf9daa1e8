#pragma once

#include <algorithm>
#include <vector>

namespace Tavrin {

/// The middle one of `values`, of which there has to be one at least.
inline double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace Tavrin
