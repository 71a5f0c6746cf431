#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "platform/AccessibilityTree.h"
#include "platform/linux/accessibility/AtspiBus.h"
#include "platform/linux/accessibility/AtspiFacts.h"
#include "platform/linux/accessibility/TeamsDocument.h"
#include "platform/linux/bus/CallBatch.h"

namespace hushbox {

/// The control that is read again and again, and pressed: in practice Teams' microphone button. It
/// is read in the same batch in which its document is probed, so that a poll takes one round trip.
/// Main thread only.
class FollowedControl {
 public:
  explicit FollowedControl(AtspiBus& bus) : bus_(bus) {}

  /// Follows this control from now on, in place of another.
  void follow(const TeamsDocumentRef& document, const BusObject& object);
  void forget();

  /// The document that the control is in; null while no control is followed.
  const TeamsDocumentRef& document() const { return document_; }
  bool isOn(const TeamsDocumentRef& document) const { return document_ == document && document_; }
  bool is(const BusObject& object) const { return document_ && object_ == object; }

  /// Adds the calls that read the control, if there is one: two.
  std::optional<AtspiFactsCalls> addCalls(CallBatch& batch) const;
  void read(const CallBatch& batch, const AtspiFactsCalls& calls) { facts_ = calls.read(batch); }

  /// What was read last; nullopt if nothing was read since then, or not everything.
  std::optional<AtspiFacts> factsSince(std::chrono::steady_clock::time_point then) const;

  /// Whether the control was there when it was last read, which was since then. If it is, so is its
  /// document, at the host that it came from.
  bool wasThere(std::chrono::steady_clock::time_point then) const;

  /// Performs the action that is called press, click, toggle or the like.
  AccessibilityError press();

  /// Waits until the control's name is not `name` any more, or the control is destroyed, or
  /// `timeout` has passed.
  void awaitChange(const std::string& name, std::chrono::milliseconds timeout) const;

 private:
  AccessibilityError findPressAction();

  AtspiBus& bus_;
  TeamsDocumentRef document_;
  BusObject object_;
  AtspiFacts facts_;
  /// The index of the press among the control's actions, once that is known.
  std::optional<std::int32_t> pressAction_;
};

}  // namespace hushbox
