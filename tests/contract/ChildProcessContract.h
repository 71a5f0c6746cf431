#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/contract/ChildProcessDriver.h"
#include "tests/contract/Contract.h"

namespace hushbox {

/// What every ChildProcessFactory and its processes do.
class ChildProcessContract : public Contract<ChildProcessDriver> {
 protected:
  /// Runs a program that prints `expected` and returns what was read.
  std::string output(const std::string& path, const std::vector<std::string>& arguments,
                     const std::string& expected) {
    driver().script(path, arguments, expected);
    const auto child = driver().factory().make();
    child->setExecutablePath(path);
    child->setArguments(arguments);
    EXPECT_TRUE(child->launch());
    std::string read = child->readDataToEndOfFile();
    child->waitUntilExit();
    return read;
  }

  std::string shell(const std::string& command, const std::string& expected) {
    return output("/bin/sh", {"-c", command}, expected);
  }

  bool launches(const std::string& path) {
    const auto child = driver().factory().make();
    child->setExecutablePath(path);
    child->setArguments({"-g", "accps"});
    return child->launch();
  }
};

TEST_P(ChildProcessContract, OutputIsReadToItsEnd) {
  EXPECT_EQ(output("/bin/echo", {"62%; discharging"}, "62%; discharging\n"), "62%; discharging\n");
}

TEST_P(ChildProcessContract, ArgumentsArriveUnchanged) {
  const std::vector<std::string> arguments = {"a b", "", "$HOME", "\"", "é"};
  const std::string expected = "a b  $HOME \" é\n";
  EXPECT_EQ(output("/bin/echo", arguments, expected), expected);
}

TEST_P(ChildProcessContract, ProgramWithoutOutputReadsAsEmpty) {
  EXPECT_EQ(shell(":", ""), "");
}

TEST_P(ChildProcessContract, OutputIsKeptByteForByte) {
  const std::string bytes("a\0\xFF\r\n", 5);
  EXPECT_EQ(shell("printf 'a\\000\\377\\r\\n'", bytes), bytes);
}

TEST_P(ChildProcessContract, OutputLargerThanAPipeDoesNotBlock) {
  const std::string large(1'000'000, 'x');
  EXPECT_TRUE(shell("head -c 1000000 /dev/zero | tr '\\000' x", large) == large);
}

TEST_P(ChildProcessContract, OutputWrittenInPiecesIsReadWhole) {
  EXPECT_EQ(shell("printf one; sleep 0.1; printf two", "onetwo"), "onetwo");
}

TEST_P(ChildProcessContract, ExitStatusDoesNotMatter) {
  EXPECT_EQ(shell("printf 7; exit 3", "7"), "7");
  EXPECT_EQ(shell("printf 7; kill -9 $$", "7"), "7");
}

TEST_P(ChildProcessContract, StandardErrorIsNotRead) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(shell("printf hidden >&2; printf shown", "shown"), "shown");
  testing::internal::GetCapturedStderr();
}

TEST_P(ChildProcessContract, LaunchReturnsFalseIfTheProgramCannotBeStarted) {
  EXPECT_FALSE(launches("/nowhere/pmset"));
  // A folder, and a file that is not executable.
  EXPECT_FALSE(launches("/"));
  EXPECT_FALSE(launches("/etc/passwd"));
  EXPECT_FALSE(launches(""));
}

TEST_P(ChildProcessContract, EachChildHasItsOwnOutput) {
  driver().script("/bin/echo", {"one"}, "one\n");
  driver().script("/bin/echo", {"two"}, "two\n");
  std::vector<std::unique_ptr<ChildProcess>> children;
  for (const char* word : {"one", "two"}) {
    children.push_back(driver().factory().make());
    children.back()->setExecutablePath("/bin/echo");
    children.back()->setArguments({word});
    ASSERT_TRUE(children.back()->launch());
  }
  EXPECT_EQ(children[1]->readDataToEndOfFile(), "two\n");
  EXPECT_EQ(children[0]->readDataToEndOfFile(), "one\n");
  for (const auto& child : children) child->waitUntilExit();
}

TEST_P(ChildProcessContract, ProcessThatWasNeverLaunchedCanBeDestroyed) {
  EXPECT_NE(driver().factory().make(), nullptr);
}

}  // namespace hushbox
