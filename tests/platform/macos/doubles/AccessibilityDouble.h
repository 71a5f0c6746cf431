#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace hushbox::doubles {

struct AXNode;
using AXNodeRef = std::shared_ptr<AXNode>;

/// A value of a type that the adapters do not expect. `nothing` is success without a value.
enum class AXStrange {
  number,
  boolean,
  null,
  nestedList,
  emptyList,
  stringList,
  loneSurrogate,
  nothing
};
using AXValue = std::variant<std::string, AXStrange>;

/// An element of an application's user interface. AXChildren returns `children`.
struct AXNode {
  std::map<std::string, AXValue> attributes;
  std::vector<AXNodeRef> children;
  /// AXChildren also contains a number, a string, a null and a list.
  bool strangeChildren = false;
  bool gone = false;
  /// Performs an action and returns its status. If empty, no action is supported.
  std::function<std::int32_t(const std::string& action)> perform;
  /// Called before each read of an attribute, so that a change may show late.
  std::function<void()> beforeRead;
  /// The attributes that were set. Setting one returns "unsupported" although it takes effect.
  std::map<std::string, bool> written;
  /// Has no children until AXManualAccessibility was set to true on the application.
  bool asleep = false;
};

/// The Accessibility permission; initially granted.
extern bool trusted;
/// The prompt option of each call of AXIsProcessTrustedWithOptions.
extern std::vector<bool> prompts;

/// Returns the application with this process identifier; creates it on the first call.
AXNodeRef& axApplication(std::int32_t pid);
/// Quits the application, which invalidates its elements.
void axQuit(std::int32_t pid);

/// While true, every call blocks for its timeout and then fails with kAXErrorCannotComplete.
extern bool axFrozen;
/// The timeouts that calls to a frozen application waited, in seconds.
extern std::vector<float> axWaits;

/// Returns how many elements the adapters hold.
long axElements();

/// If not 0, AXUIElementSetMessagingTimeout does nothing and returns this.
extern std::int32_t axTimeoutStatus;

/// The applications that NSWorkspace and NSRunningApplication list.
struct App {
  /// nullopt for a program without a bundle.
  std::string bundle;
  std::int32_t pid;
  bool finishedLaunching = true;
  bool terminated = false;
};
extern std::vector<App> apps;

void resetAccessibility();

}  // namespace hushbox::doubles
