#include <string>

#include "platform/simulated/SimulatedDesk.h"
#include "support/Text.h"
#include "teams/TeamsUI.h"
#include "tests/fuzz/Fuzzing.h"

namespace {

using namespace hushbox;

void check(SimulatedDesk& desk, SimulatedElement& button) {
  const auto muted = TeamsUI::currentMuteState();
  std::size_t presses = 0;
  button.perform = [&presses](std::string_view) {
    ++presses;
    return accessibility::success;
  };
  if (!muted) {
    HUSHBOX_REQUIRE(TeamsUI::setMuted(std::nullopt) == TeamsUI::Result::noMeeting);
    HUSHBOX_REQUIRE(presses == 0);
    return;
  }
  HUSHBOX_REQUIRE(TeamsUI::setMuted(*muted) == TeamsUI::Result::alreadySynced);
  HUSHBOX_REQUIRE(presses == 0);
  HUSHBOX_REQUIRE(TeamsUI::setMuted(!*muted) == TeamsUI::Result::pressed);
  HUSHBOX_REQUIRE(TeamsUI::setMuted(std::nullopt) == TeamsUI::Result::pressed);
  HUSHBOX_REQUIRE(presses == 2);
  desk.log.takeRecords();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4'096) return 0;
  static SimulatedDesk desk;
  // Nothing but the button: the walk has its own tests.
  static const SimulatedElementRef button = [] {
    constexpr std::int32_t process = 7;
    desk.journal.keepLines(false);
    desk.workspace.launch({"com.microsoft.teams2", process});
    return desk.accessibility.launch(process)->append("button");
  }();

  FuzzInput input(data, size);
  const unsigned shape = input.takeByte();
  const std::string role = shape & 1U   ? "AXButton"
                           : shape & 2U ? "AXCheckBox"
                                        : std::string(input.takeText());
  button->attributes = {{"AXRole", role}};
  for (const char* attribute : {"AXDescription", "AXTitle", "AXHelp"}) {
    button->attributes[attribute] = std::string(input.takeText());
  }
  button->attributes["AXDOMIdentifier"] =
      shape & 4U ? std::string("microphone-button") : std::string(input.rest());

  check(desk, *button);
  // libFuzzer looks for leaks whenever an input leaves more memory behind than it found.
  button->attributes.clear();
  return 0;
}
