#include "platform/linux/power-report/AccessoryBattery.h"

#include <algorithm>
#include <cmath>

#include "support/Text.h"

namespace hushbox {
namespace {

// Values from UPower's documentation of org.freedesktop.UPower.Device.
constexpr guint32 stateUnknown = 0;
constexpr guint32 levelUnknown = 0;
constexpr guint32 levelIsPercentage = 1;

std::string textProperty(GVariant* properties, const char* name) {
  const char* value = "";
  g_variant_lookup(properties, name, "&s", &value);
  return value;
}

bool flag(GVariant* properties, const char* name, bool otherwise) {
  gboolean value = otherwise;
  g_variant_lookup(properties, name, "b", &value);
  return value;
}

guint32 figure(GVariant* properties, const char* name) {
  guint32 value = 0;
  g_variant_lookup(properties, name, "u", &value);
  return value;
}

/// The report's word for a state. A battery that is full or waiting to be charged is on a cable.
const char* word(unsigned state) {
  switch (state) {
    case 1:
      return "charging";
    case 2:
    case 6:
      return "discharging";
    case 3:
      return "empty";
    case 4:
      return "charged";
    case 5:
      return "AC attached";
    default:
      return "unknown";
  }
}

}  // namespace

std::optional<AccessoryBattery> AccessoryBattery::fromProperties(GVariant* properties) {
  double percentage = -1;
  g_variant_lookup(properties, "Percentage", "d", &percentage);
  if (flag(properties, "PowerSupply", true) || !flag(properties, "IsPresent", false) ||
      !(percentage >= 0 && percentage <= 100))
    return std::nullopt;

  // A level in words, such as "low", comes with a percentage that UPower made up.
  const guint32 level = figure(properties, "BatteryLevel");
  if (level != levelUnknown && level != levelIsPercentage) return std::nullopt;

  const guint32 state = figure(properties, "State");
  // UPower's values for a device that has not reported anything yet.
  if (state == stateUnknown && percentage == 0) return std::nullopt;

  const std::string vendor = textProperty(properties, "Vendor");
  std::string name = textProperty(properties, "Model");
  if (!text::contains(name, vendor)) name = vendor + ' ' + name;
  return AccessoryBattery{name, static_cast<int>(std::lround(percentage)), state};
}

std::string AccessoryBattery::reportLine() const {
  std::string shown = text::escapedForTerminal(name);
  // The reader of the report looks for a percent sign.
  std::ranges::replace(shown, '%', ' ');
  return " -" + shown + '\t' + std::to_string(level) + "%; " + word(state) + "; present: true\n";
}

}  // namespace hushbox
