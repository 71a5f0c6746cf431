#pragma once

#include <gio/gio.h>

#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {

/// Exports an object with one interface under one path for as long as this lives. Main thread only.
///
/// GDBus checks method names and argument types against the interface before it calls, from the
/// main context.
class ExportedObject {
 public:
  /// `vtable` must outlive this; its functions receive `self`. On a closed connection they are
  /// never called.
  ExportedObject(GDBusConnection* connection, const char* path, GDBusInterfaceInfo* interface,
                 const GDBusInterfaceVTable& vtable, gpointer self);
  ~ExportedObject();
  ExportedObject(const ExportedObject&) = delete;
  ExportedObject& operator=(const ExportedObject&) = delete;

  GDBusConnection* connection() const { return connection_.get(); }

  /// Broadcasts a signal of the interface. Takes over floating arguments, a tuple or null.
  void emit(const char* signal, GVariant* arguments = nullptr) const;

 private:
  ConnectionPointer connection_;
  const char* path_;
  GDBusInterfaceInfo* interface_;
  guint id_;
};

}  // namespace hushbox
