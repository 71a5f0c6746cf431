#pragma once

#include <chrono>

#include "platform/linux/bus/BusObject.h"
#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {

/// One method call on a bus.
struct BusCall {
  BusObject object;
  /// Literals, like the next two.
  const char* interface;
  const char* method;
  /// The type of a valid reply, such as "(u)"; a reply of any other type counts as refused.
  const char* replyType;
  /// How long to wait for the reply.
  std::chrono::milliseconds timeout;
  /// Null for none.
  VariantPointer arguments;
  /// Whether the bus may start the program that owns the name.
  bool startsOwner = false;
};

/// Takes ownership of a floating tuple of arguments, as g_variant_new() makes it.
inline VariantPointer takeArguments(GVariant* floating) {
  return VariantPointer(g_variant_ref_sink(floating));
}

}  // namespace hushbox
