#pragma once

#include <string>

#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {

/// The outcome of one call.
struct BusReply {
  enum class Outcome {
    answered,
    refused,  ///< An error, or a reply of the wrong type.
    gone,     ///< The name has no owner, or the connection is closed.
    silent,   ///< No reply in time, or not called because an earlier call got no reply.
  };

  /// The reply to a finished GDBus call: `value` if it is set, else `error`.
  static BusReply of(VariantPointer value, const GError* error);

  Outcome outcome = Outcome::silent;
  /// The tuple of results; set only when answered.
  VariantPointer value{};
  /// Why there is no value, for a person to read, without the bus's own prefix.
  std::string error{};

  explicit operator bool() const { return outcome == Outcome::answered; }
};

}  // namespace hushbox
