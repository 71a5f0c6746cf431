#include "platform/simulated/SimulatedAccessibilityTree.h"

#include <limits>
#include <utility>

#include "platform/simulated/Violation.h"

namespace hushbox {
namespace {

constexpr const char* accessibilityPart = "accessibility";
constexpr TimeInterval never{std::numeric_limits<double>::infinity()};

std::string applicationName(std::int32_t processIdentifier) {
  return "application " + std::to_string(processIdentifier);
}

std::string valueText(const AttributeValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return '"' + *text + '"';
  if (const auto* list = std::get_if<std::vector<AccessibilityElementRef>>(&value)) {
    return std::to_string(list->size()) + " elements";
  }
  return std::holds_alternative<OtherAttributeValue>(value) ? "another type" : "no value";
}

AccessibilityError copy(const SimulatedAttribute& attribute, AttributeValue& value) {
  if (const auto* error = std::get_if<AccessibilityError>(&attribute)) return *error;
  if (const auto* text = std::get_if<std::string>(&attribute)) {
    value = *text;
  } else if (std::holds_alternative<OtherAttributeValue>(attribute)) {
    value = OtherAttributeValue{};
  } else {
    value = std::monostate{};
  }
  return accessibility::success;
}

}  // namespace

/// What `createApplication` returns: an application by its process identifier, running or not.
struct SimulatedAccessibilityTree::ApplicationElement final : AccessibilityElement {
  ApplicationElement(std::shared_ptr<const void> tree, std::int32_t processIdentifier)
      : tree(std::move(tree)), processIdentifier(processIdentifier) {}

  std::shared_ptr<const void> tree;
  std::int32_t processIdentifier;
};

SimulatedElementRef SimulatedAccessibilityTree::launch(std::int32_t processIdentifier) {
  if (find(processIdentifier)) {
    reportViolation("Process " + std::to_string(processIdentifier) + " is running already.");
  }
  auto root = std::make_shared<SimulatedElement>(
      applicationName(processIdentifier),
      SimulatedElement::Attributes{{"AXRole", std::string("AXApplication")}});
  root->origin = {identity_, processIdentifier};
  applications_[processIdentifier] = {.root = root, .timeout = {}, .written = {}};
  return root;
}

void SimulatedAccessibilityTree::quit(std::int32_t processIdentifier) {
  Application* application = find(processIdentifier);
  if (!application) return;
  application->root->gone = true;
  application->root->removeChildren();
  applications_.erase(processIdentifier);
}

void SimulatedAccessibilityTree::setResponseTime(std::int32_t processIdentifier,
                                                 TimeInterval time) {
  if (Application* application = find(processIdentifier)) application->responseTime = time;
}

void SimulatedAccessibilityTree::freeze(std::int32_t processIdentifier) {
  setResponseTime(processIdentifier, never);
}

TimeInterval SimulatedAccessibilityTree::messagingTimeout(std::int32_t processIdentifier) const {
  const auto application = applications_.find(processIdentifier);
  return application == applications_.end() ? never : application->second.timeout.value_or(never);
}

std::optional<bool> SimulatedAccessibilityTree::written(std::int32_t processIdentifier,
                                                        const std::string& attribute) const {
  const auto application = applications_.find(processIdentifier);
  if (application == applications_.end()) return std::nullopt;
  const auto found = application->second.written.find(attribute);
  if (found == application->second.written.end()) return std::nullopt;
  return found->second;
}

SimulatedAccessibilityTree::Application* SimulatedAccessibilityTree::find(
    std::int32_t processIdentifier) {
  const auto found = applications_.find(processIdentifier);
  return found == applications_.end() ? nullptr : &found->second;
}

SimulatedAccessibilityTree::Target SimulatedAccessibilityTree::resolve(
    const AccessibilityElementRef& element) {
  if (const auto* handle = dynamic_cast<const ApplicationElement*>(element.get())) {
    Application* application =
        handle->tree == identity_ ? find(handle->processIdentifier) : nullptr;
    return {handle->processIdentifier, application ? application->root.get() : nullptr,
            applicationName(handle->processIdentifier), true};
  }
  if (const auto* shown = dynamic_cast<const SimulatedElement*>(element.get())) {
    const bool isHere = shown->origin.tree == identity_ && !shown->gone;
    const std::int32_t process = shown->origin.processIdentifier;
    Application* application = find(process);
    return {process, isHere ? shown : nullptr, shown->name,
            application && application->root.get() == shown};
  }
  return {0, nullptr, "unknown element", false};
}

/// Waits for the application's reply, at most for the messaging timeout.
AccessibilityError SimulatedAccessibilityTree::reach(const Target& target) {
  loop_.requireMainThread("An accessibility call");
  if (!trusted_) return accessibility::apiDisabled;
  const Application* application = find(target.processIdentifier);
  if (!target.element || !application) return accessibility::invalidElement;
  if (application->responseTime <= application->timeout.value_or(never)) {
    if (application->responseTime < never) {
      loop_.sleep(application->responseTime);
      return accessibility::success;
    }
    reportViolation("A call to " + target.name + " hangs: its application does not reply and " +
                    "no messaging timeout was set.");
    return accessibility::cannotComplete;
  }
  loop_.sleep(*application->timeout);
  return accessibility::cannotComplete;
}

bool SimulatedAccessibilityTree::isProcessTrusted() {
  loop_.requireMainThread("isProcessTrusted");
  journal_.add(accessibilityPart, "trusted -> ", trusted_);
  return trusted_;
}

bool SimulatedAccessibilityTree::isProcessTrustedWithOptions(bool prompt) {
  loop_.requireMainThread("isProcessTrustedWithOptions");
  journal_.add(accessibilityPart, prompt ? "trusted, prompting -> " : "trusted, not prompting -> ",
               trusted_);
  if (prompt && !trusted_) ++prompts_;
  return trusted_;
}

AccessibilityElementRef SimulatedAccessibilityTree::createApplication(
    std::int32_t processIdentifier) {
  loop_.requireMainThread("createApplication");
  journal_.add(accessibilityPart, applicationName(processIdentifier));
  return std::make_shared<ApplicationElement>(identity_, processIdentifier);
}

AccessibilityError SimulatedAccessibilityTree::setMessagingTimeout(
    const AccessibilityElementRef& element, float seconds) {
  loop_.requireMainThread("setMessagingTimeout");
  const Target target = resolve(element);
  AccessibilityError error = accessibility::invalidElement;
  if (target.element) {
    auto& timeout = find(target.processIdentifier)->timeout;
    timeout = seconds > 0 ? std::optional(TimeInterval(seconds)) : std::nullopt;
    error = accessibility::success;
  }
  journal_.add(accessibilityPart, "timeout ", target.name, ": ", seconds, " s -> ", error);
  return error;
}

AccessibilityError SimulatedAccessibilityTree::setAttributeValue(
    const AccessibilityElementRef& element, std::string_view attribute, bool value) {
  const Target target = resolve(element);
  AccessibilityError error = reach(target);
  if (error == accessibility::success) {
    error = target.isApplication ? writeStatus_ : accessibility::attributeUnsupported;
  }
  if (error == accessibility::success) {
    find(target.processIdentifier)->written[std::string(attribute)] = value;
  }
  journal_.add(accessibilityPart, "set ", target.name, ' ', attribute, ": ", value, " -> ", error);
  return error;
}

AccessibilityError SimulatedAccessibilityTree::copyAttributeValue(
    const AccessibilityElementRef& element, std::string_view attribute, AttributeValue& value) {
  const Target target = resolve(element);
  const AccessibilityError error = read(target, attribute, value);
  if (error != accessibility::success && outputOfFailedReads_) value = *outputOfFailedReads_;
  journal_.add(accessibilityPart, "copy ", target.name, ' ', attribute,
               error == accessibility::success ? ": " + valueText(value) : "", " -> ", error);
  return error;
}

AccessibilityError SimulatedAccessibilityTree::read(const Target& target,
                                                    std::string_view attribute,
                                                    AttributeValue& value) {
  if (const AccessibilityError error = reach(target); error != accessibility::success) return error;
  const auto& attributes = target.element->attributes;
  if (const auto found = attributes.find(attribute); found != attributes.end()) {
    return copy(found->second, value);
  }
  if (attribute != "AXChildren") return accessibility::attributeUnsupported;
  const auto& children = target.element->children;
  value = std::vector<AccessibilityElementRef>(children.begin(), children.end());
  return accessibility::success;
}

AccessibilityError SimulatedAccessibilityTree::performAction(const AccessibilityElementRef& element,
                                                             std::string_view action) {
  const Target target = resolve(element);
  AccessibilityError error = reach(target);
  if (error == accessibility::success) {
    // Copied, because the action may replace itself.
    const auto perform = target.element->perform;
    error = perform ? perform(action) : accessibility::actionUnsupported;
  }
  journal_.add(accessibilityPart, "perform ", target.name, ' ', action, " -> ", error);
  return error;
}

}  // namespace hushbox
