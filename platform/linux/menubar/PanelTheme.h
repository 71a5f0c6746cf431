#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/bus/GLibPointers.h"
#include "platform/linux/menubar/PanelTone.h"

namespace hushbox {

/// The presumed tone of MATE's panel with this GTK theme.
PanelTone panelToneOfGtkTheme(std::string name);

/// The tone of LXQt's panel by the colour of text in the first lxqt/lxqt.conf below `configFolders`
/// that has one; the panel gives that colour to the icons of its own theme. Without one, text is
/// black.
PanelTone panelToneOfLxqt(const std::vector<std::string>& configFolders);

/// The tone of the panel by the settings of MATE and LXQt. Their panels show the colour in an
/// icon's file, and neither desktop announces a colour scheme by itself. Main thread only.
///
/// - MATE: the name of the GTK theme ("gtk-theme" in org.mate.interface), which is followed.
/// - LXQt: the colour of text in lxqt.conf, which is read once.
class PanelTheme {
 public:
  /// Reads the settings of the desktop that XDG_CURRENT_DESKTOP names, from `backend` or, if that
  /// is null, from the session's storage. That storage uses the session bus connection which GLib
  /// shares, so a SessionBusConnection must have connected first. Calls `changed` from the main
  /// context when the tone may have changed.
  PanelTheme(std::string_view desktop, std::function<void()> changed,
             GSettingsBackend* backend = nullptr);
  PanelTheme(const PanelTheme&) = delete;
  PanelTheme& operator=(const PanelTheme&) = delete;

  /// Returns PanelTone::unknown on other desktops, and on MATE where its settings are not
  /// installed.
  PanelTone tone() const;

 private:
  void openMateSettings(GSettingsBackend* backend);
  static void themeChanged(GSettings* settings, const char* key, gpointer self);

  const std::function<void()> changed_;
  ObjectPointer<GSettings> mate_;
  PanelTone lxqt_ = PanelTone::unknown;
};

}  // namespace hushbox
