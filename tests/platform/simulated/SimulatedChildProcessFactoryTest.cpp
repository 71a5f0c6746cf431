#include "platform/simulated/SimulatedChildProcessFactory.h"

#include <gmock/gmock.h>

#include "tests/platform/simulated/CaughtViolations.h"

namespace hushbox {
namespace {

using testing::ElementsAre;

class SimulatedChildProcessFactoryTest : public testing::Test {
 protected:
  Journal journal;
  SimulatedMainLoop loop{journal};
  SimulatedChildProcessFactory processes{journal, loop};
};

TEST_F(SimulatedChildProcessFactoryTest, JournalRecordsWhatRanInOrderWithItsThread) {
  processes.install("/usr/bin/pmset", std::string("62%;\n"));
  loop.runInBackground([&] {
    const auto child = processes.make();
    child->setExecutablePath("/usr/bin/pmset");
    child->setArguments({"-g", "accps"});
    EXPECT_TRUE(child->launch());
    EXPECT_EQ(child->readDataToEndOfFile(), "62%;\n");
    child->waitUntilExit();
  });
  processes.make();
  EXPECT_THAT(
      journal.take("processes"),
      ElementsAre("1 make", "1 executable /usr/bin/pmset", "1 arguments -g accps",
                  "1 launch -> true", "1 read 5 bytes", "1 wait", "2 make on the main thread"));
}

TEST_F(SimulatedChildProcessFactoryTest, LaunchFailsWithoutAProgramOrOnRequest) {
  const auto launches = [&](const std::string& path) {
    const auto child = processes.make();
    child->setExecutablePath(path);
    return child->launch();
  };
  processes.install("/bin/broken", [](const auto&) { return std::nullopt; });
  processes.install("/bin/gone", std::string());
  EXPECT_TRUE(launches("/bin/gone"));
  processes.uninstall("/bin/gone");
  EXPECT_FALSE(launches("/bin/gone"));
  EXPECT_FALSE(launches("/bin/broken"));
}

TEST_F(SimulatedChildProcessFactoryTest, OutputDependsOnTheArguments) {
  processes.install("/bin/echo",
                    [](const std::vector<std::string>& arguments) -> std::optional<std::string> {
                      return arguments.empty() ? "none" : arguments[0];
                    });
  const auto child = processes.make();
  child->setExecutablePath("/bin/echo");
  child->setArguments({"word"});
  EXPECT_TRUE(child->launch());
  EXPECT_EQ(child->readDataToEndOfFile(), "word");
  EXPECT_EQ(child->readDataToEndOfFile(), "");
}

TEST_F(SimulatedChildProcessFactoryTest, UseBeforeTheLaunchIsAViolation) {
  const CaughtViolations caught;
  const auto child = processes.make();
  child->readDataToEndOfFile();
  child->waitUntilExit();
  EXPECT_EQ(caught.messages().size(), 2U);
}

}  // namespace
}  // namespace hushbox
