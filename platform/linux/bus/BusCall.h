#pragma once

#include <chrono>

#include "platform/linux/bus/BusObject.h"
#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {

/// One method call on a bus, with how long its answer is waited for.
struct BusCall {
  BusObject object;
  /// Literals, like the next two.
  const char* interface;
  const char* method;
  /// The type of a proper answer, such as "(u)"; any other answer counts as a refusal.
  const char* replyType;
  std::chrono::milliseconds wait;
  /// Null for none.
  VariantPointer arguments;
};

/// A floating tuple of arguments, as g_variant_new() makes it, taken into possession.
inline VariantPointer takeArguments(GVariant* floating) {
  return VariantPointer(g_variant_ref_sink(floating));
}

}  // namespace hushbox
