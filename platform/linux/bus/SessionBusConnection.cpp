#include "platform/linux/bus/SessionBusConnection.h"

#include <utility>

#include "platform/linux/bus/AsyncCallback.h"
#include "platform/linux/bus/SessionBusAddress.h"

namespace hushbox {
namespace {

std::string text(const ErrorPointer& error) {
  return error ? error->message : "the connection was closed";
}

}  // namespace

SessionBusConnection::SessionBusConnection(std::function<void(GDBusConnection*)> connected,
                                           std::function<void(const std::string&)> lost)
    : connected_(std::move(connected)), lost_(std::move(lost)), cancellable_(g_cancellable_new()) {}

SessionBusConnection::~SessionBusConnection() {
  g_cancellable_cancel(cancellable_.get());
  if (!connection_) return;
  g_signal_handlers_disconnect_by_data(connection_.get(), this);
  g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

bool SessionBusConnection::connect() {
  if (connecting_ || connection_) return true;
  if (g_get_monotonic_time() < restUntil_) return false;
  connecting_ = true;
  g_dbus_connection_new_for_address(
      sessionBusAddress().c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, cancellable_.get(), AsyncCallback::invoke,
      AsyncCallback::data([finish = lifetime_.weakly([this](GAsyncResult* result) {
        this->finish(result);
      })](GObject*, GAsyncResult* result) { finish(result); }));
  return true;
}

void SessionBusConnection::finish(GAsyncResult* result) {
  connecting_ = false;
  GError* error = nullptr;
  connection_.reset(g_dbus_connection_new_for_address_finish(result, &error));
  if (!connection_) return end(text(ErrorPointer(error)));
  g_dbus_connection_set_exit_on_close(connection_.get(), FALSE);
  g_signal_connect(connection_.get(), "closed", G_CALLBACK(closedSignal), this);
  connected_(connection_.get());
}

void SessionBusConnection::closedSignal(GDBusConnection*, gboolean, GError* error, gpointer self) {
  static_cast<SessionBusConnection*>(self)->end(
      text(ErrorPointer(error ? g_error_copy(error) : nullptr)));
}

void SessionBusConnection::end(const std::string& reason) {
  if (connection_) g_signal_handlers_disconnect_by_data(connection_.get(), this);
  connection_.reset();
  restUntil_ = g_get_monotonic_time() + restMicroseconds;
  lost_(reason);
}

}  // namespace hushbox
