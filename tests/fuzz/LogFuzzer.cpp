#include <cstring>
#include <string>

#include "platform/simulated/SimulatedDesk.h"
#include "support/Log.h"
#include "tests/fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace hushbox;
  static SimulatedDesk desk;
  desk.journal.keepLines(false);
  constexpr Log log{"fuzz"};

  FuzzInput input(data, size);
  double figure = 0;
  std::int32_t status = 0;
  if (size >= sizeof figure) std::memcpy(&figure, data, sizeof figure);
  if (size >= sizeof status) std::memcpy(&status, data, sizeof status);
  const bool flag = input.takeByte() % 2 == 1;
  const std::string first(input.takeText());
  const std::string second(input.rest());

  // A conversion in an argument is text like any other.
  log.info("%{public}s", second);
  log.info("Pressed '%{public}s' -> %d", second, status);
  log.info("%{public}s|%{bool}d|%{public}s", first, flag, second);
  log.info("%f", figure);
  const auto records = desk.log.takeRecords();
  HUSHBOX_REQUIRE(records[0].text == second);
  HUSHBOX_REQUIRE(records[1].text == "Pressed '" + second + "' -> " + std::to_string(status));
  HUSHBOX_REQUIRE(records[2].text == first + (flag ? "|true|" : "|false|") + second);
  HUSHBOX_REQUIRE(records[3].text == std::to_string(figure));
  return 0;
}
