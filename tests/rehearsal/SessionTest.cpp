#include "rehearsal/Session.h"

#include <gtest/gtest.h>

#include <fstream>

#include "rehearsal/Waiting.h"

namespace hushbox::rehearsal {
namespace {

bool isGone(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string number, name;
  char state = 'Z';
  file >> number >> name >> state;
  return state == 'Z';
}

TEST(SessionTest, KillsProcessesThatHaveLeftTheirProcessGroup) {
  std::vector<pid_t> strays;
  {
    const Session session;
    const std::size_t before = session.processes().size();
    const auto launcher = session.start("stray.log", {"setsid", "--fork", "sleep", "1000"});
    waitUntil([&] { return !launcher->isRunning() && session.processes().size() > before; },
              serverTimeout, "a stray process");
    strays = session.processes();
  }
  for (const pid_t stray : strays) EXPECT_TRUE(isGone(stray)) << stray;
}

}  // namespace
}  // namespace hushbox::rehearsal
