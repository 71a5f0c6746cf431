#pragma once

#include <gio/gio.h>

#include <functional>

#include "platform/linux/bus/GLibPointers.h"
#include "platform/linux/bus/SessionBusConnection.h"
#include "platform/linux/menubar/ColorScheme.h"
#include "support/Lifetime.h"

namespace hushbox {

/// Whether the user prefers light or dark, from the desktop portal ("color-scheme" in
/// org.freedesktop.appearance). Main thread only.
///
/// It does not start the portal. Without a portal, and where the portal has no such setting, there
/// is no preference; when the portal exits, its last answer stays valid.
class ColorSchemeSetting {
 public:
  /// Reads the setting from the portal on `bus`, which must be connected and outlive this, now and
  /// whenever a portal appears. Calls `changed` from the main context with each answer.
  ColorSchemeSetting(SessionBusConnection& bus, GDBusConnection* connection,
                     std::function<void(ColorScheme)> changed);
  ~ColorSchemeSetting();
  ColorSchemeSetting(const ColorSchemeSetting&) = delete;
  ColorSchemeSetting& operator=(const ColorSchemeSetting&) = delete;

 private:
  static void portalAppeared(GDBusConnection* connection, const char* name, const char* owner,
                             gpointer self);
  static void settingChanged(GDBusConnection* connection, const char* sender, const char* path,
                             const char* interface, const char* signal, GVariant* arguments,
                             gpointer self);
  void read();
  void note(GVariant* value);

  SessionBusConnection& bus_;
  ConnectionPointer connection_;
  const std::function<void(ColorScheme)> changed_;
  guint subscription_;
  guint watch_;
  Lifetime lifetime_;
};

}  // namespace hushbox
