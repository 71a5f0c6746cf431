#include "platform/linux/accessibility/FollowedControl.h"

#include <algorithm>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/linux/accessibility/AtspiCalls.h"
#include "platform/linux/accessibility/AtspiValue.h"
#include "support/Text.h"

namespace hushbox {

namespace {

/// What toolkits call the main action of a button, check box or toggle button, in lower case.
constexpr std::string_view pressNames[] = {"press", "click",   "toggle",
                                           "check", "uncheck", "activate"};
/// The main action is the first in practice; a menu or a context menu may precede it.
constexpr std::int32_t maxActions = 4;
/// A page shows a change after one or two frames. One that takes longer is looked at less often.
constexpr std::chrono::milliseconds minChangeInterval{8};
constexpr std::chrono::milliseconds maxChangeInterval{40};

bool isPress(const BusReply& name) {
  if (!name) return false;
  const std::string lowercased = text::lowercased(atspi_value::text(name.value.get()));
  return std::find(std::begin(pressNames), std::end(pressNames), lowercased) !=
         std::end(pressNames);
}

}  // namespace

void FollowedControl::follow(const TeamsDocumentRef& document, const BusObject& object) {
  if (is(object)) return;
  document_ = document;
  object_ = object;
  facts_ = {};
  pressAction_.reset();
}

void FollowedControl::forget() {
  document_.reset();
}

std::optional<AtspiFactsCalls> FollowedControl::addCalls(CallBatch& batch) const {
  if (!document_) return std::nullopt;
  return AtspiFactsCalls(batch, object_, std::nullopt, bus_.timeout());
}

std::optional<AtspiFacts> FollowedControl::factsSince(
    std::chrono::steady_clock::time_point then) const {
  if (facts_.readAt < then || !facts_.isComplete) return std::nullopt;
  return facts_;
}

bool FollowedControl::wasThere(std::chrono::steady_clock::time_point then) const {
  return facts_.readAt >= then && facts_.status == accessibility::success;
}

AccessibilityError FollowedControl::press() {
  if (!pressAction_) {
    const AccessibilityError status = findPressAction();
    if (status != accessibility::success) return status;
  }
  const BusReply reply = bus_.ask(atspi_calls::doAction(object_, *pressAction_, bus_.timeout()));
  if (!reply) return statusOf(reply);
  gboolean done = FALSE;
  g_variant_get(reply.value.get(), "(b)", &done);
  return done ? accessibility::success : accessibility::failure;
}

AccessibilityError FollowedControl::findPressAction() {
  CallBatch batch;
  std::vector<CallBatch::Ticket> names;
  for (std::int32_t i = 0; i < maxActions; ++i)
    names.push_back(batch.add(atspi_calls::actionName(object_, i, bus_.timeout())));
  bus_.send(batch);
  for (std::int32_t i = 0; i < maxActions && !pressAction_; ++i)
    if (isPress(batch[names[static_cast<std::size_t>(i)]])) pressAction_ = i;
  if (pressAction_) return accessibility::success;
  return batch[names.front()].outcome == BusReply::Outcome::timedOut
             ? accessibility::cannotComplete
             : accessibility::actionUnsupported;
}

void FollowedControl::awaitChange(const std::string& name,
                                  std::chrono::milliseconds timeout) const {
  const auto end = std::chrono::steady_clock::now() + timeout;
  std::chrono::milliseconds interval = minChangeInterval;
  do {
    // Before the first look too: calls only hold up the page while it handles the press.
    std::this_thread::sleep_for(interval);
    interval = std::min(interval * 3 / 2, maxChangeInterval);
    CallBatch batch;
    const auto now =
        batch.add(atspi_calls::property(object_, atspi_calls::accessible, "Name", bus_.timeout()));
    // Each look shows what the refresh before it brought.
    if (document_->labelsLag)
      batch.add(atspi_calls::refreshLabels(document_->object, bus_.timeout()));
    bus_.send(batch);
    if (!batch[now] || atspi_value::text(batch[now].value.get()) != name) return;
  } while (std::chrono::steady_clock::now() < end);
}

}  // namespace hushbox
