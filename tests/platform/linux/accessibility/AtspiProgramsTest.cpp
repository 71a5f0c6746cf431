#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <thread>

#include "platform/linux/accessibility/AtspiAccessibilityTree.h"
#include "platform/linux/accessibility/CompositingManager.h"
#include "rehearsal/AccessibilityBus.h"
#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/AccessibleProgram.h"
#include "tests/platform/linux/fixtures/ScopedEnvironment.h"
#include "tests/platform/linux/fixtures/TeamsReader.h"

namespace hushbox {
namespace {

using rehearsal::holdsWithin;
using rehearsal::patience;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* label = "Mute mic (Ctrl+Shift+M)";
constexpr const char* root = AccessibleProgram::root;
constexpr const char* teamsAddress = "https://teams.microsoft.com/v2/";

using Object = AccessibleProgram::Object;

Object button(const std::string& name, const std::string& id = {}) {
  Object object{.role = 43, .name = name, .actions = {"press"}};
  if (!id.empty()) object.attributes["id"] = id;
  return object;
}

/// Programs made of data, as other toolkits, other versions and hostile hands make them.
class AtspiPrograms : public testing::Test {
 protected:
  AtspiPrograms() {
    session_.applyToThisProcess();
    accessibility_.setEnabled(true);
    address_ = accessibility_.address();
  }

  std::unique_ptr<AccessibleProgram> program(const std::string& name = "Browser",
                                             const std::string& toolkit = "Gecko") {
    return std::make_unique<AccessibleProgram>(address_, name, toolkit);
  }
  /// A browser with one document that holds those objects.
  std::unique_ptr<AccessibleProgram> browser(std::map<std::string, Object> objects,
                                             const std::string& uri = teamsAddress) {
    auto result = program();
    Object document{.role = 95, .documentAttributes = {{"URI", uri}}};
    for (auto& [path, object] : objects) {
      document.children.push_back(path);
      result->put(path, object);
    }
    result->put("/document", document);
    result->put(root, {.role = 75, .children = {"/document"}});
    return result;
  }

  rehearsal::Session session_;
  rehearsal::AccessibilityBus accessibility_{session_};
  std::string address_;
  AtspiAccessibilityTree tree_;
  TeamsReader reader_{tree_, tree_.workspace()};
};

TEST_F(AtspiPrograms, DocumentIsOfTeamsByItsAddressWhateverItsTitle) {
  const auto teams = browser({{"/b", button(label)}});
  EXPECT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(teams->performed(), ElementsAre("/b 0"));
}

TEST_F(AtspiPrograms, DocumentsOfOtherAddressesAreNot) {
  const auto other = browser({{"/b", button(label)}}, "https://meet.example.org/");
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
}

TEST_F(AtspiPrograms, DocumentBecomesOfTeamsWhenItsAddressDoes) {
  const auto page = browser({{"/b", button(label)}}, "about:blank");
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
  page->put("/document",
            {.role = 95, .documentAttributes = {{"URI", teamsAddress}}, .children = {"/b"}});
  EXPECT_EQ(reader_.read(), label);
}

TEST_F(AtspiPrograms, MeetingInOneBrowserIsNotHiddenByAnotherBrowser) {
  const auto titled = browser({{"/b", button("Buy")}}, "https://www.example.org/");
  titled->put("/document", {.role = 95,
                            .name = "Calls | Microsoft Teams",
                            .documentAttributes = {{"URI", "https://www.example.org/"}},
                            .children = {"/b"}});
  const auto chat = browser({{"/b", button("Send")}});
  ASSERT_EQ(reader_.read(), TeamsReader::noMeeting);
  const auto meeting = browser({{"/b", button(label)}});
  EXPECT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(meeting->performed(), ElementsAre("/b 0"));
}

TEST_F(AtspiPrograms, AddressesComeBeforeTitles) {
  const auto titled = browser({{"/b", button("Mute mic of a fake")}}, "https://www.example.org/");
  titled->put("/document", {.role = 95,
                            .name = "Calls | Microsoft Teams",
                            .documentAttributes = {{"URI", "https://www.example.org/"}},
                            .children = {"/b"}});
  const auto meeting = browser({{"/b", button(label)}});
  EXPECT_EQ(reader_.read(), label);
}

TEST_F(AtspiPrograms, ClientIsKnownByItsName) {
  const auto client = program("teams-for-linux", "Chromium");
  client->put("/b", button(label));
  client->put("/document", {.role = 95,
                            .name = "Company page",
                            .documentAttributes = {{"URI", "https://proxy.example.org/"}},
                            .children = {"/b"}});
  client->put(root, {.role = 75, .children = {"/document"}});
  EXPECT_EQ(reader_.read(), label);
}

TEST_F(AtspiPrograms, ClientWithoutDocumentsIsPresentedAsAWhole) {
  const auto client = program("Microsoft Teams", "gtk");
  client->put("/b", button(label));
  client->put("/frame", {.role = 23, .name = "Weekly sync", .children = {"/b"}});
  client->put(root, {.role = 75, .children = {"/frame"}});
  EXPECT_EQ(reader_.read(), label);
  const auto surfaces = reader_.children(reader_.application());
  ASSERT_EQ(surfaces.size(), 1U);
  EXPECT_EQ(reader_.text(surfaces[0], "AXRole"), "AXWindow");
}

TEST_F(AtspiPrograms, ClientWithoutAWindowRunsWithoutAMeeting) {
  const auto client = program("Microsoft Teams", "gtk");
  EXPECT_EQ(reader_.read(), TeamsReader::noMeeting);
}

TEST_F(AtspiPrograms, ProgramThatCannotSearchIsWalked) {
  const auto client = program("Microsoft Teams", "GTK");
  client->setCollection(false);
  client->setAttributesInProperties(false);
  client->put("/mic", button(label, "microphone-button"));
  client->put("/text", {.role = 61, .name = "Mute mic"});
  client->put("/bar", {.role = 63, .children = {"/text", "/mic"}});
  Object frame{.role = 23, .name = "Weekly sync"};
  for (int i = 0; i < 80; ++i) {
    const std::string path = "/panel" + std::to_string(i);
    client->put(path, {.role = 39, .name = "Panel"});
    frame.children.push_back(path);
  }
  frame.children.push_back("/bar");
  client->put("/frame", frame);
  client->put(root, {.role = 75, .children = {"/frame"}});
  ASSERT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.text(reader_.button(), "AXDOMIdentifier"), "microphone-button");
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(client->performed(), ElementsAre("/mic 0"));
}

TEST_F(AtspiPrograms, CycleInATreeEnds) {
  const auto client = program("Microsoft Teams", "GTK");
  client->setCollection(false);
  client->put("/frame", {.role = 23, .children = {"/frame", root}});
  client->put(root, {.role = 75, .children = {"/frame", root}});
  EXPECT_EQ(reader_.read(), TeamsReader::noMeeting);
}

TEST_F(AtspiPrograms, PressIsTheActionOfThatNameWhereverItStands) {
  Object box{.role = 7, .name = label, .actions = {"showContextMenu", "Toggle"}};
  const auto teams = browser({{"/b", box}});
  ASSERT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.text(reader_.button(), "AXRole"), "AXCheckBox");
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(teams->performed(), ElementsAre("/b 1"));
}

TEST_F(AtspiPrograms, ButtonWithoutAPressIsNotPressed) {
  Object menu = button(label);
  menu.actions = {"showContextMenu"};
  const auto teams = browser({{"/b", menu}});
  ASSERT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.press(), accessibility::actionUnsupported);
  EXPECT_EQ(tree_.performAction(reader_.button(), "AXShowMenu"), accessibility::actionUnsupported);
  EXPECT_THAT(teams->performed(), IsEmpty());
}

TEST_F(AtspiPrograms, RefusedPressIsAFailure) {
  Object refusing = button(label);
  refusing.takesActions = false;
  const auto teams = browser({{"/b", refusing}});
  ASSERT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.press(), accessibility::failure);
}

TEST_F(AtspiPrograms, ObjectTakenDownIsInvalidAndIsNotPressed) {
  const auto teams = browser({{"/b", button(label)}});
  ASSERT_EQ(reader_.read(), label);
  const auto before = reader_.button();
  // Still answering, as toolkits leave it for a while.
  teams->put("/b", {.role = 0, .actions = {"press"}});
  AttributeValue value;
  reader_.application();
  EXPECT_EQ(tree_.copyAttributeValue(before, "AXRole", value), accessibility::invalidElement);
  EXPECT_EQ(tree_.performAction(before, "AXPress"), accessibility::invalidElement);
  teams->remove("/b");
  reader_.application();
  EXPECT_EQ(tree_.copyAttributeValue(before, "AXRole", value), accessibility::invalidElement);
  EXPECT_EQ(tree_.performAction(before, "AXPress"), accessibility::invalidElement);
  EXPECT_THAT(teams->performed(), IsEmpty());
}

TEST_F(AtspiPrograms, EmptyAndOverlongTextsAreNoValues) {
  Object object = button("", "microphone-button");
  object.description = std::string(5000, 'M');
  const auto teams = browser({{"/b", object}});
  const auto controls = reader_.children(reader_.children(reader_.application()).at(0));
  ASSERT_EQ(controls.size(), 1U);
  AttributeValue value;
  for (const char* attribute : {"AXDescription", "AXHelp", "AXTitle", "AXNoSuchAttribute"})
    EXPECT_EQ(tree_.copyAttributeValue(controls[0], attribute, value), accessibility::noValue)
        << attribute;
  EXPECT_EQ(reader_.text(controls[0], "AXDOMIdentifier"), "microphone-button");
}

TEST_F(AtspiPrograms, ControlsAreAskedAboutTogether) {
  std::map<std::string, Object> objects;
  for (int i = 100; i < 300; ++i) objects["/b" + std::to_string(i)] = button("Reaction");
  objects["/c"] = button(label);
  const auto teams = browser(objects);
  ASSERT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.visits(), 203);
  // One question a control, beyond those that find them.
  EXPECT_LT(tree_.callCount(), 201U + 20U);
}

/// A browser whose labels lag, with one window and one meeting in it, on a desktop that draws
/// windows apart from one another.
class AtspiLabels : public AtspiPrograms {
 protected:
  static constexpr std::uint32_t showing = 1U << 25;
  static constexpr std::uint32_t iconified = 1U << 15;

  AtspiLabels() {
    environment_.set("DISPLAY", screen_.display().name());
    CompositingManager manager;
    EXPECT_TRUE(holdsWithin([&] { return manager.isRunning(); }, patience));
    browser_->put("/b", button(label));
    putDocument("/view");
    browser_->put("/view", {.role = 39, .parent = "/window", .children = {"/document"}});
    putWindow(showing, {"/view"});
    browser_->put("/other", {.role = 95, .documentAttributes = {{"URI", "https://example.org/"}}});
    browser_->put(root, {.role = 75, .children = {"/window"}});
    browser_->answerWith([this](const std::string&, const std::string& method) -> GVariant* {
      if (method == "GetAccessibleAtPoint") ++told_;
      return nullptr;
    });
  }

  void putDocument(const std::string& parent) {
    browser_->put("/document", {.role = 95,
                                .documentAttributes = {{"URI", teamsAddress}},
                                .parent = parent,
                                .children = {"/b"}});
  }
  void putWindow(std::uint32_t states, const std::vector<std::string>& children) {
    browser_->put("/window", {.role = 23, .parent = root, .states = states, .children = children});
  }
  /// The first reading looks for the window, the second finds it on the screen.
  void readTwice() {
    ASSERT_EQ(reader_.read(), label);
    ASSERT_EQ(reader_.read(), label);
  }
  /// The shortest of several readings, so that other programs' share of the time does not count.
  std::chrono::steady_clock::duration readingTime() {
    auto shortest = std::chrono::steady_clock::duration::max();
    for (int i = 0; i < 10; ++i) {
      const auto began = std::chrono::steady_clock::now();
      EXPECT_EQ(reader_.read(), label);
      shortest = std::min(shortest, std::chrono::steady_clock::now() - began);
    }
    return shortest;
  }
  std::uint64_t callsOfAReading() {
    const auto before = tree_.callCount();
    EXPECT_EQ(reader_.read(), label);
    return tree_.callCount() - before;
  }

  rehearsal::Session screen_{{.display = true}};
  ScopedEnvironment environment_;
  std::unique_ptr<rehearsal::ServerProcess> compositor_ =
      screen_.start("xcompmgr.log", {"xcompmgr"});
  std::unique_ptr<AccessibleProgram> browser_ = program("Browser", "Chromium");
  std::atomic<int> told_ = 0;
};

TEST_F(AtspiLabels, AreReadWithoutWaitingOfAPageBeingDrawn) {
  readTwice();
  EXPECT_TRUE(holdsWithin([&] { return readingTime() < AtspiTeams::labelWait; }, patience));
}

TEST_F(AtspiLabels, AreReadInOneGoOfAPageBeingDrawn) {
  readTwice();
  EXPECT_TRUE(holdsWithin([&] { return callsOfAReading() <= 6U; }, patience));
}

TEST_F(AtspiLabels, AreReadAfreshOfAPageBeingDrawn) {
  readTwice();
  browser_->put("/b", button("Unmute mic (Ctrl+Shift+M)"));
  EXPECT_EQ(reader_.read(), "Unmute mic (Ctrl+Shift+M)");
}

TEST_F(AtspiLabels, AreToldAboutInTimeOfAPageBeingDrawn) {
  readTwice();
  const int before = told_;
  EXPECT_TRUE(holdsWithin([&] { return reader_.read() == label && told_ > before; }, patience));
}

TEST_F(AtspiLabels, AreWaitedForInAMinimisedWindow) {
  readTwice();
  putWindow(showing | iconified, {"/view"});
  const int before = told_;
  EXPECT_GE(readingTime(), AtspiTeams::labelWait);
  EXPECT_GE(told_ - before, 10);
}

TEST_F(AtspiLabels, AreWaitedForInAWindowThatIsNotShown) {
  readTwice();
  putWindow(0, {"/view"});
  EXPECT_GE(readingTime(), AtspiTeams::labelWait);
}

TEST_F(AtspiLabels, AreWaitedForWhereWindowsHideOneAnother) {
  readTwice();
  compositor_.reset();
  EXPECT_GE(readingTime(), AtspiTeams::labelWait);
}

TEST_F(AtspiLabels, AreWaitedForBehindAnotherTab) {
  readTwice();
  putDocument({});
  putWindow(showing, {"/other"});
  EXPECT_GE(readingTime(), AtspiTeams::labelWait);
}

TEST_F(AtspiLabels, AreReadWithoutWaitingOnceTheTabIsInFrontAgain) {
  readTwice();
  putDocument({});
  putWindow(showing, {"/other"});
  EXPECT_GE(readingTime(), AtspiTeams::labelWait);
  putDocument("/view");
  putWindow(showing, {"/view"});
  EXPECT_TRUE(holdsWithin([&] { return readingTime() < AtspiTeams::labelWait; }, patience));
}

TEST_F(AtspiLabels, AreReadWithoutWaitingInAnotherWindowThatTheTabWasMovedTo) {
  readTwice();
  browser_->put("/its_view", {.role = 39, .parent = "/another", .children = {"/document"}});
  browser_->put("/another",
                {.role = 23, .parent = root, .states = showing, .children = {"/its_view"}});
  putDocument("/its_view");
  putWindow(0, {"/other"});
  EXPECT_TRUE(holdsWithin([&] { return readingTime() < AtspiTeams::labelWait; }, patience));
}

TEST_F(AtspiLabels, AreWaitedForOnAPageWithinAPage) {
  // The inner page stays in the outer one, even when that goes to the background.
  browser_->put("/outer", {.role = 95,
                           .documentAttributes = {{"URI", "https://example.org/"}},
                           .parent = "/window",
                           .children = {"/view"}});
  browser_->put("/view", {.role = 39, .parent = "/outer", .children = {"/document"}});
  putWindow(showing, {"/outer"});
  readTwice();
  EXPECT_GE(readingTime(), AtspiTeams::labelWait);
}

TEST_F(AtspiLabels, ComeBackWithTheButtonBehindAnotherTab) {
  // Where no search finds it, the document has to be remembered without its button too.
  readTwice();
  putDocument({});
  putWindow(showing, {"/other"});
  browser_->put("/b", {});
  EXPECT_EQ(reader_.read(), TeamsReader::noMeeting);
  browser_->put("/b", button(label));
  EXPECT_EQ(reader_.read(), label);
}

TEST_F(AtspiLabels, EndWithTheMeeting) {
  readTwice();
  browser_->put("/b", {});
  EXPECT_EQ(reader_.read(), TeamsReader::noMeeting);
  browser_->put("/b", button(label));
  EXPECT_EQ(reader_.read(), label);
  browser_->put("/b", {});
  browser_->put("/document", {});
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
}

TEST_F(AtspiLabels, OfAPageThatIsOfTeamsByItsTitleEndWithTheTitle) {
  const auto putTitled = [&](const std::string& title) {
    browser_->put("/document", {.role = 95,
                                .name = title,
                                .documentAttributes = {{"URI", "file:///page"}},
                                .parent = "/view",
                                .children = {"/b"}});
  };
  putTitled("Weekly sync | Microsoft Teams");
  readTwice();
  putTitled("Song");
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
}

TEST_F(AtspiLabels, AreWaitedForWhereTheWindowIsNotFound) {
  browser_->put("/view", {.role = 39, .parent = "/view", .children = {"/document"}});
  readTwice();
  EXPECT_GE(readingTime(), AtspiTeams::labelWait);
}

TEST_F(AtspiLabels, AreWaitedForAfterALongTimeWithoutReading) {
  readTwice();
  std::this_thread::sleep_for(AtspiTeams::tellInterval);
  const auto began = std::chrono::steady_clock::now();
  EXPECT_EQ(reader_.read(), label);
  EXPECT_GE(std::chrono::steady_clock::now() - began, AtspiTeams::labelWait);
}

TEST_F(AtspiLabels, OfProgramsThatKeepThemTrueAreNotWaitedFor) {
  browser_.reset();
  const auto teams = browser({{"/b", button(label)}});
  ASSERT_TRUE(holdsWithin([&] { return reader_.read() == label; }, patience));
  EXPECT_LE(callsOfAReading(), 4U);
}

TEST_F(AtspiPrograms, NobodySpeaksForAnotherProgramsObjects) {
  const auto victim = program("Music player", "gtk");
  victim->put("/b", button(label));
  const auto liar = browser({});
  const std::string name = victim->busName();
  liar->answerWith([&](const std::string& path, const std::string& method) -> GVariant* {
    if (method != "GetMatches" || path != "/document") return nullptr;
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(so)"));
    g_variant_builder_add(&builder, "(so)", name.c_str(), "/b");
    g_variant_builder_add(&builder, "(so)", "no name at all", "/b");
    g_variant_builder_add(&builder, "(so)", "", "/b");
    return g_variant_new("(a(so))", &builder);
  });
  EXPECT_EQ(reader_.read(), TeamsReader::noMeeting);
  EXPECT_THAT(reader_.controls(), IsEmpty());
}

TEST_F(AtspiPrograms, AnswersOfTheWrongTypeAreNoAnswers) {
  const auto hostile = browser({{"/b", button(label)}});
  const auto meeting = browser({{"/b", button(label)}});
  GVariant* (*const nonsense[])() = {
      [] { return g_variant_new("()"); },
      [] { return g_variant_new("(s)", "text"); },
      [] { return g_variant_new("(u)", 4'000'000'000U); },
      [] { return g_variant_new("(v)", g_variant_new_uint64(7)); },
      [] { return g_variant_new("(v)", g_variant_new_string(std::string(9000, 'x').c_str())); },
      [] { return g_variant_new("(as)", nullptr); },
      [] { return g_variant_new("(a(so))", nullptr); },
      [] { return g_variant_new("(a{sv})", nullptr); },
      [] { return g_variant_new("(a{ss})", nullptr); },
      [] { return g_variant_new("(ss)", "two", "texts"); },
      [] {
        GVariantBuilder builder;
        g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&builder, "{sv}", "Name", g_variant_new_int32(1));
        g_variant_builder_add(&builder, "{sv}", "Description", g_variant_new("(ii)", 1, 2));
        g_variant_builder_add(&builder, "{sv}", "Attributes", g_variant_new_string("none"));
        return g_variant_new("(a{sv})", &builder);
      },
  };
  for (const char* method : {"Get", "GetAll", "GetRole", "GetChildren", "GetMatches",
                             "GetAttributes", "GetName", "DoAction", "GetAccessibleAtPoint"}) {
    for (const auto make : nonsense) {
      hostile->answerWith([&](const std::string&, const std::string& asked) {
        return asked == method ? make() : nullptr;
      });
      AtspiAccessibilityTree tree;
      TeamsReader reader(tree, tree.workspace());
      EXPECT_EQ(reader.read(), label) << method;
      reader.press();
    }
  }
}

}  // namespace
}  // namespace hushbox
