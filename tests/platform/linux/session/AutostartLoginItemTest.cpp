#include "platform/linux/session/AutostartLoginItem.h"

#include <gio/gdesktopappinfo.h>
#include <gmock/gmock.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "platform/linux/processes/SpawnedChildProcessFactory.h"
#include "rehearsal/ScratchFolder.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/RefusedFolder.h"
#include "tests/platform/linux/fixtures/ScopedEnvironment.h"

namespace hushbox {
namespace {

namespace fs = std::filesystem;
using Status = LoginItem::Status;
using testing::HasSubstr;

class AutostartLoginItemTest : public testing::Test {
 protected:
  void writeEntry(const std::string& lines) const {
    fs::create_directories(folder_);
    std::ofstream(file_) << "[Desktop Entry]\nType=Application\nName=Hushbox\nExec=/bin/true\n"
                         << lines << '\n';
  }

  std::string entry() const {
    std::ifstream file(file_);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  static std::ptrdiff_t filesIn(const fs::path& folder) {
    return std::distance(fs::directory_iterator(folder), {});
  }

  rehearsal::ScratchFolder scratch_;
  const fs::path folder_ = scratch_.path() / "config" / "autostart";
  const fs::path file_ = folder_ / "org.hushbox.Hushbox.desktop";
  AutostartLoginItem item_{folder_, "/bin/true"};
};

TEST_F(AutostartLoginItemTest, RegisteringCreatesTheFolderAndOneReadableEntry) {
  EXPECT_EQ(item_.status(), Status::notRegistered);
  EXPECT_TRUE(item_.registerItem());
  EXPECT_EQ(item_.status(), Status::enabled);
  EXPECT_EQ(filesIn(folder_), 1);
  EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0644));
}

TEST_F(AutostartLoginItemTest, RegisteringLeaksNothing) {
  ASSERT_TRUE(item_.registerItem());
  const auto before = mallinfo2().uordblks;
  for (int i = 0; i < 300; ++i) ASSERT_TRUE(item_.registerItem());
  EXPECT_LT(mallinfo2().uordblks, before + 50'000);
}

TEST_F(AutostartLoginItemTest, EntryIsWritableOnlyByItsUserWhateverTheFileModeMask) {
  const mode_t before = umask(0);
  const bool isRegistered = item_.registerItem();
  umask(before);
  ASSERT_TRUE(isRegistered);
  EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0644));
  EXPECT_EQ(fs::status(folder_).permissions() & fs::perms(022), fs::perms::none);
}

TEST_F(AutostartLoginItemTest, EntryFollowsTheRulesForDesktopEntries) {
  ASSERT_TRUE(item_.registerItem());
  SpawnedChildProcessFactory processes{ChildProcessRules{}};
  const auto validator = processes.make();
  validator->setExecutablePath("/usr/bin/desktop-file-validate");
  validator->setArguments({file_});
  if (!validator->launch()) GTEST_SKIP() << "desktop-file-validate is not installed.";
  EXPECT_EQ(validator->readDataToEndOfFile(), "") << entry();
}

TEST_F(AutostartLoginItemTest, SystemdStopsTheProgramWithTheGraphicalSession) {
  const std::string generator = "/usr/lib/systemd/user-generators/systemd-xdg-autostart-generator";
  if (!fs::exists(generator)) GTEST_SKIP() << "systemd is not installed.";
  ASSERT_TRUE(item_.registerItem());
  ScopedEnvironment environment;
  environment.set("XDG_CONFIG_HOME", folder_.parent_path());
  environment.set("XDG_CONFIG_DIRS", "/nowhere");
  const std::string units = scratch_.makeFolder("units");
  std::string command = generator;
  for (int i = 0; i < 3; ++i) command += " '" + units + "'";
  ASSERT_EQ(std::system(command.c_str()), 0);
  std::ifstream file(fs::path(units) / "app-org.hushbox.Hushbox@autostart.service");
  const std::string unit(std::istreambuf_iterator<char>(file), {});
  EXPECT_THAT(unit, HasSubstr("\nPartOf=graphical-session.target\n"));
  EXPECT_THAT(unit, HasSubstr("/bin/true\n"));
}

TEST_F(AutostartLoginItemTest, EntryNamesTheProgramThatADesktopLooksForFirst) {
  ASSERT_TRUE(item_.registerItem());
  // Without this key, a desktop reports an error at every login once the program is uninstalled.
  EXPECT_THAT(entry(), testing::HasSubstr("\nTryExec=/bin/true\n"));
}

TEST_F(AutostartLoginItemTest, UnregisteringRemovesTheEntryAndMayBeRepeated) {
  ASSERT_TRUE(item_.registerItem());
  EXPECT_TRUE(item_.unregisterItem());
  EXPECT_FALSE(fs::exists(file_));
  EXPECT_TRUE(item_.unregisterItem());
  EXPECT_EQ(item_.status(), Status::notRegistered);
}

TEST_F(AutostartLoginItemTest, StatusFollowsChangesByOtherPrograms) {
  writeEntry("");
  EXPECT_EQ(item_.status(), Status::enabled);
  writeEntry("X-GNOME-Autostart-enabled=true");
  EXPECT_EQ(item_.status(), Status::enabled);
  for (const char* off : {"Hidden=true", "X-GNOME-Autostart-enabled=false", "OnlyShowIn=Nowhere;",
                          "TryExec=/nowhere/hushbox", "Exec=/nowhere/hushbox", "Exec="}) {
    writeEntry(off);
    EXPECT_EQ(item_.status(), Status::notRegistered) << off;
  }
  fs::remove(file_);
  EXPECT_EQ(item_.status(), Status::notRegistered);
}

TEST_F(AutostartLoginItemTest, EntryOfAnotherCopyCountsAsNotRegisteredAndIsReplaced) {
  const fs::path copy = scratch_.path() / "hushbox";
  fs::copy_file("/bin/true", copy);
  AutostartLoginItem other(folder_, copy);
  ASSERT_TRUE(other.registerItem());
  EXPECT_EQ(other.status(), Status::enabled);
  EXPECT_EQ(item_.status(), Status::notRegistered);
  EXPECT_TRUE(item_.registerItem());
  EXPECT_EQ(item_.status(), Status::enabled);
  EXPECT_EQ(other.status(), Status::notRegistered);
}

TEST_F(AutostartLoginItemTest, EntryMayNameTheProgramByALinkOrFromThePathAndWithArguments) {
  const fs::path link = scratch_.path() / "link";
  fs::create_symlink("/bin/true", link);
  for (const std::string& command : {link.string(), std::string("true"), std::string("true %U")}) {
    writeEntry("Exec=" + command);
    EXPECT_EQ(item_.status(), Status::enabled) << command;
  }
  for (const char* command : {"false", "/bin/sh -c true", "\"/bin/true"}) {
    writeEntry(std::string("Exec=") + command);
    EXPECT_EQ(item_.status(), Status::notRegistered) << command;
  }
}

TEST_F(AutostartLoginItemTest, RegisteringReplacesAnEntryThatIsSwitchedOffOrBroken) {
  for (const char* before : {"Hidden=true", "X-GNOME-Autostart-enabled=false", "nonsense"}) {
    writeEntry(before);
    EXPECT_TRUE(item_.registerItem());
    EXPECT_EQ(item_.status(), Status::enabled) << before;
  }
  std::ofstream(file_) << std::string(1000, '\0');
  EXPECT_EQ(item_.status(), Status::notRegistered);
  EXPECT_TRUE(item_.registerItem());
  EXPECT_EQ(item_.status(), Status::enabled);
}

TEST_F(AutostartLoginItemTest, EntryStartsAProgramOfAnyName) {
  // GLib reads the entry as a desktop does; the program writes down how it was called.
  for (const char* name : {"plain", "with space", "quote\"d", "$HOME", "100% %u %%", "back\\slash",
                           "`tick`", "it's", "semi;colon", "a\tb", "ünï → ☂", "#hash~*?&|<>()"}) {
    const fs::path program = scratch_.path() / name;
    const fs::path note = scratch_.path() / "note";
    fs::remove(note);
    std::ofstream(program) << "#!/bin/sh\nprintf '%s|%s' \"$0\" $# >'" << note.string() << "'\n";
    fs::permissions(program, fs::perms::owner_all);
    AutostartLoginItem item(folder_, program);
    ASSERT_TRUE(item.registerItem()) << name;
    EXPECT_EQ(item.status(), Status::enabled) << name;

    const std::unique_ptr<GDesktopAppInfo, void (*)(gpointer)> info(
        g_desktop_app_info_new_from_filename(file_.c_str()), g_object_unref);
    ASSERT_TRUE(info);
    ASSERT_TRUE(g_app_info_launch(G_APP_INFO(info.get()), nullptr, nullptr, nullptr)) << entry();
    std::string called;
    EXPECT_TRUE(rehearsal::holdsWithin(
        [&] {
          std::getline(std::ifstream(note) >> std::ws, called, '\0');
          return called == program.string() + "|0";
        },
        rehearsal::serverTimeout))
        << called << '\n'
        << entry();
  }
}

TEST_F(AutostartLoginItemTest, RefusesAPathThatCannotStandInAnEntry) {
  for (const char* program : {"", "hushbox", "bin/hushbox", "/opt/caf\xE9/hushbox", "/opt/a=b"}) {
    EXPECT_FALSE(AutostartLoginItem(folder_, program).registerItem()) << program;
    EXPECT_FALSE(fs::exists(file_));
  }
  AutostartLoginItem homeless({}, "/bin/true");
  EXPECT_FALSE(homeless.registerItem());
  EXPECT_EQ(homeless.status(), Status::notRegistered);
}

TEST_F(AutostartLoginItemTest, RegisteringFailsWhenTheFolderCannotBeCreated) {
  std::ofstream(scratch_.path() / "config") << "a file";
  EXPECT_FALSE(item_.registerItem());
  EXPECT_EQ(item_.status(), Status::notRegistered);
}

TEST_F(AutostartLoginItemTest, RegisteringFailsInAReadOnlyFolderAndChangesNothing) {
  RefusedFolder folder;
  AutostartLoginItem item(folder.path(), "/bin/true");
  ASSERT_TRUE(item.registerItem());
  folder.refuse();
  EXPECT_FALSE(item.unregisterItem());
  EXPECT_EQ(item.status(), Status::enabled);
  EXPECT_FALSE(AutostartLoginItem(folder.path(), "/bin/false").registerItem());
  EXPECT_EQ(filesIn(folder.path()), 1);
}

TEST_F(AutostartLoginItemTest, FullDiskLeavesNoPartialEntry) {
  writeEntry("X-Before=kept");
  const std::string before = entry();
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit none{0, limit.rlim_max};
  setrlimit(RLIMIT_FSIZE, &none);
  const bool registered = item_.registerItem();
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, handler);
  EXPECT_FALSE(registered);
  EXPECT_EQ(entry(), before);
  EXPECT_EQ(filesIn(folder_), 1);
}

TEST_F(AutostartLoginItemTest, EntryThatIsAFolderIsLeftAlone) {
  fs::create_directories(file_);
  EXPECT_EQ(item_.status(), Status::notRegistered);
  EXPECT_FALSE(item_.registerItem());
  EXPECT_FALSE(item_.unregisterItem());
  EXPECT_TRUE(fs::is_directory(file_));
}

TEST_F(AutostartLoginItemTest, SessionFolderIsInTheConfigurationHome) {
  ScopedEnvironment environment;
  environment.set("HOME", "/home/somebody");
  environment.set("XDG_CONFIG_HOME", "/elsewhere");
  EXPECT_EQ(AutostartLoginItem::sessionFolder(), "/elsewhere/autostart");
  for (const auto& none : {std::optional<std::string>(), std::optional<std::string>(""),
                           std::optional<std::string>("relative")}) {
    environment.set("XDG_CONFIG_HOME", none);
    EXPECT_EQ(AutostartLoginItem::sessionFolder(), "/home/somebody/.config/autostart");
  }
  environment.set("HOME", std::nullopt);
  EXPECT_EQ(AutostartLoginItem::sessionFolder(), "");
}

TEST_F(AutostartLoginItemTest, ReturnsThePathOfTheRunningProgram) {
  EXPECT_THAT(
      AutostartLoginItem::runningProgram(),
      testing::AllOf(testing::StartsWith("/"), testing::EndsWith("hushbox_linux_session_tests")));
}

}  // namespace
}  // namespace hushbox
