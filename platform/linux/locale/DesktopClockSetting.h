#pragma once

#include <gio/gio.h>

#include <optional>

#include "platform/linux/bus/GLibPointers.h"
#include "platform/linux/bus/SessionBusConnection.h"
#include "platform/linux/locale/ClockStyle.h"
#include "support/Subscription.h"

namespace hushbox {

/// The clock format of the desktop's own settings ("clock-format" in org.gnome.desktop.interface),
/// which takes precedence over the locale where the user has set it. Main thread only.
class DesktopClockSetting {
 public:
  /// Opens the session's settings as soon as `bus` is connected; until then there are none.
  explicit DesktopClockSetting(SessionBusConnection& bus);
  /// Opens those of `backend`, at once.
  explicit DesktopClockSetting(GSettingsBackend* backend);
  DesktopClockSetting(const DesktopClockSetting&) = delete;
  DesktopClockSetting& operator=(const DesktopClockSetting&) = delete;

  /// Returns nullopt where there is no such setting, or where the user has not set it: on desktops
  /// that do not offer it in their own settings, the schema's default says nothing about the user.
  std::optional<ClockStyle> style() const;

 private:
  ObjectPointer<GSettings> settings_;
  Subscription busSubscription_;
};

}  // namespace hushbox
