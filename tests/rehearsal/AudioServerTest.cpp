#include "rehearsal/AudioServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <map>
#include <memory>
#include <thread>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {
namespace {

using testing::HasSubstr;
using testing::Not;

/// Runs on PulseAudio and on PipeWire. All tests of one server share a session.
class AudioServerTest : public testing::TestWithParam<AudioFlavour> {
 protected:
  struct Room {
    explicit Room(AudioFlavour flavour) : server(session, flavour) {}
    Session session;
    AudioServer server;
  };

  static void TearDownTestSuite() { rooms_.clear(); }

  void SetUp() override {
    auto& room = rooms_[GetParam()];
    if (!room) room = std::make_unique<Room>(GetParam());
    session_ = &room->session;
    server_ = &room->server;
    server_->plugSpeakerphone();
    server_->observer().clear();
  }
  void TearDown() override {
    if (server_->hasSpeakerphone()) server_->unplugSpeakerphone();
  }

  /// The output of the sound server's own tool, a client independent of ours.
  std::string pactl(const std::string& question) const {
    const std::string command = "PULSE_SERVER=" + session_->environment().at("PULSE_SERVER") +
                                " LC_ALL=C pactl " + question;
    std::string text;
    std::FILE* tool = popen(command.c_str(), "r");
    std::array<char, 4096> buffer{};
    while (std::fgets(buffer.data(), buffer.size(), tool)) text += buffer.data();
    pclose(tool);
    return text;
  }
  void waitForRunning(bool running) const {
    waitUntil([&] { return server_->isSpeakerphoneRunning() == running; }, serverTimeout,
              running ? "the speakerphone to run" : "the speakerphone to stop");
  }

  static inline std::map<AudioFlavour, std::unique_ptr<Room>> rooms_;
  Session* session_ = nullptr;
  AudioServer* server_ = nullptr;
};

TEST_P(AudioServerTest, AnotherProgramSeesTheSpeakerphoneAndTheDecoys) {
  const std::string sources = pactl("list sources");
  EXPECT_THAT(sources, HasSubstr("Description: Jabra Speak2 75\n"));
  EXPECT_THAT(sources, HasSubstr("Description: Monitor of Jabra Speak2 75\n"));
  EXPECT_THAT(sources, HasSubstr("Description: Built-in Microphone\n"));
}

TEST_P(AudioServerTest, SpeakerphoneCanBeUnpluggedAndPluggedInAgain) {
  server_->unplugSpeakerphone();
  EXPECT_FALSE(server_->hasSpeakerphone());
  EXPECT_THAT(pactl("list sources"), Not(HasSubstr("Description: Jabra Speak2 75\n")));
  server_->plugSpeakerphone("Jabra Evolve");
  EXPECT_THAT(pactl("list sources"), HasSubstr("Description: Jabra Evolve\n"));
}

TEST_P(AudioServerTest, MuteButtonSetsTheVolumeToExactlyZeroAndIsRecorded) {
  EXPECT_EQ(server_->volume(), 1.0);
  server_->setVolume(0.0);
  EXPECT_EQ(server_->volume(), 0.0);
  EXPECT_THAT(pactl("get-source-volume alsa_input.usb-Jabra_Speak2_75"), HasSubstr("mono: 0 /"));
  server_->setVolume(0.3);
  EXPECT_NEAR(server_->volume(), 0.3, 0.0001);

  const VolumeChange down = server_->observer().waitForVolume(0.0);
  const VolumeChange up = server_->observer().waitForVolume(0.3);
  EXPECT_LT(down.when, up.when);
}

TEST_P(AudioServerTest, MuteSwitchIsIndependentOfTheVolume) {
  server_->setMuteSwitch(true);
  EXPECT_TRUE(server_->muteSwitch());
  EXPECT_EQ(server_->volume(), 1.0);
  EXPECT_THAT(pactl("get-source-mute alsa_input.usb-Jabra_Speak2_75"), HasSubstr("Mute: yes"));
  waitUntil(
      [&] {
        return !server_->observer().history().empty() &&
               server_->observer().history().back().muteSwitch;
      },
      serverTimeout, "the observer to see the switch");
}

TEST_P(AudioServerTest, SpeakerphoneRunsDuringACall) {
  EXPECT_EQ(pactl("list short source-outputs"), "");
  auto call = server_->record();
  waitForRunning(true);
  EXPECT_GT(call->bytes(), 0U);
  EXPECT_NE(pactl("list short source-outputs"), "");
  call.reset();
  waitForRunning(false);
}

TEST_P(AudioServerTest, MeterHasItsNameAndAPausedStreamRecordsNothing) {
  {
    const auto paused = server_->corkedRecord();
    EXPECT_THAT(pactl("list source-outputs"), HasSubstr("Corked: yes"));
    letPass(Milliseconds{100});
    EXPECT_EQ(paused->bytes(), 0U);
    paused->uncork();
    waitUntil([&] { return paused->bytes() > 0; }, serverTimeout, "sound");
    waitForRunning(true);
  }
  const auto meter = server_->meter();
  const std::string outputs = pactl("list source-outputs");
  EXPECT_THAT(outputs, HasSubstr("media.name = \"Peak detect\""));
  EXPECT_THAT(outputs, HasSubstr("application.id = \"org.PulseAudio.pavucontrol\""));
  waitForRunning(true);
}

TEST_P(AudioServerTest, ServerAndItsDevicesCanBeRestartedAfterACrash) {
  server_->setVolume(0.5);
  const auto call = server_->record();
  server_->kill();
  EXPECT_FALSE(server_->isRunning());
  EXPECT_THROW(server_->volume(), DeskError);

  server_->restart();
  EXPECT_TRUE(server_->isRunning());
  EXPECT_EQ(server_->volume(), 1.0);
  EXPECT_THAT(pactl("list sources"), HasSubstr("Description: Monitor of Jabra Speak2 75\n"));
  server_->setVolume(0.25);
  server_->observer().waitForVolume(0.25);
}

TEST_P(AudioServerTest, FrozenServerRepliesToNothingUntilItIsThawed) {
  server_->freeze();
  std::thread press([&] { server_->setVolume(0.0); });
  letPass(Milliseconds{100});
  for (const VolumeChange& change : server_->observer().history()) EXPECT_NE(change.volume, 0.0);
  server_->thaw();
  press.join();
  server_->observer().waitForVolume(0.0);
}

INSTANTIATE_TEST_SUITE_P(Servers, AudioServerTest,
                         testing::Values(AudioFlavour::PulseAudio, AudioFlavour::PipeWire),
                         [](const auto& flavour) {
                           return flavour.param == AudioFlavour::PulseAudio ? "PulseAudio"
                                                                            : "PipeWire";
                         });

}  // namespace
}  // namespace hushbox::rehearsal
