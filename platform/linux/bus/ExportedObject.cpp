#include "platform/linux/bus/ExportedObject.h"

namespace hushbox {

ExportedObject::ExportedObject(GDBusConnection* connection, const char* path,
                               GDBusInterfaceInfo* interface, const GDBusInterfaceVTable& vtable,
                               gpointer self)
    : connection_(g_object_ref(connection)),
      path_(path),
      interface_(interface),
      id_(g_dbus_connection_register_object(connection, path, interface, &vtable, self, nullptr,
                                            nullptr)) {}

ExportedObject::~ExportedObject() {
  if (id_) g_dbus_connection_unregister_object(connection_.get(), id_);
}

void ExportedObject::emit(const char* signal, GVariant* arguments) const {
  g_dbus_connection_emit_signal(connection_.get(), nullptr, path_, interface_->name, signal,
                                arguments, nullptr);
}

}  // namespace hushbox
