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

/// The time conventions of the user's session: the order, separators and words of the locale that
/// LC_ALL, LC_TIME or LANG names, and a 12-hour or 24-hour clock as the desktop's settings say, if
/// they do. A locale that is not installed counts as "C".
///
/// It neither uses nor changes the locale of the process. Main thread only.
class SessionLocale final : public Locale {
 public:
  using DesktopClock = std::function<std::optional<ClockStyle>()>;

  /// Reads the environment once, here, and the desktop's setting at each call of shortTime().
  explicit SessionLocale(SessionBusConnection& bus);
  explicit SessionLocale(DesktopClock desktopClock);
  ~SessionLocale() override;
  SessionLocale(const SessionLocale&) = delete;
  SessionLocale& operator=(const SessionLocale&) = delete;

  std::string shortTime() override;

  /// The same for the given moment, in the local time zone.
  std::string shortTime(std::time_t moment) const;

 private:
  DesktopClock desktopClock_;
  locale_t locale_;
};

}  // namespace hushbox
