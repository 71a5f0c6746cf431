#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace hushbox {

/// The status of an accessibility call. Only 0 means success.
using AccessibilityError = std::int32_t;

namespace accessibility {

// The values of AXError in macOS's AXError.h.
inline constexpr AccessibilityError success = 0;
inline constexpr AccessibilityError failure = -25200;
inline constexpr AccessibilityError invalidElement = -25202;
inline constexpr AccessibilityError cannotComplete = -25204;
inline constexpr AccessibilityError attributeUnsupported = -25205;
inline constexpr AccessibilityError actionUnsupported = -25206;
inline constexpr AccessibilityError apiDisabled = -25211;
inline constexpr AccessibilityError noValue = -25212;

}  // namespace accessibility

/// An element of another application's user interface; opaque to the core. A reference to it keeps
/// the platform's handle alive, not the control on the screen, which may have been closed.
class AccessibilityElement {
 public:
  virtual ~AccessibilityElement() = default;
};

using AccessibilityElementRef = std::shared_ptr<const AccessibilityElement>;

/// A value that is neither text nor a list of elements; the core does not use it.
struct OtherAttributeValue {
  friend bool operator==(OtherAttributeValue, OtherAttributeValue) = default;
};

/// The value of an attribute; `std::monostate` when the call succeeded without a value.
using AttributeValue = std::variant<std::monostate, std::string,
                                    std::vector<AccessibilityElementRef>, OtherAttributeValue>;

/// The user interfaces of other applications. Main thread only.
///
/// A call that reaches another application blocks until it replies or the messaging timeout passes;
/// then the call returns `cannotComplete`. An adapter may fail further calls to an application that
/// has timed out at once, until it replies again. Null and an element made by another tree are an
/// `invalidElement`. Reads, writes and actions fail on an element whose application has exited.
class AccessibilityTree {
 public:
  virtual ~AccessibilityTree() = default;

  /// Whether this process may read and control other applications.
  virtual bool isProcessTrusted() = 0;

  /// The same. With `prompt`, if permission is missing, also has the system ask the user for it;
  /// the result is the state before the user's answer.
  virtual bool isProcessTrustedWithOptions(bool prompt) = 0;

  /// Returns the element of the application with that process identifier. Never null: calls on the
  /// element fail if no such application runs.
  virtual AccessibilityElementRef createApplication(std::int32_t processIdentifier) = 0;

  /// Limits each later call to `element`'s application, through whichever of its elements, to
  /// `seconds`, which must be above zero. Does not contact the application.
  virtual AccessibilityError setMessagingTimeout(const AccessibilityElementRef& element,
                                                 float seconds) = 0;

  /// Writes a Boolean attribute. Returns `attributeUnsupported` if the element does not have it or
  /// the platform has no such setting.
  virtual AccessibilityError setAttributeValue(const AccessibilityElementRef& element,
                                               std::string_view attribute, bool value) = 0;

  /// Reads an attribute. `value` is valid only if the call returns 0, and may be empty even then.
  virtual AccessibilityError copyAttributeValue(const AccessibilityElementRef& element,
                                                std::string_view attribute,
                                                AttributeValue& value) = 0;

  /// Performs an action such as "AXPress". 0 means that the application accepted the action. Waits
  /// a short time for the effect to show, such as the button's new label; it may still show later.
  virtual AccessibilityError performAction(const AccessibilityElementRef& element,
                                           std::string_view action) = 0;
};

}  // namespace hushbox
