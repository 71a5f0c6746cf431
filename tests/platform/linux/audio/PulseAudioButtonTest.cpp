#include <cmath>

#include "tests/platform/linux/fixtures/PulseAudioFixture.h"

namespace hushbox {
namespace {

using testing::ElementsAre;

/// The speakerphone's button after a write of ours. Nobody knows which of level and mute switch a
/// speakerphone's button moves: desktops toggle the switch on a mute key, other headsets move their
/// level. A button toggles: it moves the way that it always moves, from wherever that is.
class PulseAudioButtonTest : public PulseAudioFixture {
 protected:
  void SetUp() override {
    PulseAudioFixture::SetUp();
    server_->setVolume(level);
    device_ = start();
    recordVolumes(device_);
  }

  static void pressSwitch() { server_->setMuteSwitch(!server_->muteSwitch()); }
  static void pressLevel() { server_->setVolume(server_->volume() > 0.0 ? 0.0 : level); }

  /// Has the adapter learn which of the two the button moves.
  void learn(void (*press)()) {
    press();
    waitUntilMuted(true);
    press();
    waitUntilMuted(false);
    volumes_.clear();
  }

  void writeAndWait(bool muted) {
    EXPECT_EQ(write(device_, muted ? 0.0F : static_cast<float>(level)), audio::noError);
    waitUntilMuted(muted);
    settle();
    volumes_.clear();
  }

  /// Each press changes the volume that is read, and the mixer shows the same as we read.
  void expectPressesAreSeen(void (*press)(), bool muted) {
    for (int count = 0; count < 4; ++count) {
      muted = !muted;
      press();
      waitUntilMuted(muted);
      settle();
      EXPECT_THAT(volumes_, ElementsAre(muted ? 0.0F : static_cast<float>(level)));
      EXPECT_EQ(server_->muteSwitch() || server_->volume() == 0.0, muted);
      volumes_.clear();
    }
  }

  void waitUntilMuted(bool muted) {
    eventually([&] { return volumeOf(device_) == (muted ? 0.0F : static_cast<float>(level)); });
  }

  static constexpr double level = 0.75;
  AudioObjectID device_ = 0;
};

TEST_P(PulseAudioButtonTest, SwitchIsSeenAfterAMute) {
  writeAndWait(true);
  expectPressesAreSeen(&pressSwitch, true);
}

TEST_P(PulseAudioButtonTest, LevelIsSeenAfterAMute) {
  writeAndWait(true);
  expectPressesAreSeen(&pressLevel, true);
}

TEST_P(PulseAudioButtonTest, SwitchIsSeenAfterAnUnmute) {
  writeAndWait(true);
  writeAndWait(false);
  expectPressesAreSeen(&pressSwitch, false);
}

TEST_P(PulseAudioButtonTest, LevelIsSeenAfterAnUnmute) {
  writeAndWait(true);
  writeAndWait(false);
  expectPressesAreSeen(&pressLevel, false);
}

TEST_P(PulseAudioButtonTest, SwitchThatMovedBeforeIsSeenAfterAMute) {
  learn(&pressSwitch);
  writeAndWait(true);
  EXPECT_TRUE(server_->muteSwitch());
  EXPECT_EQ(server_->volume(), level);
  expectPressesAreSeen(&pressSwitch, true);
}

TEST_P(PulseAudioButtonTest, LevelThatMovedBeforeIsSeenAfterAMute) {
  learn(&pressLevel);
  writeAndWait(true);
  EXPECT_FALSE(server_->muteSwitch());
  EXPECT_EQ(server_->volume(), 0.0);
  expectPressesAreSeen(&pressLevel, true);
}

TEST_P(PulseAudioButtonTest, LevelIsSeenAfterAMuteByTheSwitch) {
  learn(&pressSwitch);
  writeAndWait(true);
  expectPressesAreSeen(&pressLevel, true);
}

TEST_P(PulseAudioButtonTest, SwitchIsSeenAfterAMuteByTheLevel) {
  learn(&pressLevel);
  writeAndWait(true);
  expectPressesAreSeen(&pressSwitch, true);
}

TEST_P(PulseAudioButtonTest, SwitchIsSeenAfterAReplugThatRestoresOurMute) {
  writeAndWait(true);
  server_->unplugSpeakerphone();
  eventually([&] { return find(AudioServer::speakerphoneName) == 0; });
  server_->replugSpeakerphone();
  eventually([&] { return find(AudioServer::speakerphoneName) != 0; });
  device_ = find(AudioServer::speakerphoneName);
  recordVolumes(device_);
  if (volumeOf(device_) != 0.0F) GTEST_SKIP() << "Nothing restores the level on this server.";
  expectPressesAreSeen(&pressSwitch, true);
}

TEST_P(PulseAudioButtonTest, SwitchAndLevelAreSeenAfterAnUnmuteOfEither) {
  for (void (*const learned)() : {&pressSwitch, &pressLevel}) {
    for (void (*const press)() : {&pressSwitch, &pressLevel}) {
      learn(learned);
      writeAndWait(true);
      writeAndWait(false);
      EXPECT_FALSE(server_->muteSwitch());
      EXPECT_EQ(server_->volume(), level);
      expectPressesAreSeen(press, false);
    }
  }
}

HUSHBOX_ON_BOTH_AUDIO_SERVERS(PulseAudioButtonTest);

}  // namespace
}  // namespace hushbox
