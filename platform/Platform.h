#pragma once

#include <functional>

namespace hushbox {

class AccessibilityTree;
class AudioHardware;
class ChildProcessFactory;
class Locale;
class LoginItem;
class MainLoop;
class MenuBar;
class UnifiedLog;
class UserNotifications;
class Workspace;

/// The operating system, one interface a member. Owned by whoever put it in scope.
struct Platform {
  MainLoop& mainLoop;
  AudioHardware& audio;
  AccessibilityTree& accessibility;
  Workspace& workspace;
  ChildProcessFactory& childProcesses;
  UserNotifications& notifications;
  LoginItem& loginItem;
  MenuBar& menuBar;
  UnifiedLog& log;
  Locale& locale;
};

/// The platform in scope. Called inside an operation, on any thread, and never stored. Without one
/// in scope it ends the program with a sentence on standard error: there is no default.
const Platform& platform();

/// Puts a platform in scope for its own lifetime; the only way to do so, and one at a time (a
/// second one ends the program with a sentence). Main thread only; whatever other threads do with
/// the platform must have ended before the scope does.
class PlatformScope {
 public:
  explicit PlatformScope(const Platform& platform);
  ~PlatformScope();
  PlatformScope(const PlatformScope&) = delete;
  PlatformScope& operator=(const PlatformScope&) = delete;

  /// Runs `action` when the scope that is open now closes, for what was kept from its platform
  /// outside any object.
  static void atClose(std::function<void()> action);
};

}  // namespace hushbox
