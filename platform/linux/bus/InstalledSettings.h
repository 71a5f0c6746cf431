#pragma once

#include <gio/gio.h>

#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {

/// Opens the settings of the schema, from `backend` or, if that is null, from the session's
/// storage. That storage uses the session bus connection which GLib shares, so a
/// SessionBusConnection must have connected first. Returns null if the schema is not installed or
/// has no such key: GIO would end the program. Main thread only.
ObjectPointer<GSettings> openInstalledSettings(const char* schema, const char* key,
                                               GSettingsBackend* backend);

}  // namespace hushbox
