#pragma once

#include <gio/gio.h>

#include <functional>

#include "platform/linux/bus/GLibPointers.h"
#include "platform/linux/menubar/ColorScheme.h"
#include "support/Lifetime.h"

namespace hushbox {

/// What the user wants to be light or dark, as the desktop portal tells it ("color-scheme" in
/// org.freedesktop.appearance). Main thread only.
///
/// The portal is not started for it. Until one is there, and where it does not know, there is no
/// preference; when it goes, its last word stands.
class ColorSchemeSetting {
 public:
  /// Asks the portal on that bus, now and whenever one appears, and calls `told` from the main
  /// context with each answer.
  ColorSchemeSetting(GDBusConnection* connection, std::function<void(ColorScheme)> told);
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

  ConnectionPointer connection_;
  const std::function<void(ColorScheme)> told_;
  guint subscription_;
  guint watch_;
  Lifetime lifetime_;
};

}  // namespace hushbox
