// hushbox-report on the rehearsal desk and on broken ones: what it says, and what it must not say.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "rehearsal/AccessibilityBus.h"
#include "rehearsal/BusConnection.h"
#include "rehearsal/Desk.h"
#include "rehearsal/HushboxProcess.h"
#include "rehearsal/PowerDaemon.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/StoppedProcess.h"

namespace hushbox {
namespace {

namespace fs = std::filesystem;
using rehearsal::Desk;
using rehearsal::MeetingPage;
using rehearsal::PowerDaemon;
using rehearsal::Session;
using testing::AllOf;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using Lines = std::vector<std::string>;

Lines reportIn(const Session& session) {
  static int run = 0;
  const std::string log = "report-" + std::to_string(++run) + ".log";
  const auto program = session.start(log, {HUSHBOX_REPORT});
  EXPECT_EQ(program->waitForExit(), 0);
  std::ifstream file(session.folder() / log);
  Lines lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

class HushboxReportTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    desk_ = std::make_unique<Desk>(Desk::Options{.systemBus = true});
    desk_->audio().plugSpeakerphone();
  }
  static void TearDownTestSuite() { desk_.reset(); }

  static Lines report() { return reportIn(desk_->session()); }

  /// Reports until a line is as expected: a browser shows a change on the accessibility bus later.
  template <typename Matcher>
  static Lines reportWith(Matcher matcher) {
    Lines lines;
    rehearsal::holdsWithin(
        [&] {
          lines = report();
          return testing::Value(lines, Contains(matcher));
        },
        rehearsal::serverTimeout);
    return lines;
  }

  static inline std::unique_ptr<Desk> desk_;
};

TEST_F(HushboxReportTest, SaysWhatItFindsDuringACall) {
  MeetingPage meeting(desk_->browser());
  const auto call = desk_->audio().record();
  const std::string page = "microphone button \"Mute mic (Ctrl+Shift+M)\"";
  const Lines lines = reportWith(EndsWith(page));
  EXPECT_THAT(lines.front(), AllOf(StartsWith("Hushbox "), HasSubstr(" build, ")));
  EXPECT_THAT(lines, Contains("Session bus: replies"));
  EXPECT_THAT(lines, Contains("Hushbox: not running"));
  EXPECT_THAT(lines, Contains(StartsWith("Panel: none shows status items")));
  EXPECT_THAT(lines, Contains(StartsWith("Sound server: pulseaudio ")));
  EXPECT_THAT(lines, Contains(AllOf(StartsWith("Input: Jabra Speak2 75, volume 100 %"),
                                    HasSubstr("mute switch off"), EndsWith(", in use"))));
  EXPECT_THAT(lines, Contains("Accessibility: on"));
  EXPECT_THAT(
      lines, Contains(AllOf(StartsWith("Browser: chrom"), EndsWith(", on the accessibility bus"))));
  EXPECT_THAT(lines, Contains(AllOf(StartsWith("Teams: a page with "), EndsWith(page))));
  EXPECT_THAT(lines, Contains("Launch at login: off"));
}

TEST_F(HushboxReportTest, ShowsVolumeSwitchAndDefault) {
  desk_->audio().setVolume(0.5);
  desk_->audio().setMuteSwitch(true);
  EXPECT_THAT(report(), Contains(AllOf(StartsWith("Input: Jabra Speak2 75, volume 50 %, mute "
                                                  "switch on"),
                                       EndsWith(", not in use"))));
  desk_->audio().setMuteSwitch(false);
  desk_->audio().setVolume(1);
}

TEST_F(HushboxReportTest, SaysThatALabelIsNotEnglish) {
  MeetingPage meeting(desk_->browser());
  meeting.page().evaluate(
      "document.getElementById('microphone-button').setAttribute('aria-label', 'Stummschalten')");
  const std::string page = "microphone button \"Stummschalten\", which is not English";
  EXPECT_THAT(reportWith(EndsWith(page)), Contains(EndsWith(page)));
}

TEST_F(HushboxReportTest, WithholdsNamesTitlesAndTheHomeFolder) {
  const std::string source = "bluez_input.headset";
  desk_->audio().plug(source, "Headset of Rosa");
  MeetingPage meeting(desk_->browser(), {.title = "Dismissal of Jonas | Microsoft Teams"});
  const auto entry =
      desk_->session().home() / ".config" / "autostart" / "org.hushbox.Hushbox.desktop";
  fs::create_directories(entry.parent_path());
  std::ofstream(entry) << "[Desktop Entry]\nType=Application\nName=Hushbox\nExec="
                       << (desk_->session().home() / "bin" / "hushbox").string() << '\n';
  const Lines lines = reportWith(StartsWith("Teams: a page with "));
  EXPECT_THAT(lines, Contains(StartsWith("Teams: a page with ")));
  EXPECT_THAT(lines, Contains("Launch at login: off; the entry starts ~/bin/hushbox"));
  for (const std::string& line : lines) {
    for (const char* secret : {"Rosa", "Jonas", "Amina", "Dismissal", "teams.microsoft.com"})
      EXPECT_THAT(line, Not(HasSubstr(secret)));
    EXPECT_THAT(line, Not(HasSubstr(desk_->session().home().string())));
  }
  fs::remove(entry);
  desk_->audio().unplug(source);
}

TEST_F(HushboxReportTest, NamesTheRunningProgram) {
  rehearsal::HushboxProcess program(desk_->session(), HUSHBOX_PROGRAM);
  EXPECT_THAT(reportWith(StartsWith("Hushbox: running, ")),
              Contains(AllOf(StartsWith("Hushbox: running, "), EndsWith("/hushbox"))));
}

TEST_F(HushboxReportTest, SaysThatAccessibilityIsOff) {
  desk_->accessibility().setEnabled(false);
  const Lines lines = report();
  desk_->accessibility().setEnabled(true);
  EXPECT_THAT(lines, Contains(StartsWith("Accessibility: off")));
  EXPECT_THAT(lines, Contains("Teams: not looked for"));
  EXPECT_FALSE(lines.back().empty());
}

TEST_F(HushboxReportTest, ShowsTheSpeakerphonesBattery) {
  EXPECT_THAT(report(), Contains("Battery: UPower does not reply"));
  if (!PowerDaemon::isInstalled()) GTEST_SKIP() << "UPower or umockdev is not installed.";
  const PowerDaemon power(desk_->session(), PowerDaemon::Battery{.percent = 84});
  EXPECT_THAT(report(), Contains("Battery: Jabra Speak2 75, 84%; discharging; present: true"));
}

TEST(HushboxReportBrokenDeskTest, EveryLineIsThereWithoutAnyServer) {
  const Session session;
  const Lines lines = reportIn(session);
  EXPECT_THAT(lines, Contains(StartsWith("Desktop: ")));
  EXPECT_THAT(lines, Contains("Sound server: not running"));
  EXPECT_THAT(lines, Contains(StartsWith("Accessibility: off")));
  EXPECT_THAT(lines, Contains("Battery: UPower does not reply"));
  EXPECT_THAT(lines, Contains(StartsWith("Journal: ")));
}

TEST(HushboxReportBrokenDeskTest, DoesNotGuessASwitchThatDoesNotReply) {
  const Session session;
  rehearsal::AccessibilityBus(session).setEnabled(true);
  const StoppedProcess stopped(
      rehearsal::BusConnection(session.busAddress()).processOf("org.a11y.Bus"));
  EXPECT_THAT(reportIn(session), Contains("Accessibility: unknown; org.a11y.Bus does not reply"));
}

TEST(HushboxReportBrokenDeskTest, SaysHowToBringABrowserOntoTheBus) {
  const Session session;
  const fs::path program = session.folder() / "epiphany";
  fs::copy_file("/bin/sleep", program);
  const auto browser = session.start("epiphany.log", {program.string(), "60"});
  const std::string line =
      "Browser: epiphany, not on the accessibility bus: close all its windows and start it again "
      "while accessibility is on";
  rehearsal::holdsWithin([&] { return testing::Value(reportIn(session), Contains(line)); },
                         rehearsal::serverTimeout);
  EXPECT_THAT(reportIn(session), Contains(line));
}

TEST(HushboxReportBrokenDeskTest, MissingSessionBusIsALine) {
  Session session;
  session.bus().kill();
  const Lines lines = reportIn(session);
  EXPECT_THAT(lines, Contains(AllOf(StartsWith("Session bus: "), Not(EndsWith("replies")))));
  EXPECT_THAT(lines, Not(Contains(StartsWith("Panel: "))));
  EXPECT_THAT(lines, Contains("Battery: UPower does not reply"));
}

TEST(HushboxReportBrokenDeskTest, ServersThatDoNotReplyHoldItUpBriefly) {
  Desk desk({.browser = false});
  desk.audio().freeze();
  desk.session().bus().freeze();
  const auto begin = std::chrono::steady_clock::now();
  const Lines lines = reportIn(desk.session());
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds{15});
  desk.session().bus().thaw();
  desk.audio().thaw();
  EXPECT_THAT(lines, Contains("Sound server: does not reply"));
  EXPECT_THAT(lines, Contains(AllOf(StartsWith("Session bus: "), Not(EndsWith("replies")))));
  EXPECT_THAT(lines, Contains(StartsWith("Teams: ")));
}

}  // namespace
}  // namespace hushbox
