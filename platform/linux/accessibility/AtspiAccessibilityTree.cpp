#include "platform/linux/accessibility/AtspiAccessibilityTree.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>
#include <utility>

#include "platform/linux/accessibility/AtspiRole.h"
#include "platform/linux/accessibility/AtspiValue.h"
#include "support/Text.h"

namespace hushbox {

namespace {

using accessibility::success;
using std::chrono::milliseconds;

/// What a button's, check box's or toggle button's main action is called, in lower case.
constexpr std::string_view pressNames[] = {"press", "click",   "toggle",
                                           "check", "uncheck", "activate"};
/// The main action is the first in practice; a menu or a context menu may precede it.
constexpr int mostActions = 4;

AccessibilityError give(const std::string& text, AttributeValue& value) {
  if (text.empty()) return accessibility::noValue;
  value = text;
  return success;
}

bool isPress(const BusReply& name) {
  if (!name) return false;
  const std::string lowercased = text::lowercased(atspi_value::text(name.value.get()));
  return std::find(std::begin(pressNames), std::end(pressNames), lowercased) !=
         std::end(pressNames);
}

constexpr const char* actionInterface = "org.a11y.atspi.Action";

AccessibilityError failureOf(const BusReply& reply) {
  return reply.outcome == BusReply::Outcome::silent ? accessibility::cannotComplete
                                                    : accessibility::invalidElement;
}

}  // namespace

AtspiAccessibilityTree::AtspiAccessibilityTree() : identity_(std::make_shared<char>()) {}

AtspiAccessibilityTree::~AtspiAccessibilityTree() = default;

bool AtspiAccessibilityTree::isProcessTrusted() {
  return bus_.isEnabled() && bus_.connect();
}

bool AtspiAccessibilityTree::isProcessTrustedWithOptions(bool prompt) {
  const bool trusted = isProcessTrusted();
  if (!trusted && prompt) bus_.enable();
  return trusted;
}

AccessibilityElementRef AtspiAccessibilityTree::createApplication(std::int32_t processIdentifier) {
  if (!reading_.isUntouched()) reading_.begin();
  return std::make_shared<AtspiElement>(identity_, processIdentifier);
}

AccessibilityError AtspiAccessibilityTree::setMessagingTimeout(
    const AccessibilityElementRef& element, float seconds) {
  if (!own(element)) return accessibility::invalidElement;
  if (!std::isfinite(seconds) || seconds <= 0) return accessibility::failure;
  constexpr float longest = 60;
  teams_.setTimeout(milliseconds(std::lround(std::min(seconds, longest) * 1000)));
  return success;
}

AccessibilityError AtspiAccessibilityTree::setAttributeValue(const AccessibilityElementRef& element,
                                                             std::string_view, bool) {
  return own(element) ? accessibility::attributeUnsupported : accessibility::invalidElement;
}

AccessibilityError AtspiAccessibilityTree::copyAttributeValue(
    const AccessibilityElementRef& element, std::string_view attribute, AttributeValue& value) {
  value = std::monostate{};
  const AtspiElement* const known = own(element);
  if (!known) return accessibility::invalidElement;
  if (!bus_.connect()) return accessibility::apiDisabled;
  if (known->isApplication()) return copyFromApplication(*known, attribute, value);
  if (known->surface()) return copyFromSurface(known->surface(), attribute, value);
  return copyFromObject(*known, attribute, value);
}

AccessibilityError AtspiAccessibilityTree::performAction(const AccessibilityElementRef& element,
                                                         std::string_view action) {
  const AtspiElement* const known = own(element);
  if (!known) return accessibility::invalidElement;
  if (!known->siblings() || action != "AXPress") return accessibility::actionUnsupported;
  if (!bus_.connect()) return accessibility::apiDisabled;
  const AccessibilityError status = press(*known);
  if (status == success) reading_.awaitChange(*known, pressWait);
  reading_.begin();
  return status;
}

const AtspiElement* AtspiAccessibilityTree::own(const AccessibilityElementRef& element) const {
  const auto* const known = dynamic_cast<const AtspiElement*>(element.get());
  return known && known->isOf(identity_) ? known : nullptr;
}

AccessibilityError AtspiAccessibilityTree::copyFromApplication(const AtspiElement& element,
                                                               std::string_view attribute,
                                                               AttributeValue& value) {
  const auto isThere = [&] {
    return std::any_of(teams_.surfaces().begin(), teams_.surfaces().end(), [&](const auto& one) {
      return one->processIdentifier == element.processIdentifier();
    });
  };
  if (attribute == "AXChildren" || !isThere()) reading_.search();
  if (!isThere()) return accessibility::invalidElement;
  if (attribute == "AXRole") return give(atspi_role::name(atspi_role::application), value);
  if (attribute == "AXTitle") return give("Microsoft Teams", value);
  if (attribute != "AXChildren") return accessibility::noValue;
  std::vector<AccessibilityElementRef> surfaces;
  for (const AtspiSurfaceRef& surface : teams_.surfaces())
    surfaces.push_back(std::make_shared<AtspiElement>(identity_, surface));
  value = std::move(surfaces);
  return success;
}

AccessibilityError AtspiAccessibilityTree::copyFromSurface(const AtspiSurfaceRef& surface,
                                                           std::string_view attribute,
                                                           AttributeValue& value) {
  if (attribute == "AXRole") {
    return give(atspi_role::name(surface->isDocument ? atspi_role::documentWeb : atspi_role::frame),
                value);
  }
  if (attribute != "AXChildren") return accessibility::noValue;
  const auto controls = reading_.controls(surface);
  if (!controls) return accessibility::cannotComplete;
  value = elements(controls);
  return success;
}

AccessibilityError AtspiAccessibilityTree::copyFromObject(const AtspiElement& element,
                                                          std::string_view attribute,
                                                          AttributeValue& value) {
  if (attribute == "AXChildren") {
    const auto children = reading_.children(element);
    if (!children) return accessibility::cannotComplete;
    value = elements(children);
    return success;
  }
  const AtspiFacts& facts = reading_.facts(element);
  if (facts.status != success) return facts.status;
  if (attribute == "AXRole") return give(atspi_role::name(facts.role), value);
  if (attribute == "AXDescription") return give(facts.name, value);
  if (attribute == "AXHelp") return give(facts.description, value);
  if (attribute == "AXDOMIdentifier") return give(facts.identifier, value);
  return accessibility::noValue;
}

AccessibilityError AtspiAccessibilityTree::press(const AtspiElement& element) {
  // An object that has been taken down still takes presses, and loses them.
  const AccessibilityError status = reading_.facts(element).status;
  if (status != success) return status;
  const BusObject& object = element.siblings()->objects[element.index()];
  AtspiSurface& surface = *element.siblings()->surface;
  surface.keepControl(object);
  if (!surface.controlPress) {
    const AccessibilityError sought = seekPress(surface);
    if (sought != success) return sought;
  }
  const BusReply pressed = bus_.ask({object, actionInterface, "DoAction", "(b)", teams_.timeout(),
                                     takeArguments(g_variant_new("(i)", *surface.controlPress))});
  if (!pressed) return failureOf(pressed);
  gboolean done = FALSE;
  g_variant_get(pressed.value.get(), "(b)", &done);
  return done ? success : accessibility::failure;
}

AccessibilityError AtspiAccessibilityTree::seekPress(AtspiSurface& surface) {
  std::vector<BusCall> questions;
  for (int i = 0; i < mostActions; ++i)
    questions.push_back({surface.control, actionInterface, "GetName", "(s)", teams_.timeout(),
                         takeArguments(g_variant_new("(i)", i))});
  const auto names = bus_.ask(std::move(questions));
  const auto main = std::find_if(names.begin(), names.end(), isPress);
  if (main == names.end()) {
    return names[0].outcome == BusReply::Outcome::silent ? accessibility::cannotComplete
                                                         : accessibility::actionUnsupported;
  }
  surface.controlPress = static_cast<std::int32_t>(main - names.begin());
  return success;
}

AttributeValue AtspiAccessibilityTree::elements(
    const std::shared_ptr<const AtspiSiblings>& siblings) const {
  std::vector<AccessibilityElementRef> result;
  for (std::size_t i = 0; i < siblings->objects.size(); ++i)
    result.push_back(std::make_shared<AtspiElement>(identity_, siblings, i));
  return result;
}

}  // namespace hushbox
