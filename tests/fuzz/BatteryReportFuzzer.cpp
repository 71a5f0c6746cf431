#include <string>

#include "battery/BatteryReading.h"
#include "tests/fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace hushbox;
  const std::string_view report(reinterpret_cast<const char*>(data), size);
  const auto reading = parseBatteryReading(report, "Jabra");
  if (!reading) return 0;
  HUSHBOX_REQUIRE(reading->level >= 0);
  HUSHBOX_REQUIRE(report.find('%') != report.npos);
  // Lines after the first match change nothing.
  const std::string longer = std::string(report) + "\nJabra 1%; charging";
  HUSHBOX_REQUIRE(parseBatteryReading(longer, "Jabra") == reading);
  return 0;
}
