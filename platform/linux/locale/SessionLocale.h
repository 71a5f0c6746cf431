#pragma once

#include <clocale>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Locale.h"
#include "platform/linux/locale/ClockStyle.h"
#include "platform/linux/locale/DesktopClockSetting.h"

namespace hushbox {

/// The time conventions of the user's session: the order, the separators and the words of the
/// locale that LC_ALL, LC_TIME or LANG name, and the desktop's choice of a 12-hour or a 24-hour
/// clock where it has one. A locale that is not installed reads as "C".
///
/// The process's own locale is neither used nor changed. Main thread only.
class SessionLocale final : public Locale {
 public:
  using DesktopClock = std::function<std::optional<ClockStyle>()>;

  /// Reads the environment once, here; asks for the desktop's choice at each time.
  SessionLocale();
  explicit SessionLocale(DesktopClock desktopClock);
  ~SessionLocale() override;
  SessionLocale(const SessionLocale&) = delete;
  SessionLocale& operator=(const SessionLocale&) = delete;

  std::string shortTime() override;

  /// The same for any moment, in the local time zone.
  std::string shortTime(std::time_t moment) const;

 private:
  DesktopClock desktopClock_;
  locale_t locale_;
};

}  // namespace hushbox
