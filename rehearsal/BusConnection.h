#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

#include "rehearsal/Waiting.h"

namespace hushbox::rehearsal {

/// Drops one reference of a GVariant.
struct VariantUnref {
  void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
/// An owned, full reference to a GVariant.
using Variant = std::unique_ptr<GVariant, VariantUnref>;

/// A D-Bus connection of the rehearsal's own, never the process-wide one: that one would stay
/// bound to the first desk of the process.
///
/// The other end's death closes it and never ends the process. Throws DeskError when the bus
/// cannot be reached.
class BusConnection {
 public:
  explicit BusConnection(const std::string& address);
  ~BusConnection();
  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;

  GDBusConnection* get() const { return connection_; }

  /// Calls and blocks until the answer. The arguments may be floating or null; the answer is the
  /// tuple of results. Throws DeskError with the bus's own error text.
  Variant call(const std::string& name, const std::string& path, const std::string& interface,
               const std::string& method, GVariant* arguments,
               Milliseconds deadline = Milliseconds{10'000}) const;

  bool hasOwner(const std::string& name) const;
  /// The process behind a name; -1 when nobody owns it.
  int processOf(const std::string& name) const;

 private:
  GDBusConnection* connection_ = nullptr;
};

}  // namespace hushbox::rehearsal
