#include "platform/linux/bus/SessionBusConnection.h"

#include <optional>
#include <thread>
#include <utility>

#include "platform/linux/bus/AsyncCallback.h"
#include "platform/linux/bus/IterateContext.h"
#include "platform/linux/bus/SessionBusAddress.h"
#include "platform/linux/bus/ThreadDefaultContext.h"

namespace hushbox {
namespace {

constexpr auto busFlags = static_cast<GDBusConnectionFlags>(
    G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

std::string textOf(const GError* error) {
  return error ? error->message : "the connection was closed";
}

/// Sends what is queued and closes the connection. A bus that reads nothing within the timeout
/// keeps the connection open for as long as the process runs.
void flushAndClose(GDBusConnection* connection, std::chrono::milliseconds timeout) {
  // A context of its own, so that no other callback runs meanwhile.
  GMainContext* const context = g_main_context_new();
  {
    const ThreadDefaultContext scope(context);
    const auto closed = std::make_shared<bool>(false);
    const auto close = [connection, closed](GObject*, GAsyncResult*) {
      g_dbus_connection_close(
          connection, nullptr, AsyncCallback::invoke,
          AsyncCallback::data([closed](GObject*, GAsyncResult*) { *closed = true; }));
    };
    g_dbus_connection_flush(connection, nullptr, AsyncCallback::invoke, AsyncCallback::data(close));
    const gint64 deadline = momentAfter(timeout);
    iterateContext(
        context, [&] { return *closed; }, [&] { return deadline; });
    // GLib's worker thread marks the connection as closed a moment later. Until then, g_bus_get()
    // still returns it to the next caller.
    while (*closed && !g_dbus_connection_is_closed(connection) && g_get_monotonic_time() < deadline)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  g_main_context_unref(context);
}

}  // namespace

SessionBusConnection::SessionBusConnection() : cancellable_(g_cancellable_new()) {}

SessionBusConnection::~SessionBusConnection() {
  g_cancellable_cancel(cancellable_.get());
  if (retryTimer_) g_source_remove(retryTimer_);
  if (!connection_) return;
  g_signal_handlers_disconnect_by_data(connection_.get(), this);
  flushAndClose(connection_.get(), closeTimeout);
}

Subscription SessionBusConnection::observe(Connected connected, Lost lost) {
  using Holder = std::shared_ptr<const Observer>;
  const auto observer =
      std::make_shared<const Observer>(Observer{std::move(connected), std::move(lost)});
  observers_.push_back(observer);
  if (connection_) observer->connected(connection_.get());
  return Subscription(
      {new Holder(observer), [](void* holder) { delete static_cast<Holder*>(holder); }});
}

bool SessionBusConnection::connect() {
  if (connecting_ || connection_) return true;
  if (retryTimer_) return false;
  connecting_ = true;
  const std::string address = sessionBusAddress();
  // Without an address GLib would start a bus; this only reports that there is none.
  if (address.empty()) {
    connectPrivately(address);
    return true;
  }
  const auto finish =
      lifetime_.weakly([this, address](ConnectionPointer& connection, const GError* error) {
        if (connection && g_dbus_connection_is_closed(connection.get()))
          connectPrivately(address);
        else
          finishConnecting(std::move(connection), error);
      });
  // Not cancellable: GLib would make the shared connection all the same, and it ends the process
  // with the bus until that is switched off.
  g_bus_get(G_BUS_TYPE_SESSION, nullptr, AsyncCallback::invoke,
            AsyncCallback::data([finish](GObject*, GAsyncResult* result) {
              GError* error = nullptr;
              ConnectionPointer connection(g_bus_get_finish(result, &error));
              const ErrorPointer owned(error);
              if (connection) g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
              finish(connection, error);
            }));
  return true;
}

void SessionBusConnection::connectPrivately(const std::string& address) {
  g_dbus_connection_new_for_address(
      address.c_str(), busFlags, nullptr, cancellable_.get(), AsyncCallback::invoke,
      AsyncCallback::data([finish = lifetime_.weakly([this](GAsyncResult* result) {
        GError* error = nullptr;
        ConnectionPointer connection(g_dbus_connection_new_for_address_finish(result, &error));
        finishConnecting(std::move(connection), ErrorPointer(error).get());
      })](GObject*, GAsyncResult* result) { finish(result); }));
}

void SessionBusConnection::finishConnecting(ConnectionPointer connection, const GError* error) {
  connecting_ = false;
  if (!connection) return disconnect(textOf(error));
  connection_ = std::move(connection);
  g_signal_connect(connection_.get(), "closed", G_CALLBACK(closedSignal), this);
  for (auto& [call, replied] : std::exchange(waitingCalls_, {})) start(call, std::move(replied));
  for (const auto& observer : observers()) observer->connected(connection_.get());
}

gboolean SessionBusConnection::retry(gpointer self) {
  auto& bus = *static_cast<SessionBusConnection*>(self);
  bus.retryTimer_ = 0;
  bus.connect();
  return G_SOURCE_REMOVE;
}

void SessionBusConnection::closedSignal(GDBusConnection*, gboolean, GError* error, gpointer self) {
  static_cast<SessionBusConnection*>(self)->disconnect(textOf(error));
}

void SessionBusConnection::disconnect(const std::string& reason) {
  if (connection_) g_signal_handlers_disconnect_by_data(connection_.get(), this);
  connection_.reset();
  lastReason_ = reason;
  if (!retryTimer_)
    retryTimer_ = g_timeout_add_seconds(static_cast<guint>(retryInterval.count()), retry, this);
  for (const auto& waiting : std::exchange(waitingCalls_, {}))
    waiting.replied({BusReply::Outcome::unreachable, nullptr, reason});
  for (const auto& observer : observers()) observer->lost(reason);
}

void SessionBusConnection::call(BusCall call, Replied replied) {
  if (connection_) return start(call, std::move(replied));
  if (connect())
    waitingCalls_.push_back({std::move(call), std::move(replied)});
  else
    replied({BusReply::Outcome::unreachable, nullptr, lastReason_});
}

BusReply SessionBusConnection::callAndWait(BusCall call) {
  const gint64 deadline = momentAfter(call.timeout);
  // Shared, since the reply may come after the wait.
  const auto result = std::make_shared<std::optional<BusReply>>();
  this->call(std::move(call), [result](BusReply reply) { *result = std::move(reply); });
  iterateContext(
      nullptr, [&] { return result->has_value(); }, [&] { return deadline; });
  return result->has_value() ? std::move(**result) : BusReply{};
}

void SessionBusConnection::start(const BusCall& call, Replied replied) const {
  const auto flags = call.startsOwner ? G_DBUS_CALL_FLAGS_NONE : G_DBUS_CALL_FLAGS_NO_AUTO_START;
  g_dbus_connection_call(
      connection_.get(), call.object.busName.c_str(), call.object.path.c_str(), call.interface,
      call.method, call.arguments.get(), G_VARIANT_TYPE(call.replyType), flags,
      static_cast<int>(call.timeout.count()), nullptr, AsyncCallback::invoke,
      AsyncCallback::data([replied = std::move(replied)](GObject* source, GAsyncResult* result) {
        GError* error = nullptr;
        VariantPointer value(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
        replied(BusReply::of(std::move(value), ErrorPointer(error).get()));
      }));
}

std::vector<std::shared_ptr<const SessionBusConnection::Observer>>
SessionBusConnection::observers() {
  std::vector<std::shared_ptr<const Observer>> present;
  for (const auto& observer : observers_)
    if (auto held = observer.lock()) present.push_back(std::move(held));
  observers_.assign(present.begin(), present.end());
  return present;
}

}  // namespace hushbox
