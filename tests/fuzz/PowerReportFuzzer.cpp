#include <algorithm>
#include <string>

#include "battery/BatteryReading.h"
#include "platform/linux/power-report/AccessoryBattery.h"
#include "support/Text.h"
#include "tests/fuzz/FuzzedValue.h"
#include "tests/fuzz/Fuzzing.h"

namespace {

using namespace hushbox;

void check(const AccessoryBattery& battery) {
  HUSHBOX_REQUIRE(battery.level >= 0 && battery.level <= 100);
  const std::string line = battery.reportLine();
  HUSHBOX_REQUIRE(text::isValidUtf8(line));
  HUSHBOX_REQUIRE(line.ends_with('\n'));
  HUSHBOX_REQUIRE(std::count(line.begin(), line.end(), '\n') == 1);
  HUSHBOX_REQUIRE(std::count(line.begin(), line.end(), '%') == 1);
  // What the program reads of it.
  const auto reading = parseBatteryReading(line, "");
  HUSHBOX_REQUIRE(reading && reading->level == battery.level);
  HUSHBOX_REQUIRE(reading->charging ==
                  (battery.state == 1 || battery.state == 4 || battery.state == 5));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  // Half of the inputs are whole sets of properties, and half the values of a set that counts.
  if (input.takeByte() % 2 == 0) {
    const VariantPointer properties = fuzzedValue("a{sv}", input.rest());
    if (const auto battery = AccessoryBattery::fromProperties(properties.get())) check(*battery);
    return 0;
  }
  const auto state = input.takeByte();
  const double percentage = input.takeByte() / 2.0;
  const std::string vendor = text::decodeUtf8Lossy(input.takeText());
  const std::string model = text::decodeUtf8Lossy(input.takeText());
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
  const auto add = [&builder](const char* name, GVariant* value) {
    g_variant_builder_add(&builder, "{sv}", name, value);
  };
  add("Percentage", g_variant_new_double(percentage));
  add("PowerSupply", g_variant_new_boolean(FALSE));
  add("IsPresent", g_variant_new_boolean(TRUE));
  add("State", g_variant_new_uint32(state));
  add("Vendor", g_variant_new_string(vendor.c_str()));
  add("Model", g_variant_new_string(model.c_str()));
  const VariantPointer properties(g_variant_ref_sink(g_variant_builder_end(&builder)));
  if (const auto battery = AccessoryBattery::fromProperties(properties.get())) check(*battery);
  return 0;
}
