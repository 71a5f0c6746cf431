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

/// The interfaces to the operating system. Everything referred to must outlive the PlatformScope.
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

/// Returns the platform in scope. Call it inside an operation, on any thread, and do not store the
/// result. There is no default: without a platform in scope it aborts with a message on standard
/// error.
const Platform& platform();

/// Puts a platform in scope for its own lifetime. Only one may exist at a time; a second one aborts
/// with a message. Main thread only. Other threads must have finished using the platform before it
/// is destroyed.
class PlatformScope {
 public:
  explicit PlatformScope(const Platform& platform);
  ~PlatformScope();
  PlatformScope(const PlatformScope&) = delete;
  PlatformScope& operator=(const PlatformScope&) = delete;

  /// Runs `action` when the current scope closes, with the platform still in scope. For
  /// process-wide state that refers to the platform.
  static void atClose(std::function<void()> action);
};

}  // namespace hushbox
