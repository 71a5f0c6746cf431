#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

#include "rehearsal/Waiting.h"

namespace hushbox::rehearsal {

/// Unreferences a GVariant.
struct VariantUnref {
  void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
/// Owns one full (not floating) reference to a GVariant.
using Variant = std::unique_ptr<GVariant, VariantUnref>;

/// A D-Bus connection of the rehearsal's own. It is never GIO's shared connection, which would stay
/// connected to the bus of the process's first desk.
///
/// If the bus closes the connection, this process does not exit.
class BusConnection {
 public:
  /// Throws DeskError if the bus cannot be reached.
  explicit BusConnection(const std::string& address);
  ~BusConnection();
  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;

  GDBusConnection* get() const { return connection_; }

  /// Calls a method, blocks until the reply arrives and returns it, a tuple of results. `arguments`
  /// may be floating or null. Throws DeskError with the bus's error text for an error reply, and at
  /// the deadline.
  Variant call(const std::string& name, const std::string& path, const std::string& interface,
               const std::string& method, GVariant* arguments,
               Milliseconds deadline = serverTimeout) const;

  bool hasOwner(const std::string& name) const;
  /// The id of the process that owns a name, or -1 if the name has no owner.
  int processOf(const std::string& name) const;

 private:
  GDBusConnection* connection_ = nullptr;
};

}  // namespace hushbox::rehearsal
