#include "bench/Comparison.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace bench {
namespace {

double GroupRatio(const BurstFunction& a, const BurstFunction& b) {
  const double a1 = a();
  const double b1 = b();
  const double b2 = b();
  const double a2 = a();
  return (b1 + b2) / (a1 + a2);
}

}  // namespace

double Quantile(std::vector<double> values, double share) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  // Between the two nearest, so that the median of an even number is their middle.
  const double place = share * static_cast<double>(values.size() - 1);
  const auto below = static_cast<std::size_t>(place);
  const std::size_t above = std::min(below + 1, values.size() - 1);
  return values[below] + (values[above] - values[below]) * (place - std::floor(place));
}

Comparison Compare(unsigned rounds, const BurstFunction& yardstick, const BurstFunction& second,
                   const BurstFunction& product) {
  // The first touch of everything belongs to nobody.
  (void)yardstick();
  (void)second();
  (void)product();

  Comparison comparison;
  for (unsigned round = 0; round < rounds; ++round) {
    if (round % 2 == 0) {
      comparison.product.values.push_back(GroupRatio(yardstick, product));
      comparison.noise.values.push_back(GroupRatio(yardstick, second));
    } else {
      comparison.noise.values.push_back(GroupRatio(yardstick, second));
      comparison.product.values.push_back(GroupRatio(yardstick, product));
    }
  }
  return comparison;
}

}  // namespace bench
