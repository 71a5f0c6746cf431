#pragma once

#include <string>

#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {

/// The outcome of one call.
struct BusReply {
  enum class Outcome {
    replied,
    refused,      ///< An error, or a reply of the wrong type.
    unreachable,  ///< The name has no owner, or the connection is closed.
    timedOut,     ///< No reply in time, or not called because an earlier call has no reply yet.
  };

  /// The reply to a finished GDBus call: `value` if it is set, else `error`.
  static BusReply of(VariantPointer value, const GError* error);

  Outcome outcome = Outcome::timedOut;
  /// The tuple of results; set only for `replied`.
  VariantPointer value{};
  /// Why there is no value, for a person to read, without the bus's own prefix.
  std::string error{};

  explicit operator bool() const { return outcome == Outcome::replied; }
};

}  // namespace hushbox
