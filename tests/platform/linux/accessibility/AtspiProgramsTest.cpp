#include "platform/linux/accessibility/AtspiPrograms.h"

#include <gmock/gmock.h>

#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/AccessibleProgramsFixture.h"

namespace hushbox {
namespace {

using rehearsal::holdsWithin;
using rehearsal::serverTimeout;
using testing::ElementsAre;

using AtspiProgramsTest = AccessibleProgramsFixture;

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

}  // namespace
}  // namespace hushbox
