#include "platform/linux/report/TeamsReport.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>
#include <variant>

#include "platform/linux/accessibility/AtspiAccessibilityTree.h"
#include "platform/linux/accessibility/AtspiBus.h"
#include "platform/linux/accessibility/AtspiPrograms.h"
#include "platform/linux/accessibility/TeamsSigns.h"
#include "support/Text.h"

namespace hushbox {
namespace {

namespace fs = std::filesystem;
using Elements = std::vector<AccessibilityElementRef>;

/// The programs that Teams is used in, by the names of their files.
const std::set<std::string> browserNames{
    "brave",       "chrome",    "chromium", "electron",        "epiphany", "firefox",
    "firefox-esr", "librewolf", "msedge",   "teams-for-linux", "opera",    "vivaldi-bin"};

/// The name of the process's program file; empty for a process that may not be read.
std::string nameOf(const fs::path& process) {
  std::error_code error;
  return fs::read_symlink(process / "exe", error).filename().string();
}

/// Whether it is the process that a browser starts with, not one that it has started for a page.
bool isMainProcess(const fs::path& process) {
  std::ifstream file(process / "cmdline", std::ios::binary);
  const std::string line{std::istreambuf_iterator<char>(file), {}};
  return line.find("--type=") == line.npos && line.find("-contentproc") == line.npos;
}

struct Browser {
  std::int32_t process;
  std::string name;
};

std::vector<Browser> runningBrowsers() {
  std::vector<Browser> browsers;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc", error)) {
    const std::string number = entry.path().filename();
    std::int32_t process = 0;
    const auto end = number.data() + number.size();
    if (std::from_chars(number.data(), end, process).ptr != end) continue;
    struct stat status {};
    if (stat(entry.path().c_str(), &status) != 0 || status.st_uid != getuid()) continue;
    const std::string name = nameOf(entry.path());
    if (browserNames.contains(name) && isMainProcess(entry.path()))
      browsers.push_back({process, name});
  }
  return browsers;
}

ReportLines browserLines(AtspiBus& bus, bool hasBus) {
  AtspiPrograms programs(bus);
  if (hasBus) programs.refresh();
  std::set<std::int32_t> onBus;
  for (const AtspiProgram* program : programs.hosts()) onBus.insert(program->processIdentifier);
  ReportLines lines;
  for (const Browser& browser : runningBrowsers()) {
    const bool isThere = onBus.contains(browser.process);
    lines.push_back("Browser: " + browser.name +
                    (isThere ? ", on the accessibility bus"
                             : ", not on the accessibility bus: close all its windows and start it "
                               "again while accessibility is on"));
  }
  if (lines.empty()) lines.emplace_back("Browser: none of the known ones is running");
  return lines;
}

std::string text(AccessibilityTree& tree, const AccessibilityElementRef& element,
                 const char* attribute) {
  AttributeValue value;
  if (tree.copyAttributeValue(element, attribute, value) != accessibility::success) return {};
  const auto* found = std::get_if<std::string>(&value);
  return found ? *found : std::string();
}

Elements children(AccessibilityTree& tree, const AccessibilityElementRef& element) {
  AttributeValue value;
  if (tree.copyAttributeValue(element, "AXChildren", value) != accessibility::success) return {};
  const auto* found = std::get_if<Elements>(&value);
  return found ? *found : Elements();
}

/// What the microphone button of a page says. The labels of its other controls name people.
std::string microphoneButton(AccessibilityTree& tree, const Elements& controls) {
  for (const AccessibilityElementRef& control : controls) {
    const std::string label = text(tree, control, "AXDescription");
    const bool hasId = text(tree, control, "AXDOMIdentifier") == "microphone-button";
    const std::string lowercased = text::lowercased(label);
    const bool namesMicrophone =
        text::contains(lowercased, "mic") && teams_signs::isMuteLabel(lowercased);
    if (!hasId && !namesMicrophone) continue;
    return "microphone button \"" + text::escapedForTerminal(label) + '"' +
           (teams_signs::isMuteLabel(label) ? "" : ", which is not English");
  }
  return "no microphone button: not in a meeting, or Teams is not in English";
}

ReportLines pageLines() {
  AtspiAccessibilityTree tree;
  ReportLines lines;
  for (const RunningApplication& application : tree.workspace().runningApplications()) {
    const auto element = tree.createApplication(application.processIdentifier);
    tree.setMessagingTimeout(element, 1);
    for (const AccessibilityElementRef& page : children(tree, element)) {
      const Elements controls = children(tree, page);
      lines.push_back("Teams: a page with " + std::to_string(controls.size()) + " controls, " +
                      microphoneButton(tree, controls));
    }
  }
  if (lines.empty()) lines.emplace_back("Teams: no page found");
  return lines;
}

}  // namespace

ReportLines teamsReport() {
  AtspiBus bus;
  using Switch = AtspiBus::Switch;
  const Switch accessibility = bus.readSwitch();
  const bool hasBus = accessibility == Switch::on && bus.connect();
  ReportLines lines;
  if (accessibility == Switch::unknown)
    lines.emplace_back("Accessibility: unknown; org.a11y.Bus does not reply");
  else if (accessibility == Switch::off)
    lines.emplace_back("Accessibility: off; \"Grant Accessibility…\" in the menu turns it on");
  else
    lines.emplace_back(hasBus ? "Accessibility: on" : "Accessibility: on, but its bus is missing");
  bus.beginBudget();
  for (ReportLines& more : std::vector{browserLines(bus, hasBus),
                                       hasBus ? pageLines() : ReportLines{"Teams: not looked for"}})
    lines.insert(lines.end(), more.begin(), more.end());
  return lines;
}

}  // namespace hushbox
