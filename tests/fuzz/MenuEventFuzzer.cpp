#include <gio/gio.h>
#include <sys/socket.h>

#include <optional>
#include <string>
#include <utility>

#include "platform/linux/menubar/DBusMenu.h"
#include "tests/fuzz/FuzzedValue.h"
#include "tests/fuzz/Fuzzing.h"

namespace {

using namespace hushbox;

/// One end of a connection between two sockets, without authentication.
GDBusConnection* connectionOn(int descriptor) {
  GSocket* const socket = g_socket_new_from_fd(descriptor, nullptr);
  auto* const stream = G_IO_STREAM(g_socket_connection_factory_create_connection(socket));
  return g_dbus_connection_new_sync(stream, nullptr, G_DBUS_CONNECTION_FLAGS_NONE, nullptr, nullptr,
                                    nullptr);
}

/// The program's menu, and a panel that calls it.
class Desk {
 public:
  Desk() {
    int sockets[2];
    HUSHBOX_REQUIRE(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) == 0);
    program_ = connectionOn(sockets[0]);
    panel_ = connectionOn(sockets[1]);
    HUSHBOX_REQUIRE(program_ && panel_);
    menu_.exportOn(program_);
  }

  void setRows(unsigned shape) {
    if (std::exchange(shape_, shape) == shape) return;
    std::vector<MenuRow> rows;
    for (unsigned i = 0; i < 8; ++i) {
      if ((shape >> i & 1U) == 0) continue;
      MenuRow row;
      row.kind = i % 3 == 0 ? MenuRow::Kind::toggle : MenuRow::Kind::button;
      row.text = "Row " + std::to_string(i);
      row.enabled = i != 5;
      row.action = [this] { ++chosen_; };
      rows.push_back(std::move(row));
    }
    menu_.setRows(std::move(rows));
  }

  /// Waits for the reply, which must arrive whatever the arguments are.
  void call(const char* method, GVariant* arguments) {
    bool replied = false;
    g_dbus_connection_call(
        panel_, nullptr, DBusMenu::path, "com.canonical.dbusmenu", method, arguments, nullptr,
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
        [](GObject* connection, GAsyncResult* result, gpointer flag) {
          GVariant* const value =
              g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, nullptr);
          if (value) g_variant_unref(value);
          *static_cast<bool*>(flag) = true;
        },
        &replied);
    while (!replied) g_main_context_iteration(nullptr, TRUE);
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
  }

  int chosen() const { return chosen_; }

 private:
  GDBusConnection* program_ = nullptr;
  GDBusConnection* panel_ = nullptr;
  DBusMenu menu_;
  unsigned shape_ = 0;
  int chosen_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static auto& desk = *new Desk;
  struct Method {
    const char* name;
    const char* type;
  };
  constexpr Method methods[] = {{"Event", "(isvu)"},     {"EventGroup", "(a(isvu))"},
                                {"AboutToShow", "(i)"},  {"AboutToShowGroup", "(ai)"},
                                {"GetLayout", "(iias)"}, {"GetGroupProperties", "(aias)"},
                                {"GetProperty", "(is)"}, {"Event", "(v)"},
                                {"NoSuchMethod", "v"},   {"GetLayout", "()"}};
  FuzzInput input(data, size);
  desk.setRows(input.takeByte());
  const Method& method = methods[input.takeByte() % std::size(methods)];
  VariantPointer arguments = fuzzedValue(method.type, input.rest());
  if (!g_variant_is_of_type(arguments.get(), G_VARIANT_TYPE_TUPLE)) {
    GVariant* const only = arguments.get();
    arguments = VariantPointer(g_variant_ref_sink(g_variant_new_tuple(&only, 1)));
  }
  const bool isEvent = std::string(method.name).starts_with("Event");
  const int before = desk.chosen();
  desk.call(method.name, arguments.get());
  HUSHBOX_REQUIRE(isEvent || desk.chosen() == before);
  return 0;
}
