#include <iterator>
#include <string>
#include <utility>

#include "platform/linux/menubar/DBusMenu.h"
#include "tests/fuzz/FuzzedValue.h"
#include "tests/fuzz/Fuzzing.h"

namespace {

using namespace hushbox;

struct Method {
  const char* name;
  /// Of the arguments and of the results; null for a method without results.
  const char *takes, *returns;
};

constexpr Method methods[] = {{"Event", "(isvu)", nullptr},
                              {"EventGroup", "(a(isvu))", "(ai)"},
                              {"AboutToShow", "(i)", "(b)"},
                              {"AboutToShowGroup", "(ai)", "(aiai)"},
                              {"GetLayout", "(iias)", "(u(ia{sv}av))"},
                              {"GetGroupProperties", "(aias)", "(a(ia{sv}))"},
                              {"GetProperty", "(is)", "(v)"}};

/// Shows the rows whose bit is set.
void setRows(DBusMenu& menu, unsigned shape) {
  static unsigned shown = 0;
  if (std::exchange(shown, shape) == shape) return;
  std::vector<MenuRow> rows;
  for (unsigned i = 0; i < 8; ++i) {
    if ((shape >> i & 1U) == 0) continue;
    MenuRow row;
    row.kind = i % 3 == 0 ? MenuRow::Kind::toggle : MenuRow::Kind::button;
    row.text = "Row " + std::to_string(i);
    row.enabled = i != 5;
    rows.push_back(std::move(row));
  }
  menu.setRows(std::move(rows));
}

bool hasItem(const DBusMenu& menu, std::int32_t id) {
  const VariantPointer arguments(g_variant_ref_sink(g_variant_new("(i)", id)));
  return menu.replyTo("AboutToShow", arguments.get()).error.empty();
}

}  // namespace

// The transport and what GDBus refuses have tests on a real bus.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static DBusMenu menu;
  FuzzInput input(data, size);
  setRows(menu, input.takeByte());
  const Method& method = methods[input.takeByte() % std::size(methods)];
  const VariantPointer arguments = fuzzedValue(method.takes, input.rest());
  const DBusMenu::Reply reply = menu.replyTo(method.name, arguments.get());

  HUSHBOX_REQUIRE(!reply.value || reply.error.empty());
  if (method.returns) {
    HUSHBOX_REQUIRE((reply.value != nullptr) == reply.error.empty());
    HUSHBOX_REQUIRE(!reply.value ||
                    g_variant_is_of_type(reply.value.get(), G_VARIANT_TYPE(method.returns)));
  } else {
    HUSHBOX_REQUIRE(!reply.value);
  }
  HUSHBOX_REQUIRE(reply.clicked.empty() || std::string(method.name).starts_with("Event"));
  for (const std::int32_t id : reply.clicked) HUSHBOX_REQUIRE(hasItem(menu, id));
  return 0;
}
