#pragma once

#include <gio/gio.h>

#include <memory>
#include <optional>

#include "platform/linux/bus/GLibPointers.h"
#include "platform/linux/locale/ClockStyle.h"
#include "support/Lifetime.h"

namespace hushbox {

/// The desktop's own setting of its clock ("clock-format" in org.gnome.desktop.interface), which
/// wins over the locale for those who set it. Main thread only.
class DesktopClockSetting {
 public:
  /// Takes the settings of the session, a moment later from the main context; none without a
  /// session bus.
  DesktopClockSetting();
  /// Takes those of `backend`, now.
  explicit DesktopClockSetting(GSettingsBackend* backend);
  ~DesktopClockSetting();
  DesktopClockSetting(const DesktopClockSetting&) = delete;
  DesktopClockSetting& operator=(const DesktopClockSetting&) = delete;

  /// Empty where there is no such setting, or where nobody chose it: on desktops that do not have
  /// it in their own settings, the schema's default says nothing about the user.
  std::optional<ClockStyle> style() const;

 private:
  void open(GSettingsBackend* backend);

  struct Release {
    void operator()(GSettings* settings) const { g_object_unref(settings); }
  };
  const CancellablePointer cancellable_{g_cancellable_new()};
  ConnectionPointer bus_;
  std::unique_ptr<GSettings, Release> settings_;
  Lifetime lifetime_;
};

}  // namespace hushbox
