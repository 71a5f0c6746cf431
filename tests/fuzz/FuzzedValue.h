#pragma once

#include <glib.h>

#include <cstring>
#include <string_view>

#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {

/// Returns a value of that type made of `bytes`, as valid as any that GIO passes on from a bus:
/// strings are UTF-8 and offsets are in range.
inline VariantPointer fuzzedValue(const char* type, std::string_view bytes) {
  // GLib reads the bytes in place and needs them aligned.
  gpointer copy = g_malloc(bytes.size() + 1);
  std::memcpy(copy, bytes.data(), bytes.size());
  const VariantPointer untrusted(g_variant_ref_sink(
      g_variant_new_from_data(G_VARIANT_TYPE(type), copy, bytes.size(), FALSE, g_free, copy)));
  return VariantPointer(g_variant_get_normal_form(untrusted.get()));
}

}  // namespace hushbox
