#pragma once

#include <optional>
#include <string>

#include "platform/Locale.h"
#include "platform/Time.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedMainLoop.h"

namespace hushbox {

/// The user's clock: the text "10:42", or what a wall clock shows. Reading it leaves no line in the
/// journal, only a count.
class SimulatedLocale final : public Locale {
 public:
  SimulatedLocale(Journal& journal, const SimulatedMainLoop& loop)
      : journal_(journal), loop_(loop) {}

  /// From now on the time of day is this text and stands still.
  void setShortTime(std::string text) { fixed_ = std::move(text); }
  /// From now on it is a wall clock that shows so many seconds since midnight at this moment and
  /// goes with the loop's clock, in the style "10:42". Called again, the wall clock jumps.
  void setTimeOfDay(TimeInterval sinceMidnight);

  std::string shortTime() override;

 private:
  Journal& journal_;
  const SimulatedMainLoop& loop_;
  std::optional<std::string> fixed_ = "10:42";
  /// Where midnight lies on the loop's clock.
  TimeInterval midnight_{};
};

}  // namespace hushbox
