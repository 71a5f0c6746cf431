#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <utility>

#include "tests/teams/TeamsUIFixture.h"

namespace hushbox {
namespace {

class TeamsUICacheTest : public TeamsUIFixture {
 protected:
  /// Expects the next reading to read the cached button "Mute", and nothing else.
  void expectTheCachedButton() {
    desk.journal.take();
    EXPECT_EQ(TeamsUI::currentMuteState(), false);
    EXPECT_EQ(desk.journal.take(), joined(approach(), sixReads("Mute")));
  }
};

TEST_F(TeamsUICacheTest, SecondCallReadsOnlyTheCachedButton) {
  show("Mute");
  TeamsUI::currentMuteState();
  expectTheCachedButton();
}

TEST_F(TeamsUICacheTest, CachedButtonIsReadAgainAtEachCall) {
  const auto microphone = show("Mute");
  EXPECT_EQ(TeamsUI::currentMuteState(), false);
  microphone->attributes["AXDescription"] = "Unmute";
  EXPECT_EQ(TeamsUI::currentMuteState(), true);
}

TEST_F(TeamsUICacheTest, CachedButtonIsKeptEvenIfAnotherPrecedesIt) {
  show("Mute");
  TeamsUI::currentMuteState();
  app->append("earlier", button("Unmute"));
  std::swap(app->children.front(), app->children.back());
  EXPECT_EQ(TeamsUI::currentMuteState(), false);
}

TEST_F(TeamsUICacheTest, PressCachesTheButton) {
  show("Mute");
  TeamsUI::setMuted(std::nullopt);
  expectTheCachedButton();
}

TEST_F(TeamsUICacheTest, ButtonOfATeamsThatExitedIsDropped) {
  show("Mute");
  TeamsUI::currentMuteState();
  desk.accessibility.quit(501);
  app = desk.accessibility.launch(501);
  show("Unmute");
  desk.journal.take();
  EXPECT_EQ(TeamsUI::currentMuteState(), true);
  EXPECT_EQ(desk.journal.take(),
            joined(joined(joined(approach(), {"accessibility: copy microphone AXRole -> -25202"}),
                          walkToTheMicrophone()),
                   sixReads("Unmute")));
}

TEST_F(TeamsUICacheTest, ElementThatIsNoLongerTheButtonIsDropped) {
  const auto microphone = show("Mute");
  TeamsUI::currentMuteState();
  microphone->attributes["AXDescription"] = "Camera";
  EXPECT_EQ(TeamsUI::currentMuteState(), std::nullopt);
  // When it is the button again, a walk finds it.
  microphone->attributes["AXDescription"] = "Mute";
  desk.journal.take();
  EXPECT_EQ(TeamsUI::currentMuteState(), false);
  EXPECT_EQ(desk.journal.take(),
            joined(joined(approach(), walkToTheMicrophone()), sixReads("Mute")));
}

TEST_F(TeamsUICacheTest, CachedButtonIsKeptWhilePermissionOrTeamsIsMissing) {
  show("Mute");
  TeamsUI::currentMuteState();
  desk.accessibility.setTrusted(false);
  TeamsUI::currentMuteState();
  TeamsUI::setMuted(true);
  desk.accessibility.setTrusted(true);
  desk.workspace.quit(501);
  TeamsUI::currentMuteState();
  TeamsUI::setMuted(true);
  desk.workspace.launch({"com.microsoft.teams2", 501});
  expectTheCachedButton();
}

TEST_F(TeamsUICacheTest, CachedButtonIsKeptAfterAFailedPressAndWithoutAPress) {
  show("Mute", accessibility::cannotComplete);
  for (const bool wanted : {true, false}) {
    TeamsUI::setMuted(wanted);
    expectTheCachedButton();
  }
}

TEST_F(TeamsUICacheTest, CachedButtonOfAnotherTeamsIsKeptWhileThatOneRuns) {
  show("Unmute");
  TeamsUI::currentMuteState();
  desk.workspace.quit(501);
  desk.workspace.launch({"com.microsoft.teams", 502});
  desk.accessibility.launch(502)->append("other", button("Mute"));
  EXPECT_EQ(TeamsUI::currentMuteState(), true);
  desk.accessibility.quit(501);
  EXPECT_EQ(TeamsUI::currentMuteState(), false);
}

TEST(TeamsUICacheScopeTest, ButtonIsDroppedWhenThePlatformCloses) {
  // The third shows what the second has left behind.
  for (int desks = 0; desks < 3; ++desks) {
    SimulatedDesk desk;
    desk.teams.joinMeeting(false);
    EXPECT_EQ(TeamsUI::currentMuteState(), false);
    // The first element read is the application, so no button was cached.
    for (const std::string& line : desk.journal.take("accessibility")) {
      if (!line.starts_with("copy")) continue;
      EXPECT_THAT(line, testing::StartsWith("copy application 501 AXRole"));
      break;
    }
  }
}

}  // namespace
}  // namespace hushbox
