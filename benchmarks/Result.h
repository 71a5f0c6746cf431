#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace hushbox {

/// What a benchmark measured, for benchmarks/bench.py to tabulate.
struct Result {
  using Samples = std::vector<double>;

  /// A bound that `statistic` of the samples must not exceed.
  struct Goal {
    enum class Statistic { median, percentile99, max };

    double bound = 0;
    Statistic statistic = Statistic::median;
    /// The baseline by which the program's samples are divided; empty for the samples themselves.
    std::string ratioTo{};
  };

  /// A place on a plot: one line per `series`.
  struct Point {
    std::string plot;
    std::string axis;
    std::string series;
    double x = 0;
  };

  /// What was measured, for a row of the table.
  std::string name;
  /// Such as "ms", "KiB" or "calls".
  std::string unit;
  Samples program{};
  /// By the name of what was measured in the program's place, in the same run. The samples of one
  /// index were taken right after one another.
  std::map<std::string, Samples> baselines{};
  std::optional<Goal> goal{};
  std::optional<Point> point{};
};

/// Prints the result as one line of JSON on standard output. Call on one thread.
void print(const Result& result);

/// Prints, in the same way, that something was not measured, and why.
void printSkipped(const std::string& reason);

}  // namespace hushbox
