#include <string>

#include "platform/linux/accessibility/AtspiValue.h"
#include "platform/linux/accessibility/TeamsSigns.h"
#include "tests/fuzz/FuzzedValue.h"
#include "tests/fuzz/Fuzzing.h"

namespace {

using namespace hushbox;

void checkText(const std::string& text) {
  HUSHBOX_REQUIRE(text.size() <= atspi_value::maxTextBytes);
  teams_signs::isAddress(text);
  teams_signs::isTitle(text);
  teams_signs::isClientName(text);
  teams_signs::isMuteLabel(text);
}

void checkObject(const std::optional<BusObject>& object) {
  if (!object) return;
  HUSHBOX_REQUIRE(g_variant_is_object_path(object->path.c_str()));
  HUSHBOX_REQUIRE(object->path != "/org/a11y/atspi/null");
}

void checkNodes(GVariant* reply) {
  constexpr std::size_t maxCount = 10;
  const auto nodes = atspi_value::nodes(reply, maxCount);
  HUSHBOX_REQUIRE(nodes.size() <= maxCount);
  for (const std::string& node : nodes)
    HUSHBOX_REQUIRE(g_variant_is_object_path(("/" + node).c_str()));
}

void checkObjects(GVariant* reply) {
  constexpr std::size_t maxCount = 10;
  const auto all = atspi_value::objects(reply, {}, maxCount);
  HUSHBOX_REQUIRE(all.size() <= maxCount);
  for (const BusObject& object : all) checkObject(object);
  // Without an owner, no object is left out. A bus never names a program so.
  if (all.empty() || all[0].busName.empty()) return;
  for (const BusObject& own : atspi_value::objects(reply, all[0].busName, maxCount)) {
    HUSHBOX_REQUIRE(own.busName == all[0].busName);
  }
}

void checkDictionary(GVariant* dictionary) {
  for (const char* key : {"Name", "Description", "HelpText", "AccessibleId", "id", "DocURL"}) {
    checkText(atspi_value::text(dictionary, key));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const unsigned kind = input.takeByte() % 6;
  const char* const types[] = {"(v)", "(s)", "(a(so))", "(au)", "(a{ss})", "(a{sv})"};
  const VariantPointer reply = fuzzedValue(types[kind], input.rest());
  const VariantPointer inner(g_variant_get_child_value(reply.get(), 0));
  switch (kind) {
    case 0:
      checkText(atspi_value::text(reply.get()));
      checkObject(atspi_value::object(reply.get()));
      break;
    case 1:
      checkText(atspi_value::text(reply.get()));
      checkNodes(reply.get());
      break;
    case 2:
      checkObjects(reply.get());
      break;
    case 3:
      for (const std::uint32_t state : {0U, 24U, 31U, 32U, 63U, 64U, 127U, 0xFFFFFFFFU}) {
        atspi_value::hasState(reply.get(), state);
      }
      break;
    case 4:
      checkDictionary(inner.get());
      break;
    default:
      checkDictionary(inner.get());
      checkObject(atspi_value::object(reply.get(), "Parent"));
  }
  return 0;
}
