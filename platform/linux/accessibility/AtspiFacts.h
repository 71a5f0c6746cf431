#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/AccessibilityTree.h"
#include "platform/linux/bus/BusObject.h"
#include "platform/linux/bus/CallBatch.h"

namespace hushbox {

/// What was read of one object at one moment; missing texts are empty.
struct AtspiFacts {
  std::chrono::steady_clock::time_point readAt{};
  /// 0 when the object answered.
  AccessibilityError status = accessibility::cannotComplete;
  std::uint32_t role = 0;
  std::string name{};
  /// The description, which is where a browser puts the tooltip, or else the help text.
  std::string description{};
  /// The identifier in the document, or else the one that the toolkit assigns.
  std::string identifier{};
  /// The object that it is directly in; without a name if that is unknown.
  BusObject parent{};
  /// False where the toolkit leaves attributes out of the properties: then AtspiRemainingFactsCalls
  /// reads the texts one by one.
  bool isComplete = false;
};

/// The calls that read an object's facts in one batch: its properties, and its role unless that is
/// known.
class AtspiFactsCalls {
 public:
  AtspiFactsCalls(CallBatch& batch, const BusObject& object, std::optional<std::uint32_t> knownRole,
                  std::chrono::milliseconds timeout);

  AtspiFacts read(const CallBatch& batch) const;

 private:
  std::optional<std::uint32_t> knownRole_;
  CallBatch::Ticket properties_;
  std::optional<CallBatch::Ticket> role_;
};

/// The calls that read what GetAll left out, one text each.
class AtspiRemainingFactsCalls {
 public:
  AtspiRemainingFactsCalls(CallBatch& batch, const BusObject& object,
                           std::chrono::milliseconds timeout);

  void readInto(AtspiFacts& facts, const CallBatch& batch) const;

 private:
  CallBatch::Ticket name_;
  CallBatch::Ticket description_;
  CallBatch::Ticket attributes_;
};

/// The status that stands for a failed call.
AccessibilityError statusOf(const BusReply& reply);

}  // namespace hushbox
