#pragma once

#include <gio/gio.h>

#include <memory>
#include <optional>

#include "platform/linux/ClockStyle.h"

namespace hushbox {

/// The desktop's own setting of its clock ("clock-format" in org.gnome.desktop.interface), which
/// wins over the locale for those who set it. Main thread only.
class DesktopClockSetting {
 public:
  /// Takes the settings of the session, or those of `backend`.
  explicit DesktopClockSetting(GSettingsBackend* backend = nullptr);

  /// Empty where there is no such setting, or where nobody chose it: on desktops that do not have
  /// it in their own settings, the schema's default says nothing about the user.
  std::optional<ClockStyle> style() const;

 private:
  struct Release {
    void operator()(GSettings* settings) const { g_object_unref(settings); }
  };
  std::unique_ptr<GSettings, Release> settings_;
};

}  // namespace hushbox
