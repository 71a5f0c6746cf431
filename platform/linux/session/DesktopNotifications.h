#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "platform/MainLoop.h"
#include "platform/UserNotifications.h"
#include "platform/linux/bus/SessionBusConnection.h"
#include "support/Lifetime.h"

namespace hushbox {

/// The desktop's notification daemon (org.freedesktop.Notifications on the session bus), which the
/// bus starts on demand where one is installed.
///
/// Nothing waits for the daemon: without one, the completion gets an error, at the latest when each
/// of up to two calls has timed out. Completions run on the main thread, and not after this has
/// been destroyed. Constructed and destroyed on the main thread.
class DesktopNotifications final : public UserNotifications {
 public:
  /// Per call. A daemon that is started while the session is loading takes seconds.
  static constexpr std::chrono::milliseconds callTimeout{10'000};

  /// `loop` and `bus` must outlive this.
  DesktopNotifications(MainLoop& loop, SessionBusConnection& bus) : loop_(loop), bus_(bus) {}

  /// Linux desktops do not ask for permission: granted when a daemon answers.
  void requestAuthorization(
      unsigned options,
      std::function<void(bool granted, std::optional<std::string> error)> completion) override;

  /// Each request shows a notification of its own: identifiers are taken to be unique. Control
  /// characters are escaped, except line feeds in the body; markup is shown as text.
  void add(NotificationRequest request,
           std::function<void(std::optional<std::string> error)> completion) override;

 private:
  using Replied = SessionBusConnection::Replied;

  void call(const char* method, VariantPointer arguments, const char* replyType, Replied replied);
  void getCapabilities(Replied replied);
  void notify(const NotificationRequest& request, bool markup,
              std::function<void(std::optional<std::string> error)> completion);

  MainLoop& loop_;
  SessionBusConnection& bus_;
  Lifetime lifetime_;
};

}  // namespace hushbox
