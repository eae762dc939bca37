#ifndef BENCH_COMPARISON_H_
#define BENCH_COMPARISON_H_

#include <functional>
#include <vector>

namespace bench {

/// \returns the value below which `share` (0 to 1) of the values lie; 0 when there are none.
double Quantile(std::vector<double> values, double share);

/// Ratios of one subject to the yardstick, one for each round.
struct Ratios {
  std::vector<double> values;

  double Median() const { return Quantile(values, 0.5); }
  double LowerQuartile() const { return Quantile(values, 0.25); }
  double UpperQuartile() const { return Quantile(values, 0.75); }
};

struct Comparison {
  Ratios product;  ///< the product to the yardstick
  Ratios noise;    ///< a second yardstick to the yardstick: what a difference must exceed
};

/// Runs one burst against a server and returns the seconds that it took.
using BurstFunction = std::function<double()>;

/// Compares by bursts in the order A B B A: whatever drifts evenly while they run, a processor that
/// warms up or a neighbour that wakes, falls on both sides alike. Each round holds one such group
/// of product and yardstick and one of yardstick and yardstick, in alternating order.
Comparison Compare(unsigned rounds, const BurstFunction& yardstick, const BurstFunction& second,
                   const BurstFunction& product);

}  // namespace bench

#endif  // BENCH_COMPARISON_H_
