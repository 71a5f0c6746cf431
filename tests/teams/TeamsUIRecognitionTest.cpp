#include <gmock/gmock.h>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/teams/TeamsUIFixture.h"

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::optional<bool> notTheButton;
constexpr std::optional<bool> muted = true;
constexpr std::optional<bool> unmuted = false;

class TeamsUIRecognitionTest : public TeamsUIFixture {
 protected:
  /// Returns Teams' mute state when this is the only element below the application.
  std::optional<bool> stateWith(Attributes attributes) {
    app->removeChildren();
    app->append("element", std::move(attributes));
    return TeamsUI::currentMuteState();
  }

  struct Labelled {
    std::string label;
    std::optional<bool> state;
  };

  void expectStates(const std::vector<Labelled>& cases, const Attributes& others = {}) {
    for (const auto& [label, state] : cases) {
      Attributes attributes = button(label);
      attributes.insert(others.begin(), others.end());
      EXPECT_EQ(stateWith(attributes), state) << label;
    }
  }
};

TEST_F(TeamsUIRecognitionTest, BareWordIdentifiesTheButton) {
  expectStates({{"Mute", unmuted},
                {"Unmute", muted},
                {"mute", unmuted},
                {"unmute", muted},
                {"MUTE", unmuted},
                {"UNMUTE", muted}});
}

TEST_F(TeamsUIRecognitionTest, LabelWithTheMicrophoneOrTheShortcutIdentifiesTheButton) {
  expectStates({{"Mute mic", unmuted},
                {"Unmute Mic", muted},
                {"MUTE MIC", unmuted},
                {"Mute microphone", unmuted},
                {"Unmute mic (⌘+Shift+M)", muted},
                {"Mute (⌘+Shift+M)", unmuted},
                {"Mute ⌘", unmuted},
                {"Unmute ⌘M", muted},
                {"Mute (Ctrl+SHIFT+M)", unmuted},
                {"Unmute shift", muted},
                {"Unmutemic", muted}});
}

TEST_F(TeamsUIRecognitionTest, LabelOfAnotherMuteIsNotTheButton) {
  expectStates({{"Mute all participants", notTheButton},
                {"Unmute everyone", notTheButton},
                {"Mute Ann", notTheButton},
                {"Muted", notTheButton},
                {"mute ", notTheButton},
                {"mutemute", notTheButton},
                {"Mute m-i-c", notTheButton},
                {"Mute (Ctrl+M)", notTheButton}});
}

TEST_F(TeamsUIRecognitionTest, WordMustBeAtTheStart) {
  expectStates({{"Please mute mic", notTheButton},
                {"Please unmute mic", notTheButton},
                {" Mute mic", notTheButton},
                {"(Un)mute mic", notTheButton},
                {"Turn mic off (⌘+Shift+M), mute", notTheButton},
                {"Microphone", notTheButton},
                {"Mic", notTheButton},
                {"Shift", notTheButton},
                {"⌘", notTheButton}});
}

TEST_F(TeamsUIRecognitionTest, PrefixNeedNotBeAWholeWord) {
  expectStates({{"Muted mic", unmuted}, {"Mutex mic", unmuted}, {"Unmuted mic", muted}});
}

TEST_F(TeamsUIRecognitionTest, LabelIsSearchedToItsEnd) {
  expectStates({{"Unmute " + std::string(1000, 'x') + " mic", muted}});
}

TEST_F(TeamsUIRecognitionTest, OnlyTheStartOfTheLabelTellsTheState) {
  expectStates({{"Mute mic, unmute", unmuted}, {"Unmute mic, mute", muted}});
}

TEST_F(TeamsUIRecognitionTest, CombiningMarksMakeOtherCharacters) {
  expectStates({{"Mute\u0301 mic", notTheButton},
                {"Unmute\u0301 mic", notTheButton},
                {"Mute\u0301", notTheButton},
                {"Mute mic\u0301", notTheButton},
                {"Mute \u0301mic", unmuted},
                {"Mute ⌘\u0301", notTheButton},
                {"Mute shift\u0308", notTheButton},
                {"Mute M\u0130C", notTheButton}});
}

TEST_F(TeamsUIRecognitionTest, DomIdentifierMayNameTheMicrophone) {
  const Attributes named = {{"AXDOMIdentifier", std::string("microphone-button")}};
  expectStates({{"Mute all participants", unmuted},
                {"Unmute everyone", muted},
                {"Muted", unmuted},
                {"Microphone", notTheButton},
                {"Please mute", notTheButton},
                {"Mute\u0301", notTheButton},
                {"Mute", unmuted}},
               named);
}

TEST_F(TeamsUIRecognitionTest, DomIdentifierMustMatchExactly) {
  for (const char* identifier :
       {"microphone-button2", "Microphone-Button", "microphone", "", "microphone-button ",
        "microphone-button\u0301", "my-microphone-button"}) {
    Attributes attributes = button("Mute all participants");
    attributes["AXDOMIdentifier"] = std::string(identifier);
    EXPECT_EQ(stateWith(attributes), notTheButton) << identifier;
  }
}

TEST_F(TeamsUIRecognitionTest, DomIdentifierIsAlsoALabel) {
  const auto withIdentifierOnly = [this](std::string identifier) {
    return stateWith({{"AXRole", std::string("AXButton")}, {"AXDOMIdentifier", identifier}});
  };
  EXPECT_EQ(withIdentifierOnly("unmute"), muted);
  EXPECT_EQ(withIdentifierOnly("mute-mic"), unmuted);
  EXPECT_EQ(withIdentifierOnly("mute-all"), notTheButton);
  EXPECT_EQ(withIdentifierOnly("microphone-button"), notTheButton);
}

TEST_F(TeamsUIRecognitionTest, RoleMustBeButtonOrCheckBox) {
  const auto withRole = [this](SimulatedAttribute role) {
    Attributes attributes = button("Mute mic");
    attributes["AXRole"] = std::move(role);
    return stateWith(attributes);
  };
  EXPECT_EQ(withRole("AXButton"), unmuted);
  EXPECT_EQ(withRole("AXCheckBox"), unmuted);
  for (const char* role : {"AXMenuItem", "AXGroup", "axbutton", "AXButton ", "AXCheckbox",
                           "AXCheckBoxes", "MyAXCheckBox", "", "AXButton\u0301", "AXRadioButton",
                           "AXToggleButton", "AXMenuButton", "AXStaticText"}) {
    EXPECT_EQ(withRole(role), notTheButton) << role;
  }
  EXPECT_EQ(withRole(OtherAttributeValue()), notTheButton);
  EXPECT_EQ(withRole(std::monostate()), notTheButton);
  EXPECT_EQ(withRole(accessibility::cannotComplete), notTheButton);
  EXPECT_EQ(stateWith({{"AXDescription", std::string("Mute mic")}}), notTheButton);
}

TEST_F(TeamsUIRecognitionTest, ElementWithoutALabelIsNotTheButton) {
  EXPECT_EQ(stateWith({{"AXRole", std::string("AXButton")}}), notTheButton);
  EXPECT_EQ(stateWith({{"AXRole", std::string("AXButton")},
                       {"AXDescription", std::string()},
                       {"AXTitle", std::string()},
                       {"AXHelp", std::string()},
                       {"AXDOMIdentifier", std::string()}}),
            notTheButton);
}

TEST_F(TeamsUIRecognitionTest, FirstMatchingLabelDecides) {
  struct Case {
    SimulatedAttribute description, title, help, identifier;
    std::optional<bool> state;
  };
  const SimulatedAttribute absent = accessibility::noValue;
  const std::vector<Case> cases = {
      {"Unmute", "Mute", "Mute", "mute", muted},
      {"Mute", "Unmute", "Unmute", "unmute", unmuted},
      {absent, "Unmute", "Mute", "mute", muted},
      {absent, absent, "Unmute", "mute", muted},
      {absent, absent, absent, "unmute", muted},
      {"Microphone", "Unmute", "Mute", absent, muted},
      {"Mute all", "Unmute mic", absent, absent, muted},
      {"Microphone", "On", "Unmute (⌘+Shift+M)", absent, muted},
      {"Mute all", absent, absent, "microphone-button", unmuted},
      {"Microphone", "Unmute all", absent, "microphone-button", muted},
      {"Mute all", "Unmute mic", absent, "microphone-button", unmuted},
      {"Mute mic", "Unmute all", absent, "microphone-button", unmuted},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(stateWith({{"AXRole", std::string("AXButton")},
                         {"AXDescription", one.description},
                         {"AXTitle", one.title},
                         {"AXHelp", one.help},
                         {"AXDOMIdentifier", one.identifier}}),
              one.state)
        << "case " << &one - cases.data();
  }
}

TEST_F(TeamsUIRecognitionTest, LabelsThatAreEmptyOrNotTextAreSkipped) {
  for (const SimulatedAttribute& useless :
       {SimulatedAttribute(std::string()), SimulatedAttribute(OtherAttributeValue()),
        SimulatedAttribute(std::monostate()), SimulatedAttribute(accessibility::cannotComplete)}) {
    EXPECT_EQ(stateWith({{"AXRole", std::string("AXButton")},
                         {"AXDescription", useless},
                         {"AXTitle", std::string("Unmute")}}),
              muted);
  }
}

TEST_F(TeamsUIRecognitionTest, OtherAttributesAreNotLabels) {
  EXPECT_EQ(stateWith({{"AXRole", std::string("AXButton")},
                       {"AXValue", std::string("Mute mic")},
                       {"AXLabel", std::string("Mute mic")}}),
            notTheButton);
}

TEST_F(TeamsUIRecognitionTest, AttributesAreReadInOrder) {
  app->append("element", button("Mute mic"));
  TeamsUI::currentMuteState();
  Lines reads;
  for (const std::string& line : desk.journal.take("accessibility")) {
    if (line.starts_with("copy element")) reads.push_back(line);
  }
  EXPECT_THAT(reads, ElementsAre("copy element AXRole: \"AXButton\" -> 0",
                                 "copy element AXDOMIdentifier -> -25205",
                                 "copy element AXDescription: \"Mute mic\" -> 0",
                                 "copy element AXTitle -> -25205", "copy element AXHelp -> -25205",
                                 "copy element AXDOMIdentifier -> -25205"));
}

TEST_F(TeamsUIRecognitionTest, ElementOfAnotherRoleCostsOneReadPlusItsChildren) {
  app->append("group", {{"AXRole", std::string("AXGroup")}});
  TeamsUI::currentMuteState();
  Lines reads;
  for (const std::string& line : desk.journal.take("accessibility")) {
    if (line.starts_with("copy group")) reads.push_back(line);
  }
  EXPECT_THAT(reads, ElementsAre("copy group AXRole: \"AXGroup\" -> 0",
                                 "copy group AXChildren: 0 elements -> 0"));
}

}  // namespace
}  // namespace hushbox
