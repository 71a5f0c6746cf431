#include <pulse/pulseaudio.h>

#include <cmath>
#include <limits>
#include <mutex>
#include <thread>

#include "tests/platform/linux/fixtures/PulseAudioFixture.h"

namespace hushbox {
namespace {

using rehearsal::AudioClient;
using testing::ElementsAre;
using testing::FloatNear;
using testing::IsEmpty;

// Servers store a volume in steps of 1/65536.
constexpr float step = 1.0F / PA_VOLUME_NORM;

class PulseAudioVolumeTest : public PulseAudioFixture {
 protected:
  void eventuallyAt(AudioObjectID device, float volume) {
    eventually([&] { return std::abs(volumeOf(device).value_or(-1) - volume) <= step; });
  }
  static std::string address() { return session_->environment().at("PULSE_SERVER"); }
};

TEST_P(PulseAudioVolumeTest, AnnouncesAChangeByAnotherProgramOnce) {
  const AudioObjectID device = start();
  recordVolumes(device);
  server_->setVolume(0.5);
  eventuallyAt(device, 0.5F);
  settle();
  EXPECT_THAT(volumes_, ElementsAre(0.5F));
}

TEST_P(PulseAudioVolumeTest, WritingZeroMakesTheVolumeExactlyZero) {
  const AudioObjectID device = start();
  recordVolumes(device);
  EXPECT_EQ(write(device, 0.0F), audio::noError);
  eventually([&] { return volumeOf(device) == 0.0F; });
  eventually([&] { return server_->volume() == 0.0; });
  EXPECT_FALSE(server_->muteSwitch());
  EXPECT_THAT(volumes_, ElementsAre(0.0F));
}

TEST_P(PulseAudioVolumeTest, SmallestVolumeIsNotZero) {
  const AudioObjectID device = start();
  write(device, std::numeric_limits<float>::denorm_min());
  eventually([&] { return volumeOf(device) < 0.5F; });
  EXPECT_GT(volumeOf(device), 0.0F);
}

TEST_P(PulseAudioVolumeTest, ReadsAWrittenVolumeOnceTheServerHasConfirmedIt) {
  const AudioObjectID device = start();
  recordVolumes(device);
  EXPECT_EQ(write(device, 0.6F), audio::noError);
  EXPECT_EQ(volumeOf(device), 1.0F);
  eventuallyAt(device, 0.6F);
  eventually([&] { return std::abs(server_->volume() - 0.6) <= step; });
  settle();
  EXPECT_THAT(volumes_, ElementsAre(FloatNear(0.6F, step)));
}

TEST_P(PulseAudioVolumeTest, ClampsVolumesOutOfRange) {
  const AudioObjectID device = start();
  EXPECT_EQ(write(device, -1.0F), audio::noError);
  eventually([&] { return volumeOf(device) == 0.0F; });
  EXPECT_EQ(write(device, 7.0F), audio::noError);
  eventually([&] { return volumeOf(device) == 1.0F; });
  eventually([&] { return server_->volume() == 1.0; });
  EXPECT_EQ(write(device, std::numeric_limits<float>::quiet_NaN()), audio::unsupportedOperation);
}

TEST_P(PulseAudioVolumeTest, SameVolumeAgainIsNotAnnounced) {
  const AudioObjectID device = start();
  write(device, 0.5F);
  eventuallyAt(device, 0.5F);
  recordVolumes(device);
  write(device, 0.5F);
  server_->setVolume(0.5);
  settle();
  EXPECT_THAT(volumes_, IsEmpty());
}

TEST_P(PulseAudioVolumeTest, MuteSwitchReadsAsZero) {
  const AudioObjectID device = start();
  server_->setVolume(0.75);
  eventuallyAt(device, 0.75F);
  recordVolumes(device);
  server_->setMuteSwitch(true);
  eventually([&] { return volumeOf(device) == 0.0F; });
  server_->setMuteSwitch(false);
  eventuallyAt(device, 0.75F);
  EXPECT_THAT(volumes_, ElementsAre(0.0F, 0.75F));
}

TEST_P(PulseAudioVolumeTest, VolumeChangeBehindTheMuteSwitchIsNotAnnounced) {
  const AudioObjectID device = start();
  server_->setMuteSwitch(true);
  eventually([&] { return volumeOf(device) == 0.0F; });
  recordVolumes(device);
  server_->setVolume(0.5);
  server_->setVolume(0.0);
  settle();
  server_->setMuteSwitch(false);
  settle();
  EXPECT_THAT(volumes_, IsEmpty());
}

TEST_P(PulseAudioVolumeTest, WritingAVolumeClearsTheMuteSwitchInOneChange) {
  const AudioObjectID device = start();
  server_->setMuteSwitch(true);
  eventually([&] { return volumeOf(device) == 0.0F; });
  recordVolumes(device);
  write(device, 0.5F);
  eventuallyAt(device, 0.5F);
  eventually([&] { return !server_->muteSwitch(); });
  settle();
  EXPECT_THAT(volumes_, ElementsAre(0.5F));
}

TEST_P(PulseAudioVolumeTest, WritingZeroLeavesTheMuteSwitchOn) {
  const AudioObjectID device = start();
  server_->setMuteSwitch(true);
  eventually([&] { return volumeOf(device) == 0.0F; });
  EXPECT_EQ(write(device, 0.0F), audio::noError);
  settle();
  EXPECT_TRUE(server_->muteSwitch());
  EXPECT_EQ(server_->volume(), 1.0);
  EXPECT_EQ(volumeOf(device), 0.0F);
}

TEST_P(PulseAudioVolumeTest, VolumeAboveFullReadsAsFull) {
  const AudioObjectID device = start();
  recordVolumes(device);
  server_->setVolume(1.25);
  server_->setVolume(1.5);
  settle();
  EXPECT_EQ(volumeOf(device), 1.0F);
  EXPECT_THAT(volumes_, IsEmpty());
}

TEST_P(PulseAudioVolumeTest, UnmutingRestoresAVolumeAboveFull) {
  const AudioObjectID device = start();
  server_->setVolume(1.5);
  settle();
  const float read = *volumeOf(device);
  EXPECT_EQ(read, 1.0F);
  write(device, 0.0F);
  eventually([&] { return volumeOf(device) == 0.0F; });
  write(device, read);
  eventually([&] { return volumeOf(device) == 1.0F; });
  eventually([&] { return std::abs(server_->volume() - 1.5) <= step; });

  // The same through the mute switch.
  server_->setMuteSwitch(true);
  eventually([&] { return volumeOf(device) == 0.0F; });
  write(device, read);
  eventually([&] { return volumeOf(device) == 1.0F; });
  eventually([&] { return std::abs(server_->volume() - 1.5) <= step; });
}

TEST_P(PulseAudioVolumeTest, ReadInAListenerIsTheDeliveredVolumeAlsoAfterAWrite) {
  const AudioObjectID device = start();
  std::vector<float> reads;
  hardware_->addPropertyListener(device, audio::inputVolume, [&] {
    reads.push_back(*volumeOf(device));
    if (reads.size() == 1) write(device, 0.25F);
    reads.push_back(*volumeOf(device));
  });
  // Both changes are queued when the first one is delivered.
  server_->setVolume(0.5);
  std::this_thread::sleep_for(rehearsal::Milliseconds{50});
  server_->setVolume(0.75);
  std::this_thread::sleep_for(rehearsal::Milliseconds{50});
  eventuallyAt(device, 0.25F);
  ASSERT_GE(reads.size(), 4U);
  EXPECT_THAT(std::vector(reads.begin(), reads.begin() + 4), ElementsAre(0.5F, 0.5F, 0.75F, 0.75F));
}

/// A headset with two channels, and their volumes as another program sees them.
class StereoHeadset {
 public:
  StereoHeadset(const std::string& address, rehearsal::AudioFlavour flavour)
      : client_(address, "Mixer"),
        module_(flavour == rehearsal::AudioFlavour::PulseAudio
                    ? client_.loadModule("module-null-source",
                                         "channels=2 source_name=stereo description=Stereo")
                    : client_.loadModule("module-null-sink",
                                         "media.class=Audio/Source/Virtual channels=2 "
                                         "sink_name=stereo "
                                         "sink_properties=device.description=Stereo")) {}
  ~StereoHeadset() { client_.unloadModule(module_); }
  StereoHeadset(const StereoHeadset&) = delete;
  StereoHeadset& operator=(const StereoHeadset&) = delete;

  void setVolumes(pa_volume_t left, pa_volume_t right) {
    pa_cvolume volume{};
    volume.channels = 2;
    volume.values[0] = left;
    volume.values[1] = right;
    const AudioClient::Lock lock(client_);
    pa_operation_unref(pa_context_set_source_volume_by_name(client_.context(), "stereo", &volume,
                                                            nullptr, nullptr));
  }

  /// Polls until the channels have those volumes, within one step.
  bool reaches(pa_volume_t left, pa_volume_t right) {
    return rehearsal::holdsWithin(
        [&] {
          ask();
          const std::lock_guard guard(mutex_);
          return volume_.channels == 2 && near(volume_.values[0], left) &&
                 near(volume_.values[1], right);
        },
        rehearsal::serverTimeout);
  }

 private:
  static bool near(pa_volume_t a, pa_volume_t b) { return a <= b + 1 && b <= a + 1; }
  void ask() {
    const AudioClient::Lock lock(client_);
    pa_operation_unref(
        pa_context_get_source_info_by_name(client_.context(), "stereo", answer, this));
  }
  static void answer(pa_context*, const pa_source_info* info, int last, void* self) {
    if (last != 0) return;
    auto& headset = *static_cast<StereoHeadset*>(self);
    const std::lock_guard guard(headset.mutex_);
    headset.volume_ = info->volume;
  }

  std::mutex mutex_;
  pa_cvolume volume_{};
  AudioClient client_;
  std::uint32_t module_;
};

TEST_P(PulseAudioVolumeTest, ChannelsKeepTheirBalanceThroughVolumesAndSilence) {
  StereoHeadset headset(address(), GetParam());
  start();
  eventually([&] { return find("Stereo") != 0; });
  server_->makeWritable("stereo");
  const AudioObjectID device = find("Stereo");
  headset.setVolumes(40000, 20000);
  eventuallyAt(device, 40000 * step);

  write(device, 20000 * step);
  EXPECT_TRUE(headset.reaches(20000, 10000));
  eventuallyAt(device, 20000 * step);
  write(device, 0.0F);
  EXPECT_TRUE(headset.reaches(0, 0));
  eventually([&] { return volumeOf(device) == 0.0F; });
  write(device, 40000 * step);
  EXPECT_TRUE(headset.reaches(40000, 20000));
}

HUSHBOX_ON_BOTH_AUDIO_SERVERS(PulseAudioVolumeTest);

}  // namespace
}  // namespace hushbox
