#include "platform/linux/accessibility/AtspiPrograms.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/linux/accessibility/TeamsApplication.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/AccessibleProgramsFixture.h"

namespace hushbox {
namespace {

using rehearsal::holdsWithin;
using rehearsal::serverTimeout;
using testing::ElementsAre;

class AtspiProgramsTest : public AccessibleProgramsFixture {
 protected:
  /// Refreshes the programs until there are so many hosts: on a busy machine a program may reply
  /// later than a program that was never called before is waited for.
  void findPrograms(std::size_t hosts) {
    ASSERT_TRUE(connects(bus_));
    ASSERT_TRUE(holdsWithin(
        [&] {
          programs_.refresh();
          return programs_.hosts().size() == hosts;
        },
        serverTimeout));
    // The bus handles messages in order, so after this call the watches are in place.
    programs_.refresh();
  }

  /// Everything that reads Teams, without the tree above it.
  AtspiBus bus_;
  AtspiPrograms programs_{bus_};
  TeamsDocuments documents_{bus_};
  LabelRefresher labels_{bus_, programs_};
  FollowedControl control_{bus_};
  TeamsRanking ranking_{labels_, [] { return std::vector<std::int32_t>(); }};
  TeamsApplication teams_{bus_, programs_, documents_, labels_, control_, ranking_};
};

TEST_F(AtspiProgramsTest, ProgramIsCalledOverItsOwnSocket) {
  const auto teams = meeting();
  teams->offer((session_.folder() / "peer").string());
  ASSERT_EQ(reader_.read(), label);
  const int before = teams->calls();
  EXPECT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_EQ(teams->calls(), before);
  EXPECT_THAT(teams->performed(), ElementsAre("/b 0"));
}

TEST_F(AtspiProgramsTest, ProgramIsCalledOverTheBusWhenItNamesAForeignSocket) {
  const auto teams = meeting();
  const std::string foreign = accessibility_.address();
  teams->answerWith([&](const std::string&, const std::string& method) -> GVariant* {
    if (method != "GetApplicationBusAddress") return nullptr;
    return g_variant_new("(s)", foreign.c_str());
  });
  EXPECT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(teams->performed(), ElementsAre("/b 0"));
}

TEST_F(AtspiProgramsTest, ProgramIsFoundAgainAfterItClosedItsSocket) {
  const auto teams = meeting();
  teams->offer((session_.folder() / "peer").string());
  ASSERT_EQ(reader_.read(), label);
  teams->hangUp();
  EXPECT_TRUE(holdsWithin([&] { return reader_.read() == label; }, serverTimeout));
}

TEST_F(AtspiProgramsTest, BrowserThatHasExitedIsForgottenWithoutACall) {
  const auto first = meeting();
  auto second = meeting();
  const auto other = program("Editor", "GTK");
  findPrograms(2);
  ASSERT_EQ(programs_.hosts().size(), 2U);
  const std::string name = second->busName();
  const auto calls = bus_.callCount();
  EXPECT_FALSE(programs_.forgetExited());
  second.reset();
  EXPECT_TRUE(
      holdsWithin([&] { return bus_.connect() && programs_.forgetExited(); }, serverTimeout));
  EXPECT_EQ(programs_.find(name), nullptr);
  ASSERT_EQ(programs_.hosts().size(), 1U);
  EXPECT_EQ(programs_.hosts().front()->root.busName, first->busName());
  EXPECT_EQ(bus_.callCount(), calls);
}

TEST_F(AtspiProgramsTest, DocumentsOfABrowserThatHasExitedAreForgotten) {
  auto first = meeting();
  auto second = meeting();
  teams_.beginSnapshot();
  ASSERT_TRUE(teams_.isRunning());
  ASSERT_EQ(teams_.documents().size(), 2U);
  const auto followed = teams_.documents().front();
  control_.follow(followed, {followed->object.busName, "/b"});
  auto exited = followed->object.busName == first->busName() ? std::ref(second) : std::ref(first);
  exited.get().reset();
  EXPECT_TRUE(holdsWithin(
      [&] {
        teams_.beginSnapshot();
        return teams_.isRunning() && teams_.documents().size() == 1;
      },
      serverTimeout));
  EXPECT_EQ(control_.document(), followed);
}

TEST_F(AtspiProgramsTest, BrowserThatIsStartedAgainIsFoundAndWatched) {
  for (int i = 0; i < 3; ++i) {
    auto browser = meeting();
    findPrograms(1);
    ASSERT_NE(programs_.find(browser->busName()), nullptr);
    browser.reset();
    EXPECT_TRUE(
        holdsWithin([&] { return bus_.connect() && programs_.forgetExited(); }, serverTimeout));
    EXPECT_TRUE(programs_.hosts().empty());
  }
}

}  // namespace
}  // namespace hushbox
