#include "platform/simulated/SimulatedLocale.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace hushbox {
namespace {

constexpr TimeInterval day = std::chrono::hours{24};

}  // namespace

void SimulatedLocale::setTimeOfDay(TimeInterval sinceMidnight) {
  fixed_.reset();
  midnight_ = TimeInterval(loop_.now().time_since_epoch()) - sinceMidnight;
}

std::string SimulatedLocale::shortTime() {
  loop_.requireMainThread("shortTime");
  journal_.count("locale");
  if (fixed_) return *fixed_;
  const TimeInterval since = TimeInterval(loop_.now().time_since_epoch()) - midnight_;
  const double today = since.count() - std::floor(since / day) * day.count();
  const int minutes = static_cast<int>(today / 60);
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%02d:%02d", minutes / 60, minutes % 60);
  return text.data();
}

}  // namespace hushbox
