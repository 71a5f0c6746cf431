#include "platform/linux/accessibility/AtspiAccessibilityTree.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>
#include <utility>

#include "platform/linux/accessibility/AtspiRole.h"

namespace hushbox {

namespace {

using accessibility::success;
using std::chrono::milliseconds;

AccessibilityError give(const std::string& text, AttributeValue& value) {
  if (text.empty()) return accessibility::noValue;
  value = text;
  return success;
}

}  // namespace

AtspiAccessibilityTree::AtspiAccessibilityTree(std::function<void()> switchedOn,
                                               TeamsRanking::RecordingProcesses recordingProcesses,
                                               std::chrono::milliseconds freshness)
    : switchedOn_(std::move(switchedOn)),
      ranking_(labels_, std::move(recordingProcesses)),
      snapshot_(bus_, teams_, labels_, control_, freshness),
      identity_(std::make_shared<char>()) {}

AtspiAccessibilityTree::~AtspiAccessibilityTree() = default;

bool AtspiAccessibilityTree::isProcessTrusted() {
  if (bus_.readSwitch() == AtspiBus::Switch::off) return false;
  // Connected ahead of the first read. Without a connection no application is found.
  bus_.connect();
  return true;
}

bool AtspiAccessibilityTree::isProcessTrustedWithOptions(bool prompt) {
  const bool trusted = isProcessTrusted();
  if (!trusted && prompt) {
    bus_.enable();
    if (switchedOn_) switchedOn_();
  }
  return trusted;
}

AccessibilityElementRef AtspiAccessibilityTree::createApplication(std::int32_t processIdentifier) {
  if (!snapshot_.isUntouched()) snapshot_.begin();
  return std::make_shared<AtspiElement>(identity_, processIdentifier);
}

AccessibilityError AtspiAccessibilityTree::setMessagingTimeout(
    const AccessibilityElementRef& element, float seconds) {
  if (!own(element)) return accessibility::invalidElement;
  if (!std::isfinite(seconds) || seconds <= 0) return accessibility::failure;
  constexpr float maxSeconds = 60;
  bus_.setTimeout(milliseconds(std::lround(std::min(seconds, maxSeconds) * 1000)));
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
  if (known->document()) return copyFromDocument(known->document(), attribute, value);
  return copyFromObject(*known, attribute, value);
}

AccessibilityError AtspiAccessibilityTree::performAction(const AccessibilityElementRef& element,
                                                         std::string_view action) {
  const AtspiElement* const known = own(element);
  if (!known) return accessibility::invalidElement;
  if (!known->siblings() || action != "AXPress") return accessibility::actionUnsupported;
  if (!bus_.connect()) return accessibility::apiDisabled;
  const AccessibilityError status = press(*known);
  snapshot_.begin();
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
    return std::any_of(teams_.documents().begin(), teams_.documents().end(), [&](const auto& one) {
      return one->processIdentifier == element.processIdentifier();
    });
  };
  if (attribute == "AXChildren" || !isThere()) snapshot_.search();
  if (!isThere()) return accessibility::invalidElement;
  if (attribute == "AXRole") return give(atspi_role::name(atspi_role::application), value);
  if (attribute == "AXTitle") return give("Microsoft Teams", value);
  if (attribute != "AXChildren") return accessibility::noValue;
  std::vector<AccessibilityElementRef> documents;
  for (const TeamsDocumentRef& document : teams_.documents())
    documents.push_back(std::make_shared<AtspiElement>(identity_, document));
  value = std::move(documents);
  return success;
}

AccessibilityError AtspiAccessibilityTree::copyFromDocument(const TeamsDocumentRef& document,
                                                            std::string_view attribute,
                                                            AttributeValue& value) {
  if (attribute == "AXRole") {
    return give(
        atspi_role::name(document->isDocument ? atspi_role::documentWeb : atspi_role::frame),
        value);
  }
  if (attribute != "AXChildren") return accessibility::noValue;
  const auto controls = snapshot_.controls(document);
  if (!controls) return accessibility::cannotComplete;
  value = elements(controls);
  return success;
}

AccessibilityError AtspiAccessibilityTree::copyFromObject(const AtspiElement& element,
                                                          std::string_view attribute,
                                                          AttributeValue& value) {
  if (attribute == "AXChildren") {
    const auto children = snapshot_.children(element);
    if (!children) return accessibility::cannotComplete;
    value = elements(children);
    return success;
  }
  const AtspiFacts& facts = snapshot_.facts(element);
  if (facts.status != success) return facts.status;
  if (attribute == "AXRole") return give(atspi_role::name(facts.role), value);
  if (attribute == "AXDescription") return give(facts.name, value);
  if (attribute == "AXHelp") return give(facts.description, value);
  if (attribute == "AXDOMIdentifier") return give(facts.identifier, value);
  return accessibility::noValue;
}

AccessibilityError AtspiAccessibilityTree::press(const AtspiElement& element) {
  // An object that has been destroyed accepts presses, and loses them.
  const AtspiFacts facts = snapshot_.facts(element);
  if (facts.status != success) return facts.status;
  control_.follow(element.siblings()->document, element.object());
  const AccessibilityError status = control_.press();
  if (status == success) control_.awaitChange(facts.name, bus_.timeout());
  return status;
}

AttributeValue AtspiAccessibilityTree::elements(
    const std::shared_ptr<const AtspiSiblings>& siblings) const {
  std::vector<AccessibilityElementRef> result;
  for (std::size_t i = 0; i < siblings->objects.size(); ++i)
    result.push_back(std::make_shared<AtspiElement>(identity_, siblings, i));
  return result;
}

}  // namespace hushbox
