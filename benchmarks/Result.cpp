#include "benchmarks/Result.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace hushbox {
namespace {

const char* nameOf(Result::Goal::Statistic statistic) {
  switch (statistic) {
    case Result::Goal::Statistic::percentile99:
      return "99th percentile";
    case Result::Goal::Statistic::max:
      return "maximum";
    case Result::Goal::Statistic::median:
      break;
  }
  return "median";
}

}  // namespace

void print(const Result& result) {
  nlohmann::json line{{"name", result.name},
                      {"unit", result.unit},
                      {"program", result.program},
                      {"baselines", result.baselines}};
  if (const auto& goal = result.goal) {
    line["goal"] = {{"bound", goal->bound}, {"statistic", nameOf(goal->statistic)}};
    if (!goal->ratioTo.empty()) line["goal"]["ratio_to"] = goal->ratioTo;
  }
  if (const auto& point = result.point) {
    line["point"] = {
        {"plot", point->plot}, {"axis", point->axis}, {"series", point->series}, {"x", point->x}};
  }
  std::cout << line.dump() << std::endl;
}

void printSkipped(const std::string& reason) {
  std::cout << nlohmann::json{{"skipped", reason}}.dump() << std::endl;
}

}  // namespace hushbox
