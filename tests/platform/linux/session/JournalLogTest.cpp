#include "platform/linux/session/JournalLog.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "rehearsal/ScratchFolder.h"
#include "rehearsal/Waiting.h"
#include "support/BundleIdentifier.h"
#include "support/Text.h"
#include "tests/platform/linux/fixtures/PrivateJournal.h"

namespace hushbox {
namespace {

using namespace std::string_view_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

/// A datagram socket in place of the journal's.
class JournalSocket {
 public:
  explicit JournalSocket(const std::string& path)
      : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(bind(socket_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }

  /// The fields of the next record; empty for none.
  std::map<std::string, std::string> next() const {
    std::string record(1 << 20, '\0');
    const ssize_t size = recv(socket_.get(), record.data(), record.size(), 0);
    record.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    std::map<std::string, std::string> fields;
    std::string_view rest = record;
    while (!rest.empty()) {
      const std::string name(rest.substr(0, rest.find('\n')));
      std::uint64_t length = 0;
      std::memcpy(&length, rest.data() + name.size() + 1, sizeof length);
      fields[name] = rest.substr(name.size() + 1 + sizeof length, length);
      rest.remove_prefix(name.size() + 1 + sizeof length + length + 1);
    }
    return fields;
  }

 private:
  Descriptor socket_;
};

/// A pipe in place of standard error.
class ErrorPipe {
 public:
  ErrorPipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    reading_.reset(ends[0]);
    writing_.reset(ends[1]);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
  }

  int descriptor() const { return writing_.get(); }

  std::string text() const {
    std::string text;
    std::array<char, 4096> chunk;
    for (ssize_t count; (count = read(reading_.get(), chunk.data(), chunk.size())) > 0;)
      text.append(chunk.data(), static_cast<std::size_t>(count));
    return text;
  }

 private:
  Descriptor reading_, writing_;
};

class JournalLogTest : public testing::Test {
 protected:
  rehearsal::ScratchFolder scratch_;
  const std::string socketPath_ = scratch_.path() / "socket";
  ErrorPipe standardError_;
};

TEST_F(JournalLogTest, RecordCarriesTextLevelSubsystemAndCategory) {
  const JournalSocket journal(socketPath_);
  JournalLog log(socketPath_, standardError_.descriptor());
  log.write("org.hushbox.Hushbox", "notify", LogLevel::error, "Notification failed: gone");
  EXPECT_THAT(journal.next(),
              ElementsAre(Pair("HUSHBOX_CATEGORY", "notify"),
                          Pair("HUSHBOX_SUBSYSTEM", "org.hushbox.Hushbox"),
                          Pair("MESSAGE", "Notification failed: gone"), Pair("PRIORITY", "3"),
                          Pair("SYSLOG_IDENTIFIER", "hushbox")));
  log.write("org.hushbox.Hushbox", "jabra", LogLevel::info, "");
  const auto second = journal.next();
  EXPECT_EQ(second.at("PRIORITY"), "6");
  EXPECT_EQ(second.at("MESSAGE"), "");
  EXPECT_THAT(standardError_.text(), IsEmpty());
}

TEST_F(JournalLogTest, TextCannotForgeFieldsOrLines) {
  const JournalSocket journal(socketPath_);
  JournalLog log(socketPath_, standardError_.descriptor());
  log.write("s", "teams-ui", LogLevel::info, "a\nPRIORITY=0\n\0\x1B[2J\xFF"sv);
  const auto record = journal.next();
  EXPECT_EQ(record.at("MESSAGE"), "a\\nPRIORITY=0\\n\\x00\\x1B[2J\uFFFD");
  EXPECT_EQ(record.at("PRIORITY"), "6");
}

TEST_F(JournalLogTest, LongTextIsTruncatedBetweenCharacters) {
  const JournalSocket journal(socketPath_);
  JournalLog log(socketPath_, standardError_.descriptor());
  std::string arrows;
  for (int i = 0; i < 1'000'000; ++i) arrows += "→";
  // The limit falls before, into and between the bytes of a character.
  for (const char* start : {"", "x", "xx"}) {
    log.write("s", "teams-ui", LogLevel::info, start + arrows);
    const std::string message = journal.next()["MESSAGE"];
    EXPECT_LE(message.size(), JournalLog::maxTextBytes);
    EXPECT_GT(message.size(), JournalLog::maxTextBytes - 4);
    EXPECT_TRUE(text::isValidUtf8(message));
    EXPECT_TRUE(message.ends_with("→"));
  }

  log.write("s", "teams-ui", LogLevel::info, std::string(1'000'000, '\x1B'));
  EXPECT_LE(journal.next()["MESSAGE"].size(), JournalLog::maxTextBytes);
}

TEST_F(JournalLogTest, DoesNotWaitForAJournalThatDoesNotRead) {
  const JournalSocket journal(socketPath_);
  JournalLog log(socketPath_, standardError_.descriptor());
  for (int i = 0; i < 10'000; ++i) log.write("s", "jabra", LogLevel::info, "record");
  EXPECT_THAT(standardError_.text(), IsEmpty());
}

TEST_F(JournalLogTest, WritesToStandardErrorUntilThereIsAJournal) {
  JournalLog log(socketPath_, standardError_.descriptor());
  log.write("s", "coordinator", LogLevel::info, "Mute → Teams\n\x1B[31m");
  EXPECT_EQ(standardError_.text(), "coordinator: Mute → Teams\\n\\x1B[31m\n");
  const JournalSocket journal(socketPath_);
  log.write("s", "coordinator", LogLevel::info, "Unmute → Teams");
  EXPECT_EQ(journal.next()["MESSAGE"], "Unmute → Teams");
  EXPECT_THAT(standardError_.text(), IsEmpty());
}

TEST_F(JournalLogTest, JournalThatHasCrashedCountsAsNone) {
  // Its socket stays behind and refuses records.
  { const JournalSocket journal(socketPath_); }
  JournalLog log(socketPath_, standardError_.descriptor());
  log.write("s", "jabra", LogLevel::info, "text");
  EXPECT_EQ(standardError_.text(), "jabra: text\n");
}

TEST_F(JournalLogTest, PathTooLongForASocketCountsAsNoJournal) {
  JournalLog log("/" + std::string(200, 'x'), standardError_.descriptor());
  log.write("s", "jabra", LogLevel::info, "text");
  EXPECT_EQ(standardError_.text(), "jabra: text\n");
}

TEST_F(JournalLogTest, WritesToATerminalAsWellAsTheJournal) {
  int controller = -1, terminal = -1;
  ASSERT_EQ(openpty(&controller, &terminal, nullptr, nullptr, nullptr), 0);
  const Descriptor first(controller), second(terminal);
  const JournalSocket journal(socketPath_);
  JournalLog log(socketPath_, terminal);
  log.write("s", "jabra", LogLevel::info, "Attached");
  EXPECT_EQ(journal.next()["MESSAGE"], "Attached");
  std::array<char, 100> shown{};
  ASSERT_GT(read(controller, shown.data(), shown.size() - 1), 0);
  EXPECT_STREQ(shown.data(), "jabra: Attached\r\n");
}

TEST_F(JournalLogTest, DoesNotWaitForAFullStandardError) {
  JournalLog log(socketPath_, standardError_.descriptor());
  for (int i = 0; i < 10'000; ++i) log.write("s", "jabra", LogLevel::info, "one more record");
  EXPECT_THAT(standardError_.text(), testing::StartsWith("jabra: one more record\n"));
}

TEST_F(JournalLogTest, ClosedStandardErrorDoesNoHarm) {
  JournalLog log(socketPath_, -1);
  log.write("s", "jabra", LogLevel::info, "text");
}

TEST_F(JournalLogTest, StandardErrorOnAFullDiskDoesNoHarm) {
  const Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
  ASSERT_TRUE(full);
  JournalLog log(socketPath_, full.get());
  log.write("s", "jabra", LogLevel::info, "lost");
  const JournalSocket journal(socketPath_);
  log.write("s", "jabra", LogLevel::info, "kept");
  EXPECT_EQ(journal.next()["MESSAGE"], "kept");
}

TEST_F(JournalLogTest, LinesOfSeveralThreadsAreNotMixed) {
  JournalLog log(socketPath_, standardError_.descriptor());
  const std::string text(500, 'x');
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int j = 0; j < 20; ++j) log.write("s", "jabra", LogLevel::info, text);
    });
  }
  threads.clear();
  std::string expected;
  for (int i = 0; i < 80; ++i) expected += "jabra: " + text + '\n';
  EXPECT_EQ(standardError_.text(), expected);
}

TEST(JournalLogInTheJournal, RecordsAreFoundByTheirFields) {
  std::string whyNot;
  const auto journal = PrivateJournal::make(whyNot);
  if (!journal) GTEST_SKIP() << whyNot;
  JournalLog log;
  log.write(bundleIdentifier, "teams-ui", LogLevel::info, "Pressed Teams mic button 'Mute\n' → 0");
  log.write(bundleIdentifier, "notify", LogLevel::error, "Notification failed: gone");
  std::vector<std::string> lines;
  rehearsal::waitUntil(
      [&] {
        lines = journal->read({"--output=json"});
        return lines.size() == 2;
      },
      rehearsal::serverTimeout, "both records");
  const auto first = nlohmann::json::parse(lines[0]);
  EXPECT_EQ(first["MESSAGE"], "Pressed Teams mic button 'Mute\\n' → 0");
  EXPECT_EQ(first["PRIORITY"], "6");
  EXPECT_EQ(first["HUSHBOX_SUBSYSTEM"], bundleIdentifier);
  EXPECT_EQ(first["HUSHBOX_CATEGORY"], "teams-ui");
  EXPECT_EQ(first["_PID"], std::to_string(getpid()));
  EXPECT_THAT(journal->read({"--output=cat", "--priority=err"}),
              ElementsAre("Notification failed: gone"));
}

TEST_F(JournalLogTest, JournalOnAFullDiskDoesNoHarm) {
  std::string whyNot;
  const auto journal = PrivateJournal::make(whyNot);
  if (!journal) GTEST_SKIP() << whyNot;
  JournalLog log(JournalLog::journalSocket, standardError_.descriptor());
  journal->fillDisk();
  // More than the journal's file has room for.
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 1'000; ++i) {
    log.write(bundleIdentifier, "jabra", LogLevel::info, "lost " + std::string(10'000, 'x'));
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, rehearsal::serverTimeout);
  EXPECT_THAT(standardError_.text(), IsEmpty());
  EXPECT_THAT(journal->read({"--output=cat", "--grep=^lost"}), SizeIs(testing::Lt(1'000U)));
  journal->emptyDisk();
  rehearsal::waitUntil(
      [&] {
        log.write(bundleIdentifier, "jabra", LogLevel::info, "kept");
        return !journal->read({"--output=cat", "--grep=^kept"}).empty();
      },
      rehearsal::serverTimeout, "a record after the disk was full");
}

}  // namespace
}  // namespace hushbox
