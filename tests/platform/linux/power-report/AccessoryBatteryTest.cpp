#include "platform/linux/power-report/AccessoryBattery.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {
namespace {

/// A speakerphone's properties from UPower, with changes in GVariant text, such as
/// "'State': <uint32 1>".
std::optional<AccessoryBattery> read(const std::string& changes) {
  GVariantDict properties;
  g_variant_dict_init(&properties, nullptr);
  g_variant_dict_insert(&properties, "Model", "s", "Jabra Speak2 75");
  g_variant_dict_insert(&properties, "Vendor", "s", "");
  g_variant_dict_insert(&properties, "PowerSupply", "b", FALSE);
  g_variant_dict_insert(&properties, "IsPresent", "b", TRUE);
  g_variant_dict_insert(&properties, "Percentage", "d", 62.0);
  g_variant_dict_insert(&properties, "State", "u", 2U);
  g_variant_dict_insert(&properties, "BatteryLevel", "u", 1U);
  const std::string text = "{" + changes + "}";
  const VariantPointer parsed(
      g_variant_parse(G_VARIANT_TYPE_VARDICT, text.c_str(), nullptr, nullptr, nullptr));
  EXPECT_TRUE(parsed) << text;
  GVariantIter each;
  g_variant_iter_init(&each, parsed.get());
  const char* name = nullptr;
  for (GVariant* value = nullptr; g_variant_iter_next(&each, "{&sv}", &name, &value);)
    g_variant_dict_insert_value(&properties, name, VariantPointer(value).get());
  const VariantPointer all(g_variant_ref_sink(g_variant_dict_end(&properties)));
  return AccessoryBattery::fromProperties(all.get());
}

std::string line(const std::string& changes) {
  const auto battery = read(changes);
  return battery ? battery->reportLine() : "";
}

TEST(AccessoryBattery, LineContainsNameLevelAndState) {
  EXPECT_EQ(line(""), " -Jabra Speak2 75\t62%; discharging; present: true\n");
}

TEST(AccessoryBattery, EachStateHasItsWord) {
  const char* words[] = {"unknown", "charging",    "discharging", "empty",
                         "charged", "AC attached", "discharging", "unknown"};
  for (unsigned state = 0; state < std::size(words); ++state) {
    EXPECT_EQ(line("'State': <uint32 " + std::to_string(state) + ">"),
              std::string(" -Jabra Speak2 75\t62%; ") + words[state] + "; present: true\n");
  }
}

TEST(AccessoryBattery, LevelIsRoundedToWholePercent) {
  EXPECT_EQ(read("'Percentage': <29.4>")->level, 29);
  EXPECT_EQ(read("'Percentage': <29.6>")->level, 30);
  EXPECT_EQ(read("'Percentage': <0.0>")->level, 0);
  EXPECT_EQ(read("'Percentage': <100.0>")->level, 100);
}

TEST(AccessoryBattery, ReturnsNulloptForBatteriesThatPowerTheComputer) {
  EXPECT_FALSE(read("'PowerSupply': <true>"));
  EXPECT_FALSE(read("'PowerSupply': <'wrong type'>"));
}

TEST(AccessoryBattery, ReturnsNulloptForAnUnknownLevel) {
  for (const char* unknown :
       {"'IsPresent': <false>", "'Percentage': <-1.0>", "'Percentage': <100.5>",
        "'Percentage': <'sixty'>",
        // The device has not reported anything yet.
        "'Percentage': <0.0>, 'State': <uint32 0>",
        // Low, critical, normal, high and full: words, from which UPower made a percentage.
        "'BatteryLevel': <uint32 3>", "'BatteryLevel': <uint32 4>", "'BatteryLevel': <uint32 6>",
        "'BatteryLevel': <uint32 7>", "'BatteryLevel': <uint32 8>"})
    EXPECT_FALSE(read(unknown)) << unknown;
  EXPECT_TRUE(read("'BatteryLevel': <uint32 0>"));
}

TEST(AccessoryBattery, ReturnsNulloptForALevelThatIsNotANumber) {
  for (const double level : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    GVariantDict properties;
    g_variant_dict_init(&properties, nullptr);
    g_variant_dict_insert(&properties, "PowerSupply", "b", FALSE);
    g_variant_dict_insert(&properties, "IsPresent", "b", TRUE);
    g_variant_dict_insert(&properties, "Percentage", "d", level);
    const VariantPointer all(g_variant_ref_sink(g_variant_dict_end(&properties)));
    EXPECT_FALSE(AccessoryBattery::fromProperties(all.get()));
  }
}

TEST(AccessoryBattery, ReturnsNulloptForADeviceWithoutProperties) {
  const VariantPointer none(
      g_variant_ref_sink(g_variant_new_array(G_VARIANT_TYPE("{sv}"), nullptr, 0)));
  EXPECT_FALSE(AccessoryBattery::fromProperties(none.get()));
}

TEST(AccessoryBattery, VendorIsAddedUnlessTheModelContainsIt) {
  EXPECT_EQ(read("'Vendor': <'Jabra'>")->name, "Jabra Speak2 75");
  EXPECT_EQ(read("'Vendor': <'Jabra'>, 'Model': <'Speak2 75'>")->name, "Jabra Speak2 75");
  EXPECT_EQ(read("'Vendor': <'GN Audio'>")->name, "GN Audio Jabra Speak2 75");
}

TEST(AccessoryBattery, NameCannotForgeALineOrALevel) {
  EXPECT_EQ(line("'Model': <'Jabra 5%; charging\\n -Jabra\\t7%;\\u2028x'>"),
            " -Jabra 5 ; charging\\n -Jabra\\t7 ;\\u{2028}x\t62%; discharging; present: true\n");
  EXPECT_EQ(line("'Model': <'Jabra 7'>"), " -Jabra 7\t62%; discharging; present: true\n");
}

}  // namespace
}  // namespace hushbox
