#pragma once

#include <optional>
#include <string>

#include "platform/Locale.h"
#include "platform/Time.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedMainLoop.h"

namespace hushbox {

/// The time of day: a fixed text, initially "10:42", or a wall clock. Reads are counted in the
/// journal but add no line.
class SimulatedLocale final : public Locale {
 public:
  SimulatedLocale(Journal& journal, const SimulatedMainLoop& loop)
      : journal_(journal), loop_(loop) {}

  /// Sets a fixed time of day.
  void setShortTime(std::string text) { fixed_ = std::move(text); }
  /// Sets the wall clock, which follows the loop's clock and shows times like "10:42".
  void setTimeOfDay(TimeInterval sinceMidnight);

  std::string shortTime() override;

 private:
  Journal& journal_;
  const SimulatedMainLoop& loop_;
  std::optional<std::string> fixed_ = "10:42";
  /// The loop's time at midnight.
  TimeInterval midnight_{};
};

}  // namespace hushbox
