#include "rehearsal/ServerProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "rehearsal/DeskError.h"
#include "rehearsal/ScratchFolder.h"

namespace hushbox::rehearsal {
namespace {

class ServerProcessTest : public testing::Test {
 protected:
  ServerProcess start(const std::string& script) {
    return ServerProcess({{"sh", "-c", script}, {{"PATH", std::getenv("PATH")}}, log(), {}});
  }
  std::filesystem::path log() const { return scratch_.path() / "log"; }
  std::string logText() const {
    std::ifstream file(log());
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  char state(pid_t process) const {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string number, name;
    char state = '-';
    file >> number >> name >> state;
    return state;
  }
  bool isGone(pid_t process) const { return state(process) == '-' || state(process) == 'Z'; }

  ScratchFolder scratch_;
};

TEST_F(ServerProcessTest, StopKillsAProgramThatIgnoresSigtermAndItsChild) {
  ServerProcess server = start("trap '' TERM; sleep 1000 & echo $!; wait; wait");
  server.waitUntilReady([&] { return logText().find('\n') != std::string::npos; }, "its child");
  const pid_t child = std::stoi(logText());
  ASSERT_FALSE(isGone(child));

  server.stop(Milliseconds{50});

  EXPECT_FALSE(server.isRunning());
  EXPECT_TRUE(isGone(server.pid()));
  EXPECT_TRUE(holdsWithin([&] { return isGone(child); }, serverTimeout));
}

TEST_F(ServerProcessTest, FrozenProgramIsStoppedUntilItIsThawed) {
  ServerProcess server = start("while :; do sleep 0.01; done");

  server.freeze();
  EXPECT_EQ(state(server.pid()), 'T');
  EXPECT_TRUE(server.isRunning());
  server.thaw();
  EXPECT_TRUE(holdsWithin([&] { return state(server.pid()) != 'T'; }, serverTimeout));
}

TEST_F(ServerProcessTest, StopLetsAFrozenProgramHandleSigterm) {
  ServerProcess server = start("trap 'echo bye; exit' TERM; echo up; while :; do sleep 0.01; done");
  server.waitUntilReady([&] { return logText() == "up\n"; }, "its trap");
  server.freeze();
  server.stop(serverTimeout);
  EXPECT_TRUE(isGone(server.pid()));
  EXPECT_NE(logText().find("bye\n"), std::string::npos) << logText();
}

TEST_F(ServerProcessTest, ThrowsWithTheEndOfTheLogIfTheProgramExitsEarly) {
  ServerProcess server = start("echo no such device; exit 3");
  try {
    server.waitUntilReady([] { return false; }, "a server");
    FAIL() << "no exception";
  } catch (const DeskError& error) {
    EXPECT_NE(std::string(error.what()).find("no such device"), std::string::npos) << error.what();
  }
}

TEST_F(ServerProcessTest, ThrowsWithTheNameOfAMissingProgramAndWhatToDo) {
  try {
    ServerProcess({{"no-such-server"}, {}, log(), {}});
    FAIL() << "no exception";
  } catch (const DeskError& error) {
    EXPECT_STREQ(error.what(), "no-such-server is not installed: run script/bootstrap");
  }
}

TEST_F(ServerProcessTest, ChildInheritsOnlyWhatItIsGiven) {
  // Opened without close-on-exec, as some libraries do.
  std::FILE* inheritable = std::fopen("/dev/null", "r");
  ServerProcess server =
      start("ls /proc/self/fd | wc -l; env | grep -c -v -E '^(PATH|PWD|SHLVL|_)='");
  holdsWithin([&] { return !server.isRunning(); }, serverTimeout);
  std::fclose(inheritable);
  // Standard input, output and error, and the folder that ls reads.
  EXPECT_EQ(logText(), "4\n0\n");
}

TEST_F(ServerProcessTest, ChildIsKilledWhenItsParentCrashes) {
  const pid_t program = fork();
  if (program == 0) {
    ServerProcess server = start("echo $$; exec sleep 1000");
    holdsWithin([&] { return !logText().empty(); }, serverTimeout);
    ::kill(getpid(), SIGKILL);
  }
  int status = 0;
  waitpid(program, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status));
  const pid_t server = std::stoi(logText());
  EXPECT_TRUE(holdsWithin([&] { return isGone(server); }, serverTimeout));
}

}  // namespace
}  // namespace hushbox::rehearsal
