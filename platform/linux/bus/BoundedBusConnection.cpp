#include "platform/linux/bus/BoundedBusConnection.h"

#include <algorithm>
#include <utility>

#include "platform/linux/bus/AsyncCallback.h"
#include "platform/linux/bus/IterateContext.h"
#include "platform/linux/bus/ThreadDefaultContext.h"

namespace hushbox {

namespace {

using std::chrono::milliseconds;

constexpr auto busFlags = static_cast<GDBusConnectionFlags>(
    G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

}  // namespace

/// The calls of one ask(); destroyed when it returns.
struct BoundedBusConnection::Batch {
  std::vector<BusReply> replies;
  /// When each call times out; 0 once it has its reply.
  std::vector<gint64> waits;

  bool isComplete() const {
    return std::all_of(waits.begin(), waits.end(), [](gint64 wait) { return wait == 0; });
  }
  gint64 lastWait() const { return *std::max_element(waits.begin(), waits.end()); }
};

/// The calls without a reply yet. They may outlive the connection and the object.
struct BoundedBusConnection::PendingCalls {
  std::size_t total = 0;
  /// Per peer, the number of calls that have timed out and still have no reply.
  std::map<std::string, std::size_t> overdue;
};

BoundedBusConnection::BoundedBusConnection()
    : context_(g_main_context_new()), pending_(std::make_shared<PendingCalls>()) {}

BoundedBusConnection::~BoundedBusConnection() {
  close();
  g_main_context_unref(context_);
}

bool BoundedBusConnection::open(const std::string& address, milliseconds timeout) {
  close();
  struct Opening {
    ConnectionPointer connection;
    bool ended = false;
  };
  const auto opening = std::make_shared<Opening>();
  cancellable_.reset(g_cancellable_new());
  const ThreadDefaultContext scope(context_);
  g_dbus_connection_new_for_address(
      address.c_str(), busFlags, nullptr, cancellable_.get(), AsyncCallback::invoke,
      AsyncCallback::data([opening](GObject*, GAsyncResult* result) {
        opening->connection.reset(g_dbus_connection_new_for_address_finish(result, nullptr));
        opening->ended = true;
      }));
  const gint64 until = momentAfter(timeout);
  iterateContext(
      context_, [&] { return opening->ended; }, [&] { return until; });
  if (!opening->ended) g_cancellable_cancel(cancellable_.get());
  connection_ = std::move(opening->connection);
  if (!connection_) return false;
  g_dbus_connection_set_exit_on_close(connection_.get(), FALSE);
  return true;
}

bool BoundedBusConnection::reach(const std::string& busName, const std::string& address,
                                 std::int32_t process, milliseconds timeout) {
  if (!isOpen()) return false;
  const gint64 began = g_get_monotonic_time();
  auto direct = PeerConnection::open(address, process, timeout, context_);
  if (!direct) {
    lostTime_ += std::chrono::microseconds(g_get_monotonic_time() - began);
    return false;
  }
  direct_[busName] = std::move(direct);
  return true;
}

bool BoundedBusConnection::isOpen() const {
  return connection_ && !g_dbus_connection_is_closed(connection_.get());
}

void BoundedBusConnection::close() {
  if (cancellable_) g_cancellable_cancel(cancellable_.get());
  for (const guint subscription : std::exchange(subscriptions_, {}))
    g_dbus_connection_signal_unsubscribe(connection_.get(), subscription);
  direct_.clear();
  // Cancelled calls finish at once, but only when the context is iterated.
  const gint64 until = momentAfter(milliseconds{1000});
  iterateContext(
      context_, [this] { return pending_->total == 0; }, [&] { return until; });
  dispatch();
  pending_->overdue.clear();
  if (connection_) g_dbus_connection_close(connection_.get(), nullptr, nullptr, nullptr);
  connection_.reset();
}

std::vector<BusReply> BoundedBusConnection::ask(std::vector<BusCall> calls) {
  if (calls.empty()) return {};
  ++roundTripCount_;
  const auto batch = std::make_shared<Batch>();
  batch->replies.resize(calls.size());
  batch->waits.resize(calls.size());
  const gint64 began = g_get_monotonic_time();
  const ThreadDefaultContext scope(context_);
  for (const auto& [busName, direct] : direct_) direct->abandon(abandonTimeout);
  for (std::size_t i = 0; i < calls.size(); ++i) start(calls[i], batch, i);
  for (const auto& [busName, direct] : direct_) direct->flush(calls.front().timeout);
  iterateContext(
      context_, [&] { return batch->isComplete(); }, [&] { return batch->lastWait(); });
  for (std::size_t i = 0; i < calls.size(); ++i)
    if (batch->waits[i] != 0) ++pending_->overdue[calls[i].object.busName];
  if (!batch->isComplete()) lostTime_ += std::chrono::microseconds(g_get_monotonic_time() - began);
  return std::move(batch->replies);
}

void BoundedBusConnection::start(const BusCall& call, const std::shared_ptr<Batch>& batch,
                                 std::size_t index) {
  if (!isOpen() || !g_dbus_is_name(call.object.busName.c_str()) ||
      !g_variant_is_object_path(call.object.path.c_str())) {
    batch->replies[index].outcome = BusReply::Outcome::unreachable;
    return;
  }
  if (hasTimedOut(call.object.busName)) return;
  batch->waits[index] = momentAfter(call.timeout);
  ++callCount_;
  ++pending_->total;
  auto replied = [waiting = std::weak_ptr(batch), index, pending = pending_,
                  peer = call.object.busName](VariantPointer value, const GError* error) {
    --pending->total;
    if (const auto batch = waiting.lock()) {
      batch->replies[index] = BusReply::of(std::move(value), error);
      batch->waits[index] = 0;
    } else if (const auto overdue = pending->overdue.find(peer);
               overdue != pending->overdue.end() && --overdue->second == 0) {
      pending->overdue.erase(overdue);
    }
  };
  if (PeerConnection* const direct = directTo(call.object.busName)) {
    direct->call(call, std::move(replied));
    return;
  }
  auto finished = [replied = std::move(replied)](GObject* source, GAsyncResult* result) {
    GError* failure = nullptr;
    VariantPointer value(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &failure));
    const ErrorPointer error(failure);
    replied(std::move(value), error.get());
  };
  g_dbus_connection_call(connection_.get(), call.object.busName.c_str(), call.object.path.c_str(),
                         call.interface, call.method, call.arguments.get(),
                         G_VARIANT_TYPE(call.replyType), G_DBUS_CALL_FLAGS_NO_AUTO_START,
                         static_cast<int>(abandonTimeout.count()), cancellable_.get(),
                         AsyncCallback::invoke, AsyncCallback::data(std::move(finished)));
}

PeerConnection* BoundedBusConnection::directTo(const std::string& busName) {
  const auto direct = direct_.find(busName);
  if (direct == direct_.end()) return nullptr;
  if (direct->second->isOpen()) return direct->second.get();
  direct_.erase(direct);
  return nullptr;
}

void BoundedBusConnection::send(const BusCall& call) {
  if (!isOpen()) return;
  const ThreadDefaultContext scope(context_);
  ++callCount_;
  g_dbus_connection_call(connection_.get(), call.object.busName.c_str(), call.object.path.c_str(),
                         call.interface, call.method, call.arguments.get(), nullptr,
                         G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
}

bool BoundedBusConnection::post(const BusCall& call) {
  if (!isOpen() || hasTimedOut(call.object.busName)) return false;
  const ThreadDefaultContext scope(context_);
  ++callCount_;
  if (PeerConnection* const direct = directTo(call.object.busName)) {
    direct->call(call, [](const VariantPointer&, const GError*) {});
    direct->flush(call.timeout);
    return true;
  }
  g_dbus_connection_call(connection_.get(), call.object.busName.c_str(), call.object.path.c_str(),
                         call.interface, call.method, call.arguments.get(), nullptr,
                         G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
  return true;
}

bool BoundedBusConnection::hasTimedOut(const std::string& busName) const {
  return pending_->overdue.count(busName) != 0;
}

guint BoundedBusConnection::subscribe(const char* sender, const char* interface, const char* member,
                                      const char* argument0,
                                      std::function<void(GVariant*)> handler) {
  using Handler = std::function<void(GVariant*)>;
  const ThreadDefaultContext scope(context_);
  subscriptions_.push_back(g_dbus_connection_signal_subscribe(
      connection_.get(), sender, interface, member, nullptr, argument0, G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant* arguments,
         gpointer data) { (*static_cast<Handler*>(data))(arguments); },
      new Handler(std::move(handler)), [](gpointer data) { delete static_cast<Handler*>(data); }));
  return subscriptions_.back();
}

void BoundedBusConnection::unsubscribe(guint subscription) {
  if (std::erase(subscriptions_, subscription) == 0) return;
  const ThreadDefaultContext scope(context_);
  g_dbus_connection_signal_unsubscribe(connection_.get(), subscription);
}

void BoundedBusConnection::dispatch() {
  constexpr int maxDispatches = 1000;
  const ThreadDefaultContext scope(context_);
  for (int i = 0; i < maxDispatches && g_main_context_iteration(context_, FALSE); ++i) continue;
}

}  // namespace hushbox
