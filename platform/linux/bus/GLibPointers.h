#pragma once

#include <gio/gio.h>

#include <memory>

namespace hushbox {

/// Releases what GLib returned: drops one reference, or frees it.
struct GLibRelease {
  void operator()(GVariant* variant) const { g_variant_unref(variant); }
  void operator()(GError* error) const { g_error_free(error); }
  void operator()(GDBusNodeInfo* info) const { g_dbus_node_info_unref(info); }
};

/// Drops one reference to a GObject.
struct GObjectRelease {
  void operator()(gpointer object) const { g_object_unref(object); }
};

template <typename Object>
using ObjectPointer = std::unique_ptr<Object, GObjectRelease>;

using VariantPointer = std::unique_ptr<GVariant, GLibRelease>;
using ErrorPointer = std::unique_ptr<GError, GLibRelease>;
using NodeInfoPointer = std::unique_ptr<GDBusNodeInfo, GLibRelease>;
using ConnectionPointer = ObjectPointer<GDBusConnection>;
using CancellablePointer = ObjectPointer<GCancellable>;

}  // namespace hushbox
