#pragma once

#include <gio/gio.h>

#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {

/// An object of ours on a bus, under one path and with one interface, for as long as this lives.
///
/// GDBus checks names and argument types against the interface before it calls; calls come from the
/// main context. Main thread only.
class ExportedObject {
 public:
  /// `vtable` must outlive this, `self` is what its functions are given. On a connection that is
  /// closed nobody ever calls.
  ExportedObject(GDBusConnection* connection, const char* path, GDBusInterfaceInfo* interface,
                 const GDBusInterfaceVTable& vtable, gpointer self)
      : connection_(g_object_ref(connection)),
        path_(path),
        interface_(interface),
        id_(g_dbus_connection_register_object(connection, path, interface, &vtable, self, nullptr,
                                              nullptr)) {}
  ~ExportedObject() {
    if (id_) g_dbus_connection_unregister_object(connection_.get(), id_);
  }
  ExportedObject(const ExportedObject&) = delete;
  ExportedObject& operator=(const ExportedObject&) = delete;

  GDBusConnection* connection() const { return connection_.get(); }

  /// Sends a signal of the interface to whoever listens. Takes over floating arguments, which are a
  /// tuple or null.
  void emit(const char* signal, GVariant* arguments = nullptr) const {
    g_dbus_connection_emit_signal(connection_.get(), nullptr, path_, interface_->name, signal,
                                  arguments, nullptr);
  }

 private:
  ConnectionPointer connection_;
  const char* path_;
  GDBusInterfaceInfo* interface_;
  guint id_;
};

}  // namespace hushbox
