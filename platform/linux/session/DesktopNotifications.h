#pragma once

#include <gio/gio.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/MainLoop.h"
#include "platform/UserNotifications.h"
#include "platform/linux/bus/SessionBusConnection.h"
#include "support/Lifetime.h"

namespace hushbox {

/// The desktop's notification daemon (org.freedesktop.Notifications on the session bus), which the
/// bus starts on demand where it knows one.
///
/// Nothing waits for the daemon: its absence or silence costs an error in the completion, at the
/// latest `timeoutMilliseconds` after each of up to two calls to it. Completions run on the main
/// thread, and no more once this is gone. Made and destroyed on the main thread.
class DesktopNotifications final : public UserNotifications {
 public:
  /// A daemon that is being started while the session is still loading takes seconds.
  static constexpr int timeoutMilliseconds = 10'000;

  /// `loop` must outlive this.
  explicit DesktopNotifications(MainLoop& loop);

  /// There is nobody to be asked for permission here: granted when a daemon answers.
  void requestAuthorization(
      unsigned options,
      std::function<void(bool granted, std::optional<std::string> error)> completion) override;

  /// Each request is a notification of its own: identifiers are taken to be fresh. Control
  /// characters are spelt out, except line feeds in the body; markup in the texts shows as it is
  /// written.
  void add(NotificationRequest request,
           std::function<void(std::optional<std::string> error)> completion) override;

 private:
  using Error = std::optional<std::string>;
  using Answer = std::function<void(GVariant* answer, Error error)>;

  /// Goes on with `step` when there is a connection, or with the reason why there is none.
  void connected(std::function<void(Error error)> step);
  void finishConnecting(GDBusConnection* connection, const Error& error);
  /// Takes over floating arguments. `answer` is a tuple of the given type, or null with an error.
  void call(const char* method, GVariant* arguments, const char* answerType, Answer answer);
  void askForCapabilities(Answer answer);
  void notify(const NotificationRequest& request, bool markup,
              std::function<void(Error error)> completion);

  MainLoop& loop_;
  GDBusConnection* connection_ = nullptr;
  Error lastReason_;
  std::vector<std::function<void(Error error)>> waiting_;
  SessionBusConnection bus_;
  Lifetime lifetime_;
};

}  // namespace hushbox
