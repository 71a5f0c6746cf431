// An adapter drains what it autoreleases: AppKit drains its own pool only after an event, which in
// the background may be hours away.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/macos/MacPlatform.h"
#include "platform/macos/SingleInstance.h"
#include "tests/platform/macos/MacFixture.h"

namespace hushbox {
namespace {

constexpr std::int32_t process = 501;

class PoolsTest : public MacFixture, protected MacPlatform {
 protected:
  using Operations = std::vector<std::pair<const char*, std::function<void()>>>;

  static void expectEmptyPoolsAfter(const Operations& operations) {
    for (const auto& [name, run] : operations) {
      const std::size_t before = doubles::autoreleasedObjects();
      run();
      EXPECT_EQ(doubles::autoreleasedObjects(), before) << name;
    }
  }
};

TEST_F(PoolsTest, ReadsDrainTheirPools) {
  const AudioObjectID device = doubles::plug({.name = "Jabra Speak2 75"});
  doubles::apps = {{"com.microsoft.teams2", process}, {"com.example.hushbox", 502}};
  const auto teams = doubles::axApplication(process);
  teams->attributes = {{"AXTitle", "Meeting"}, {"AXValue", doubles::AXStrange::number}};
  teams->children = {std::make_shared<doubles::AXNode>()};
  teams->perform = [](const std::string&) { return 0; };
  const auto application = accessibility.createApplication(process);
  accessibility.setMessagingTimeout(application, 1);
  std::string text;
  AttributeValue value;
  const auto copy = [&](const char* attribute) {
    accessibility.copyAttributeValue(application, attribute, value);
  };
  expectEmptyPoolsAfter({
      {"name", [&] { audio.getPropertyText(device, audio::deviceName, text); }},
      {"application", [&] { accessibility.createApplication(process); }},
      {"text", [&] { copy("AXTitle"); }},
      {"number", [&] { copy("AXValue"); }},
      {"children", [&] { copy("AXChildren"); }},
      {"absent attribute", [&] { copy("AXNothing"); }},
      {"write",
       [&] { accessibility.setAttributeValue(application, "AXManualAccessibility", true); }},
      {"press", [&] { accessibility.performAction(application, "AXPress"); }},
      {"prompt", [&] { accessibility.isProcessTrustedWithOptions(true); }},
      {"applications", [&] { workspace.runningApplications(); }},
      {"instances", [] { SingleInstance::isFirst(); }},
      {"login item", [&] { loginItem.status(); }},
      {"time", [&] { locale.shortTime(); }},
      {"record", [&] { log.write("org.hushbox.Hushbox", "jabra", LogLevel::info, "text"); }},
  });
}

TEST_F(PoolsTest, ChangesDrainTheirPools) {
  doubles::scriptTask("/usr/bin/pmset", {"-g", "accps"}, {.output = "report"});
  const Image icon{.width = 18, .height = 18, .draw = [](Canvas*) { return true; }};
  const MenuRow quit{.kind = MenuRow::Kind::button, .text = "Quit", .enabled = true};
  const MenuRow call{.kind = MenuRow::Kind::text, .text = "Call", .localized = true};
  const auto run = [&] {
    const auto child = childProcesses.make();
    child->setExecutablePath("/usr/bin/pmset");
    child->setArguments({"-g", "accps"});
    EXPECT_TRUE(child->launch());
    EXPECT_EQ(child->readDataToEndOfFile(), "report");
    child->waitUntilExit();
  };
  expectEmptyPoolsAfter({
      {"timer", [&] { mainLoop.scheduleRepeating(TimeInterval(1), [] {}); }},
      {"activity", [&] { mainLoop.beginActivity("test"); }},
      {"child", run},
      {"permission", [&] { notifications.requestAuthorization(notificationAlert, {}); }},
      {"notification",
       [&] {
         notifications.add({"1", "Title", "Body", true}, {});
       }},
      {"registration", [&] { loginItem.registerItem(); }},
      {"removal", [&] { loginItem.unregisterItem(); }},
      {"item", [] { const StatusItemMenuBar second; }},
      {"icon", [&] { menuBar.setIcon(icon, "Live"); }},
      {"rows",
       [&] {
         menuBar.setRows({call, quit});
       }},
      {"other rows", [&] { menuBar.setRows({quit}); }},
  });
}

}  // namespace
}  // namespace hushbox
