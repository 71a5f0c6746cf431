#include "tests/linux/BusClient.h"

#include <utility>

namespace hushbox {

std::string BusClient::Answer::text() const {
  if (!value) return error;
  char* printed = g_variant_print(value.get(), FALSE);
  std::string text = printed;
  g_free(printed);
  return text;
}

BusClient::BusClient(const std::string& busAddress) : bus_(busAddress) {}

BusClient::~BusClient() {
  if (subscription_) g_dbus_connection_signal_unsubscribe(bus_.get(), subscription_);
}

BusClient::Answer BusClient::call(const std::string& name, const std::string& path,
                                  const std::string& interface, const std::string& method,
                                  GVariant* arguments) {
  struct Call {
    Answer answer;
    bool ended = false;
  } call;
  g_dbus_connection_call(
      bus_.get(), name.c_str(), path.c_str(), interface.c_str(), method.c_str(), arguments, nullptr,
      G_DBUS_CALL_FLAGS_NO_AUTO_START, static_cast<int>(rehearsal::patience.count()), nullptr,
      [](GObject* source, GAsyncResult* result, gpointer data) {
        auto* const ended = static_cast<Call*>(data);
        GError* error = nullptr;
        ended->answer.value.reset(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
        if (error) {
          char* remote = g_dbus_error_get_remote_error(error);
          ended->answer.error = remote ? remote : error->message;
          g_free(remote);
          g_error_free(error);
        }
        ended->ended = true;
      },
      &call);
  rehearsal::waitUntil([&] { return call.ended; }, 2 * rehearsal::patience, method);
  return std::move(call.answer);
}

BusClient::Answer BusClient::property(const std::string& name, const std::string& path,
                                      const std::string& interface, const std::string& property) {
  Answer answer = call(name, path, "org.freedesktop.DBus.Properties", "Get",
                       g_variant_new("(ss)", interface.c_str(), property.c_str()));
  if (!answer.value) return answer;
  GVariant* value = nullptr;
  g_variant_get(answer.value.get(), "(v)", &value);
  answer.value.reset(value);
  return answer;
}

void BusClient::listenTo(const std::string& sender) {
  if (subscription_) g_dbus_connection_signal_unsubscribe(bus_.get(), subscription_);
  sender_ = sender;
  subscription_ = g_dbus_connection_signal_subscribe(
      bus_.get(), sender.c_str(), nullptr, nullptr, nullptr, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
      [](GDBusConnection*, const char*, const char*, const char*, const char* signal,
         GVariant* arguments, gpointer self) {
        std::string text = signal;
        if (g_variant_n_children(arguments) > 0) {
          char* printed = g_variant_print(arguments, FALSE);
          text += std::string(" ") + printed;
          g_free(printed);
        }
        static_cast<BusClient*>(self)->signals_.push_back(text);
      },
      this, nullptr);
  takeSignals();
}

std::vector<std::string> BusClient::takeSignals() {
  // Through the sender itself: its answer comes after what it has sent before.
  call(sender_, "/", "org.freedesktop.DBus.Peer", "Ping");
  return std::exchange(signals_, {});
}

}  // namespace hushbox
