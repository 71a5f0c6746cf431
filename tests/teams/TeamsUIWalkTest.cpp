#include <gmock/gmock.h>

#include <string>

#include "tests/teams/TeamsUIFixture.h"

namespace hushbox {
namespace {

using testing::ElementsAre;

class TeamsUIWalkTest : public TeamsUIFixture {
 protected:
  /// Appends elements that are not the button and have no attributes.
  void appendPlain(int count) {
    for (int i = 0; i < count; ++i) app->append("plain");
  }
};

TEST_F(TeamsUIWalkTest, IsBreadthFirstInTheOrderGiven) {
  const auto a = app->append("a");
  const auto b = app->append("b");
  const auto a1 = a->append("a1");
  a->append("a2");
  b->append("b1");
  a1->append("a11");
  TeamsUI::currentMuteState();
  EXPECT_THAT(takeVisited(), ElementsAre("application 501", "a", "b", "a1", "a2", "b1", "a11"));
}

TEST_F(TeamsUIWalkTest, ShallowButtonIsFoundBeforeADeepOne) {
  app->append("a")->append("a1", button("Mute"));
  app->append("b", button("Unmute"));
  EXPECT_EQ(TeamsUI::currentMuteState(), true);
  EXPECT_THAT(takeVisited(), ElementsAre("application 501", "a", "b"));
}

TEST_F(TeamsUIWalkTest, FirstOfTwoButtonsOfOneDepthIsFound) {
  app->append("a", button("Unmute"));
  app->append("b", button("Mute"));
  EXPECT_EQ(TeamsUI::currentMuteState(), true);
}

TEST_F(TeamsUIWalkTest, StopsAtTheButtonWithoutReadingItsChildren) {
  app->append("a", button("Unmute"))->append("icon");
  app->append("b");
  TeamsUI::currentMuteState();
  const Lines lines = desk.journal.take("accessibility");
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(), "copy a AXDOMIdentifier -> -25205");
}

TEST_F(TeamsUIWalkTest, ApplicationItselfIsVisitedFirst) {
  app->attributes = button("Unmute");
  app->append("a", button("Mute"));
  EXPECT_EQ(TeamsUI::currentMuteState(), true);
}

TEST_F(TeamsUIWalkTest, ElementIsVisitedBeforeItsChildrenAreRead) {
  app->append("a");
  TeamsUI::currentMuteState();
  Lines lines = desk.journal.take("accessibility");
  lines.erase(lines.begin(), lines.begin() + 5);
  EXPECT_THAT(lines, ElementsAre("copy application 501 AXRole: \"AXApplication\" -> 0",
                                 "copy application 501 AXChildren: 1 elements -> 0",
                                 "copy a AXRole -> -25205", "copy a AXChildren: 0 elements -> 0"));
}

TEST_F(TeamsUIWalkTest, UnreadableChildrenAreSkipped) {
  for (const SimulatedAttribute& children :
       {SimulatedAttribute(accessibility::cannotComplete), SimulatedAttribute(std::monostate()),
        SimulatedAttribute(std::string("a1")), SimulatedAttribute(OtherAttributeValue())}) {
    app->removeChildren();
    TeamsUI::currentMuteState();
    takeVisited();
    const auto a = app->append("a", {{"AXChildren", children}});
    a->append("hidden", button("Mute"));
    app->append("b", button("Unmute"));
    EXPECT_EQ(TeamsUI::currentMuteState(), true);
    EXPECT_THAT(takeVisited(), ElementsAre("application 501", "a", "b"));
  }
}

TEST_F(TeamsUIWalkTest, UnreadableChildrenOfTheApplicationEndTheWalk) {
  app->attributes["AXChildren"] = accessibility::cannotComplete;
  app->append("a", button("Mute"));
  EXPECT_EQ(TeamsUI::currentMuteState(), std::nullopt);
  EXPECT_THAT(takeVisited(), ElementsAre("application 501"));
}

TEST_F(TeamsUIWalkTest, ButtonAsThe40000thElementIsFound) {
  desk.journal.keepLines(false);
  appendPlain(39'998);
  app->append("button", button("Unmute"));
  EXPECT_EQ(TeamsUI::currentMuteState(), true);
}

TEST_F(TeamsUIWalkTest, ButtonAsThe40001stElementIsNotFound) {
  desk.journal.keepLines(false);
  appendPlain(39'999);
  app->append("button", button("Unmute"));
  EXPECT_EQ(TeamsUI::currentMuteState(), std::nullopt);
  // The permission, the application, its timeout and two attributes; then a role and the children
  // per element.
  EXPECT_EQ(desk.journal.callCount("accessibility"), 5U + 2 * 40'000U);
}

TEST_F(TeamsUIWalkTest, LimitCountsVisitsAtAllDepths) {
  desk.journal.keepLines(false);
  appendPlain(39'997);
  app->children.front()->append("last but one")->append("button", button("Unmute"));
  EXPECT_EQ(TeamsUI::currentMuteState(), true);
  app->append("one more");
  // Replace the cached button, so that there is a walk.
  const auto parent = app->children.front()->children.front();
  parent->removeChildren();
  parent->append("button", button("Unmute"));
  EXPECT_EQ(TeamsUI::currentMuteState(), std::nullopt);
}

TEST_F(TeamsUIWalkTest, DepthIsUnlimited) {
  desk.journal.keepLines(false);
  auto deepest = app;
  for (int depth = 1; depth < 39'999; ++depth) {
    auto next = std::make_shared<SimulatedElement>("plain");
    next->origin = app->origin;
    deepest->children.push_back(next);
    deepest = next;
  }
  deepest->append("button", button("Unmute"));
  EXPECT_EQ(TeamsUI::currentMuteState(), true);
}

TEST_F(TeamsUIWalkTest, WalkOfATreeThatContainsItselfEndsAtTheLimit) {
  desk.journal.keepLines(false);
  const auto loop = app->append("loop");
  loop->children.push_back(loop);
  EXPECT_EQ(TeamsUI::currentMuteState(), std::nullopt);
  EXPECT_EQ(desk.journal.callCount("accessibility"), 5U + 2 * 40'000U);
  loop->children.clear();
}

}  // namespace
}  // namespace hushbox
