#include "platform/linux/accessibility/TeamsSigns.h"

#include <gmock/gmock.h>

namespace hushbox::teams_signs {
namespace {

TEST(TeamsSignsTest, AcceptsAddressesOfEveryCloudOfTeams) {
  for (const char* uri :
       {"https://teams.microsoft.com/v2/", "https://teams.live.com/meet/93",
        "https://TEAMS.live.com", "https://teams.cloud.microsoft/",
        "https://gov.teams.microsoft.us/_#/x", "https://dod.teams.microsoft.us/",
        "https://teams.microsoftonline.cn/", "https://teams.microsoft.com:443/l/meetup-join?q=1",
        "https://user@teams.microsoft.com/", "https://teams.microsoft.com?x",
        "https://teams.microsoft.com#x"})
    EXPECT_TRUE(isAddress(uri)) << uri;
}

TEST(TeamsSignsTest, RejectsAddressesThatOnlyLookLikeTeams) {
  for (const char* uri :
       {"", "https://", "https:///", "http://teams.microsoft.com/", "file:///teams.microsoft.com",
        "https://www.microsoft.com/microsoft-teams", "https://notteams.microsoft.com/",
        "https://teams.microsoft.com.example.org/", "https://example.org/teams.microsoft.com",
        "https://example.org?https://teams.microsoft.com/", "https://example.org#@teams.live.com",
        "https://teams.microsoft.com@example.org/", "https://example.org\\@teams.live.com/",
        "https://microsoft.com/", "data:text/html,https://teams.microsoft.com/"})
    EXPECT_FALSE(isAddress(uri)) << uri;
}

TEST(TeamsSignsTest, AcceptsTitlesByTheirEnd) {
  EXPECT_TRUE(isTitle("Weekly sync | Microsoft Teams"));
  EXPECT_TRUE(isTitle("(3) Chat | Amina | Microsoft Teams"));
  EXPECT_FALSE(isTitle("Microsoft Teams"));
  EXPECT_FALSE(isTitle("Weekly sync | Microsoft Teams - Wiki"));
  EXPECT_FALSE(isTitle(""));
}

TEST(TeamsSignsTest, AcceptsClientsByTheirWholeName) {
  EXPECT_TRUE(isClientName("teams-for-linux"));
  EXPECT_TRUE(isClientName("Microsoft Teams"));
  EXPECT_TRUE(isClientName("teams"));
  EXPECT_FALSE(isClientName("Chromium"));
  EXPECT_FALSE(isClientName("teams-for-linux-helper"));
  EXPECT_FALSE(isClientName(""));
}

}  // namespace
}  // namespace hushbox::teams_signs
