#pragma once

#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {

/// What became of one call.
struct BusReply {
  enum class Outcome {
    answered,
    refused,  ///< An error, or an answer of the wrong type.
    gone,     ///< Nobody has that name any more, or the connection is broken.
    silent,   ///< No answer in time, or not asked because an earlier question is unanswered.
  };

  Outcome outcome = Outcome::silent;
  /// The tuple of results; set when answered, and only then.
  VariantPointer value;

  explicit operator bool() const { return outcome == Outcome::answered; }
};

}  // namespace hushbox
