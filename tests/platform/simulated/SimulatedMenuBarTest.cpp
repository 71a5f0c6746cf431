#include "platform/simulated/SimulatedMenuBar.h"

#include <gmock/gmock.h>

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SimulatedMenuBarTest : public testing::Test {
 protected:
  Journal journal;
  SimulatedMainLoop loop{journal};
  SimulatedMenuBar menuBar{journal, loop};
  int chosen = 0;

  MenuRow button(const std::string& text, bool enabled = true) {
    return {.kind = MenuRow::Kind::button, .text = text, .enabled = enabled, .action = [this] {
              ++chosen;
            }};
  }
};

TEST_F(SimulatedMenuBarTest, RowLinesShowWhatAUserReads) {
  MenuRow quit = button("Quit Hushbox");
  quit.keyEquivalent = "q";
  MenuRow toggle = button("Launch at login");
  toggle.kind = MenuRow::Kind::toggle;
  MenuRow checked = toggle;
  checked.on = true;
  menuBar.setRows({{.kind = MenuRow::Kind::text, .text = "Not on a call"},
                   {.kind = MenuRow::Kind::separator},
                   toggle,
                   checked,
                   quit});
  EXPECT_THAT(menuBar.rowLines(), ElementsAre("(Not on a call)", "---", "[ ] Launch at login",
                                              "[x] Launch at login", "Quit Hushbox (key q)"));
  EXPECT_EQ(menuBar.rowsCount(), 1U);
  EXPECT_THAT(journal.take("menu"), ElementsAre("rows 5"));
}

TEST_F(SimulatedMenuBarTest, OnlyEnabledRowsCanBeChosen) {
  menuBar.setRows({{.kind = MenuRow::Kind::text, .text = "text"},
                   button("off", false),
                   button("Quit Hushbox")});
  EXPECT_FALSE(menuBar.choose("text"));
  EXPECT_FALSE(menuBar.choose("off"));
  EXPECT_FALSE(menuBar.choose("Quit"));
  EXPECT_EQ(chosen, 0);
  EXPECT_TRUE(menuBar.choose("Quit Hushbox"));
  EXPECT_EQ(chosen, 1);
  menuBar.chooseEveryRow();
  EXPECT_EQ(chosen, 3);
}

TEST_F(SimulatedMenuBarTest, IconIsDrawnOnARecorder) {
  Image icon{.width = 18, .height = 18, .draw = [](Canvas* canvas) {
               if (canvas == nullptr) return false;
               canvas->setAlpha(0.5);
               return true;
             }};
  EXPECT_THAT(menuBar.drawing(), IsEmpty());
  menuBar.setIcon(icon, "Live");
  EXPECT_THAT(menuBar.drawing(), ElementsAre("alpha 0.5"));
  EXPECT_EQ(menuBar.description(), "Live");
  EXPECT_EQ(menuBar.icon().width, 18);
  EXPECT_EQ(menuBar.iconCount(), 1U);
  EXPECT_THAT(journal.take("menu"), ElementsAre("icon \"Live\""));
}

}  // namespace
}  // namespace hushbox
