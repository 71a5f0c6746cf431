#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "tests/platform/linux/fixtures/AccessibleProgramsFixture.h"

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Which documents of programs made of data belong to Teams.
using TeamsDocumentsTest = AccessibleProgramsFixture;

TEST_F(TeamsDocumentsTest, DocumentAtAnAddressOfTeamsCountsWhateverItsTitle) {
  const auto teams = browser({{"/b", button(label)}});
  EXPECT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(teams->performed(), ElementsAre("/b 0"));
}

TEST_F(TeamsDocumentsTest, DocumentsAtOtherAddressesDoNotCount) {
  const auto other = browser({{"/b", button(label)}}, "https://meet.example.org/");
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
}

TEST_F(TeamsDocumentsTest, DocumentCountsOnceItsAddressIsOfTeams) {
  const auto page = browser({{"/b", button(label)}}, "about:blank");
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
  page->put("/document",
            {.role = 95, .documentAttributes = {{"URI", teamsAddress}}, .children = {"/b"}});
  EXPECT_EQ(reader_.read(), label);
}

TEST_F(TeamsDocumentsTest, MeetingInOneBrowserIsNotHiddenByAnotherBrowser) {
  const auto titled = browser({{"/b", button("Buy")}}, {}, "Calls | Microsoft Teams");
  const auto chat = browser({{"/b", button("Send")}});
  ASSERT_EQ(reader_.read(), TeamsReader::noMeeting);
  const auto teams = meeting();
  EXPECT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(teams->performed(), ElementsAre("/b 0"));
}

TEST_F(TeamsDocumentsTest, ForeignPageWithATitleOfTeamsDoesNotCount) {
  const auto foreign =
      browser({{"/b", button(label)}}, "https://www.example.org/", "Calls | Microsoft Teams");
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
  EXPECT_NE(reader_.press(), accessibility::success);
  EXPECT_THAT(foreign->performed(), IsEmpty());
}

TEST_F(TeamsDocumentsTest, TitleCountsWhereTheBrowserReportsNoAddress) {
  const auto titled = browser({{"/b", button(label)}}, {}, "Calls | Microsoft Teams");
  EXPECT_EQ(reader_.read(), label);
}

TEST_F(TeamsDocumentsTest, TitleAmongTheAttributesCountsToo) {
  const auto titled = browser({{"/b", button(label)}}, {});
  titled->put("/document",
              {.role = 95,
               .documentAttributes = {{"URI", ""}, {"Title", "Calls | Microsoft Teams"}},
               .children = {"/b"}});
  EXPECT_EQ(reader_.read(), label);
}

TEST_F(TeamsDocumentsTest, AddressesComeBeforeTitles) {
  const auto titled =
      browser({{"/b", button("Mute mic of a fake")}}, {}, "Calls | Microsoft Teams");
  const auto teams = meeting();
  EXPECT_EQ(reader_.read(), label);
}

TEST_F(TeamsDocumentsTest, NestedDocumentCountsByItsOwnAddress) {
  const auto teams = browser({{"/mic", button(label)}});
  teams->put("/ad", button("Mute mic of an app"));
  teams->put("/app", {.role = 95,
                      .documentAttributes = {{"URI", "https://app.example.org/"}},
                      .children = {"/ad"}});
  teams->put(
      "/document",
      {.role = 95, .documentAttributes = {{"URI", teamsAddress}}, .children = {"/app", "/mic"}});
  EXPECT_EQ(reader_.read(), label);
  EXPECT_THAT(reader_.controls(), ElementsAre(label));
}

TEST_F(TeamsDocumentsTest, ButtonIsInvalidOnceItsPageHasLeftTeams) {
  const auto page = meeting();
  ASSERT_EQ(reader_.read(), label);
  const auto chat = browser({{"/b", button("Send")}});
  TeamsReader another(tree_, tree_.workspace());
  ASSERT_EQ(another.read(), label);
  page->put("/document", {.role = 95,
                          .documentAttributes = {{"URI", "https://www.example.org/"}},
                          .children = {"/b"}});
  EXPECT_EQ(reader_.read(), TeamsReader::noMeeting);
}

TEST_F(TeamsDocumentsTest, NewBrowserIsWokenAndWaitedFor) {
  const auto teams = program();
  teams->put("/b", button(label));
  teams->put("/document",
             {.role = 95, .documentAttributes = {{"URI", teamsAddress}}, .children = {"/b"}});
  // It presents its page only after it was searched once.
  std::atomic<int> searches = 0;
  teams->answerWith([&](const std::string& path, const std::string& method) -> GVariant* {
    if (path != root || method != "GetMatches" || ++searches > 1) return nullptr;
    return g_variant_new("(a(so))", nullptr);
  });
  teams->put(root, {.role = 75, .children = {"/document"}});
  EXPECT_EQ(reader_.read(), label);
}

TEST_F(TeamsDocumentsTest, BrowserWithoutDocumentsIsWaitedForOnlyOnce) {
  const auto empty = program();
  std::atomic<int> searches = 0;
  empty->answerWith([&](const std::string& path, const std::string& method) -> GVariant* {
    searches += path == root && method == "GetMatches";
    return nullptr;
  });
  ASSERT_EQ(reader_.read(), TeamsReader::notRunning);
  EXPECT_GT(searches, 1);
  searches = 0;
  ASSERT_EQ(reader_.read(), TeamsReader::notRunning);
  EXPECT_EQ(searches, 1);
}

TEST_F(TeamsDocumentsTest, BrowserThatFellAsleepIsWokenAndWaitedFor) {
  const auto teams = meeting();
  ASSERT_EQ(reader_.read(), label);
  teams->put(root, {.role = 75});
  teams->remove("/document");
  teams->remove("/b");
  std::atomic<bool> isWoken = false;
  teams->answerWith([&](const std::string& path, const std::string& method) -> GVariant* {
    if (path == root && method == "GetAttributes") isWoken = true;
    return nullptr;
  });
  std::thread browserProcess([&] {
    while (!isWoken) std::this_thread::sleep_for(std::chrono::milliseconds{1});
    std::this_thread::sleep_for(std::chrono::milliseconds{150});
    teams->put("/b2", button(label));
    teams->put("/document2",
               {.role = 95, .documentAttributes = {{"URI", teamsAddress}}, .children = {"/b2"}});
    teams->put(root, {.role = 75, .children = {"/document2"}});
  });
  EXPECT_EQ(reader_.read(), label);
  browserProcess.join();
}

TEST_F(TeamsDocumentsTest, ClientIsRecognisedByItsName) {
  const auto client = program("teams-for-linux", "Chromium");
  client->put("/b", button(label));
  client->put("/document", {.role = 95,
                            .name = "Company page",
                            .documentAttributes = {{"URI", "https://proxy.example.org/"}},
                            .children = {"/b"}});
  client->put(root, {.role = 75, .children = {"/document"}});
  EXPECT_EQ(reader_.read(), label);
}

TEST_F(TeamsDocumentsTest, ClientWithoutDocumentsIsPresentedAsAWhole) {
  const auto client = program("Microsoft Teams", "gtk");
  client->put("/b", button(label));
  client->put("/frame", {.role = 23, .name = "Weekly sync", .children = {"/b"}});
  client->put(root, {.role = 75, .children = {"/frame"}});
  EXPECT_EQ(reader_.read(), label);
  const auto surfaces = reader_.children(reader_.application());
  ASSERT_EQ(surfaces.size(), 1U);
  EXPECT_EQ(reader_.text(surfaces[0], "AXRole"), "AXWindow");
}

TEST_F(TeamsDocumentsTest, ClientWithoutAWindowRunsWithoutAMeeting) {
  const auto client = program("Microsoft Teams", "gtk");
  EXPECT_EQ(reader_.read(), TeamsReader::noMeeting);
}

TEST_F(TeamsDocumentsTest, IgnoresObjectsThatAProgramClaimsForAnother) {
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

}  // namespace
}  // namespace hushbox
