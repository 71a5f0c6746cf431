#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/simulated/SimulatedDesk.h"
#include "teams/TeamsUI.h"

namespace hushbox {

/// A Teams on the simulated desk whose elements the test lays out itself.
class TeamsFixture : public testing::Test {
 protected:
  using Attributes = SimulatedElement::Attributes;

  TeamsFixture() { desk.workspace.launch({"com.microsoft.teams2", 501}); }

  static Attributes button(std::string description) {
    return {{"AXRole", std::string("AXButton")}, {"AXDescription", std::move(description)}};
  }

  /// What the journal says of the calls from the permission to the application's element.
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

  /// The names of the elements whose role was read, in order: those that were visited.
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
  SimulatedElementRef app = desk.accessibility.launch(501);
};

}  // namespace hushbox
