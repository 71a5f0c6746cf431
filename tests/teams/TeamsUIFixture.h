#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/simulated/SimulatedDesk.h"
#include "teams/TeamsUI.h"

namespace hushbox {

/// A Teams on the simulated desk without a window; the test adds the elements.
class TeamsUIFixture : public testing::Test {
 protected:
  using Attributes = SimulatedElement::Attributes;

  TeamsUIFixture() { desk.workspace.launch({"com.microsoft.teams2", 501}); }

  static Attributes button(std::string description) {
    return {{"AXRole", std::string("AXButton")}, {"AXDescription", std::move(description)}};
  }

  /// The journal lines from the permission to the setup of the application's element.
  static Lines approach(const std::string& process = "501") {
    const std::string application = "accessibility: application " + process;
    const std::string set = "accessibility: set application " + process;
    return {"accessibility: trusted -> true",
            "workspace: applications: 501",
            application,
            "accessibility: timeout application " + process + ": 1 s -> 0",
            set + " AXManualAccessibility: true -> 0",
            set + " AXEnhancedUserInterface: true -> 0"};
  }

  static Lines joined(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
  }

  /// Appends a microphone button with that label; its presses are recorded in `presses`.
  SimulatedElementRef show(const std::string& label, AccessibilityError pressStatus = 0) {
    auto element = app->append("microphone", button(label));
    element->perform = [this, pressStatus](std::string_view action) {
      presses.emplace_back(action);
      return pressStatus;
    };
    return element;
  }

  /// The journal lines of the walk from the application to a microphone button directly below it.
  static Lines walkToTheMicrophone() {
    return {
        "accessibility: copy application 501 AXRole: "
        "\"AXApplication\" -> 0",
        "accessibility: copy application 501 AXChildren: 1 elements "
        "-> 0"};
  }

  /// The journal lines of the six reads of a microphone button.
  static Lines sixReads(const std::string& label) {
    return {"accessibility: copy microphone AXRole: \"AXButton\" -> 0",
            "accessibility: copy microphone AXDOMIdentifier -> -25205",
            "accessibility: copy microphone AXDescription: \"" + label + "\" -> 0",
            "accessibility: copy microphone AXTitle -> -25205",
            "accessibility: copy microphone AXHelp -> -25205",
            "accessibility: copy microphone AXDOMIdentifier -> -25205"};
  }

  /// Takes the journal and returns the names of the elements whose role was read, in order: those
  /// that were visited.
  Lines takeVisited() {
    Lines visited;
    for (const std::string& line : desk.journal.take("accessibility")) {
      const auto role = line.find(" AXRole");
      if (line.starts_with("copy ") && role != std::string::npos) {
        visited.push_back(line.substr(5, role - 5));
      }
    }
    return visited;
  }

  SimulatedDesk desk;
  Lines presses;
  SimulatedElementRef app = desk.accessibility.launch(501);
};

}  // namespace hushbox
