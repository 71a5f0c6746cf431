#pragma once

#include <gio/gio.h>

#include <memory>

namespace hushbox {

/// Drops one reference, or frees, by the kind of what GLib handed out.
struct GLibRelease {
  void operator()(GVariant* variant) const { g_variant_unref(variant); }
  void operator()(GError* error) const { g_error_free(error); }
  void operator()(GDBusNodeInfo* info) const { g_dbus_node_info_unref(info); }
  void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
  void operator()(GCancellable* cancellable) const { g_object_unref(cancellable); }
};

using VariantPointer = std::unique_ptr<GVariant, GLibRelease>;
using ErrorPointer = std::unique_ptr<GError, GLibRelease>;
using NodeInfoPointer = std::unique_ptr<GDBusNodeInfo, GLibRelease>;
using ConnectionPointer = std::unique_ptr<GDBusConnection, GLibRelease>;
using CancellablePointer = std::unique_ptr<GCancellable, GLibRelease>;

}  // namespace hushbox
